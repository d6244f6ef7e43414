#include "pages/pages.h"

namespace dorvex::content {

void readPages(Reading&, Sink&) {}

}  // namespace dorvex::content
