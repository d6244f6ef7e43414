// The walk through a Keynote document.
#pragma once

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// Hands the parts of the document to the sink, all but document and end.
void readKeynote(Reading& reading, Sink& sink);

}  // namespace dorvex::content
