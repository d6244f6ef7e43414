#include "module_location.h"

#include <system_error>

namespace dorvex::cli {
namespace {

// Without /proc the tool does not know where it is. Nothing is looked for in the
// working directory then: what lies there may be anybody's.
std::filesystem::path besideTheTool(const std::filesystem::path& relative) {
  std::error_code ignored;
  const auto tool = std::filesystem::read_symlink("/proc/self/exe", ignored);
  return tool.empty() ? tool : (tool.parent_path() / relative).lexically_normal();
}

}  // namespace

std::filesystem::path defaultModule() {
  return besideTheTool(std::filesystem::path(DORVEX_MODULE_FOLDER) / "dorvexsr.so");
}

std::filesystem::path inspectorProgram() {
  return besideTheTool(std::filesystem::path(DORVEX_HELPER_FOLDER) / "dorvex-inspect");
}

}  // namespace dorvex::cli
