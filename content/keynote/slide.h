// One slide.
#pragma once

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// What stands on a slide, its notes and comments. Its number, nesting and whether it is
// skipped are known to its node.
Slide readSlide(Reading& reading, const Object& object);

}  // namespace dorvex::content
