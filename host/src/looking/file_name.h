#pragma once

#include <string_view>

namespace dorvex {

// What stands behind the last slash of a path, or all of it.
inline std::string_view fileName(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

}  // namespace dorvex
