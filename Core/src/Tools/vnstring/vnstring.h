// The string library that all readers share.
#pragma once

#include <string>

#include "Tools/vnexport.h"

namespace vn::string {

// Whether text begins with prefix. Compares as C strings do: a NUL byte at the
// same place in both ends the comparison as a match.
VN_API bool startsWith(const std::string& text, const std::string& prefix);

// Whether text ends with suffix. C strings; neither may be null.
VN_API bool endsWith(const char* text, const char* suffix);

}  // namespace vn::string
