#include "output_options.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <thread>

namespace dorvex::cli {

unsigned defaultJobs() { return std::max(std::thread::hardware_concurrency(), 1U); }

bool isStandardOutput(const std::string& target) { return target.empty() || target == "-"; }

bool namesDirectory(const std::string& target) {
  std::error_code ignored;
  return target.ends_with('/') || std::filesystem::is_directory(target, ignored);
}

}  // namespace dorvex::cli
