// dorvex text and dorvex tokens.
#pragma once

#include <CLI/CLI.hpp>

#include "host_options.h"

namespace dorvex::cli {

// Adds the commands. They run when they are called, with the host's options as
// they are then, and leave their exit status.
void addTextCommand(CLI::App& app, const HostArguments& host, int& status);
void addTokensCommand(CLI::App& app, const HostArguments& host, int& status);

}  // namespace dorvex::cli
