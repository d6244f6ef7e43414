// Options that commands with output share.
#pragma once

#include <string>

#include "output_file.h"
#include "output_names.h"

namespace dorvex::cli {

struct OutputOptions {
  std::string target;  // a file or a directory; empty or - for standard output
  OnExists onExists = OnExists::kFail;
  Naming naming = Naming::kFile;  // in a directory
};

constexpr unsigned kMostJobs = 1024;

// As many as there are processors.
unsigned defaultJobs();

bool isStandardOutput(const std::string& target);

// A directory that exists, or a name that ends in a slash.
bool namesDirectory(const std::string& target);

}  // namespace dorvex::cli
