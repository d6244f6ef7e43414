#include "numbers/numbers.h"

namespace dorvex::content {

void readNumbers(Reading&, Sink&) {}

}  // namespace dorvex::content
