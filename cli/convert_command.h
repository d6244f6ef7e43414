// dorvex convert.
#pragma once

#include <string>

#include "dorvex/rendering.h"
#include "host_options.h"
#include "output_options.h"
#include "path_list.h"

namespace dorvex::cli {

struct ConvertOptions {
  InputOptions input;
  Rendering rendering{};
  std::string extractMedia;  // a folder; empty for none
  OutputOptions output;
  unsigned jobs = defaultJobs();
};

// What files of a format end in, with the dot.
const char* endingOf(RenderFormat format);

// Gives the exit status. Throws UsageError where documents and options do not suit each
// other.
int runConvert(const HostArguments& host, const ConvertOptions& options);

}  // namespace dorvex::cli
