// dorvex batch.
#pragma once

#include <CLI/CLI.hpp>

#include "host_options.h"

namespace dorvex::cli {

// Adds the command. It runs when it is called, with the host's options as they
// are then, and leaves its exit status.
void addBatchCommand(CLI::App& app, const HostArguments& host, int& status);

}  // namespace dorvex::cli
