#include "module_location.h"

#include <system_error>

namespace dorvex::cli {

std::filesystem::path defaultModule() {
  std::error_code ignored;
  const auto tool = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return (tool.parent_path() / DORVEX_MODULE_FOLDER / "dorvexsr.so").lexically_normal();
}

}  // namespace dorvex::cli
