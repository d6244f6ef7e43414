// Where the tool finds the reader module.
#pragma once

#include <filesystem>

namespace dorvex::cli {

// The module that belongs to this tool, as seen from the tool's own file; it
// need not exist.
std::filesystem::path defaultModule();

}  // namespace dorvex::cli
