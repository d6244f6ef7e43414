// Charts as data.
#pragma once

#include "dorvex/content.h"
#include "graph/reading.h"

namespace dorvex::content {

// What the chart of a chart drawable (type 5021) shows.
Chart readChart(Reading& reading, const Object& drawable);

}  // namespace dorvex::content
