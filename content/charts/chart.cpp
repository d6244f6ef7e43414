#include "charts/chart.h"

namespace dorvex::content {

Chart readChart(Reading&, const Object&) { return {}; }

}  // namespace dorvex::content
