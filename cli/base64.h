// Bytes that are not text, in a text (RFC 4648, section 4).
#pragma once

#include <string>
#include <string_view>

namespace dorvex::cli {

std::string base64(std::string_view bytes);

}  // namespace dorvex::cli
