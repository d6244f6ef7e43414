// The people who wrote in the margins of a document.
#pragma once

#include <string>
#include <vector>

#include "graph/graph.h"

namespace dorvex::content {

// The names of those who wrote a comment or changed a text while changes were tracked,
// each once. A document also lists authors who did neither.
std::vector<std::string> readAuthors(const Graph& graph);

}  // namespace dorvex::content
