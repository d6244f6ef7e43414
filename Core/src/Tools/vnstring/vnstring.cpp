#include "Tools/vnstring/vnstring.h"

#include <cstring>

namespace vn::string {

bool startsWith(const std::string& text, const std::string& prefix) {
  return prefix.size() <= text.size() &&
         std::strncmp(text.c_str(), prefix.c_str(), prefix.size()) == 0;
}

bool endsWith(const char* text, const char* suffix) {
  const auto offset = static_cast<int>(std::strlen(text) - std::strlen(suffix));
  return offset >= 0 && std::strcmp(text + offset, suffix) == 0;
}

}  // namespace vn::string
