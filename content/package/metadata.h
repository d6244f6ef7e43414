// What a package tells of the document as a whole.
#pragma once

#include "dorvex/content.h"
#include "graph/graph.h"

namespace dorvex::content {

Metadata readMetadata(Package& package, const Graph& graph, Application application);

}  // namespace dorvex::content
