// Options that commands with output share.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "output_file.h"

namespace dorvex::cli {

constexpr const char kTidyHelp[] =
    "Lossy: printed line ends become line feeds, doubled backslashes single; placeholders, empty "
    "texts and exact repeats are left out";

struct OutputOptions {
  std::string target;  // a file or a directory; empty for standard output
  OnExists onExists = OnExists::kFail;
};

// -o and --on-exists.
void addOutputOptions(CLI::App& command, OutputOptions& options, const char* help);
// --jobs.
void addJobsOption(CLI::App& command, unsigned& jobs);

// As many as there are processors.
unsigned defaultJobs();

// A directory that exists, or a name that ends in a slash.
bool namesDirectory(const std::string& target);

}  // namespace dorvex::cli
