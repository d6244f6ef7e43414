// dorvex batch.
#pragma once

#include <optional>
#include <string>

#include "dorvex/rendering.h"
#include "host_options.h"
#include "output_options.h"
#include "path_list.h"

namespace dorvex::cli {

struct BatchOptions {
  InputOptions input;
  bool ordered = false;
  bool quiet = false;
  bool tidy = false;
  std::optional<RenderFormat> content = std::nullopt;  // instead of texts
  std::string shard = "0/1";
  std::string resume;
  std::string retry;  // statuses, with commas between
  OutputOptions output;
  unsigned jobs = defaultJobs();
};

// Gives the exit status.
int runBatch(const HostArguments& host, const BatchOptions& options);

}  // namespace dorvex::cli
