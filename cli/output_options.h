// Options that commands with output share.
#pragma once

#include <string>

#include "output_file.h"

namespace dorvex::cli {

struct OutputOptions {
  std::string target;  // a file or a directory; empty for standard output
  OnExists onExists = OnExists::kFail;
};

constexpr unsigned kMostJobs = 1024;

// As many as there are processors.
unsigned defaultJobs();

// A directory that exists, or a name that ends in a slash.
bool namesDirectory(const std::string& target);

}  // namespace dorvex::cli
