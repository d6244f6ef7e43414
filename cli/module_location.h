// Where the tool finds what belongs to it. Paths are absolute, or empty where the
// system does not tell (no /proc).
#pragma once

#include <filesystem>

namespace dorvex::cli {

// The module that belongs to this tool, as seen from the tool's own file; it
// need not exist.
std::filesystem::path defaultModule();

// The inspector that belongs to this tool, likewise.
std::filesystem::path inspectorProgram();

}  // namespace dorvex::cli
