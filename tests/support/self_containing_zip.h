// A zip that never ends.
#pragma once

#include <string>

namespace dorvex::testing {

// A sound zip whose one member, Index.zip, is deflated and unpacks to the very
// same zip, byte for byte.
std::string selfContainingZip();

}  // namespace dorvex::testing
