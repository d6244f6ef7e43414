// dorvex text and dorvex tokens.
#pragma once

#include <string>

#include "host_options.h"
#include "output_options.h"
#include "path_list.h"

namespace dorvex::cli {

enum class Format { kText, kJson, kTokens };

struct TextOptions {
  InputOptions input;
  Format format = Format::kText;
  bool nul = false;
  bool raw = false;
  bool tidy = false;
  bool withFilename = false;
  std::string separator = "\n";
  OutputOptions output;
  unsigned jobs = defaultJobs();
};

// Gives the exit status.
int runText(const HostArguments& host, const TextOptions& options);

}  // namespace dorvex::cli
