// `dorvex inspect`, as the tool offers it.
#pragma once

#include <CLI/CLI.hpp>

#include "host_options.h"

namespace dorvex::cli {

// Adds the command. It gives way to the inspector, a program of its own: the
// tool links no schema and starts fast, and a document that hurts the inspector
// hurts nothing else. Module, timeout and memory are taken from host when the
// command line has been parsed; it must live until then. Parsing throws
// EnvironmentError when the inspector cannot be started.
void addInspectCommand(CLI::App& app, const HostArguments& host);

}  // namespace dorvex::cli
