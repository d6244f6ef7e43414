#include "keynote/keynote.h"

namespace dorvex::content {

void readKeynote(Reading&, Sink&) {}

}  // namespace dorvex::content
