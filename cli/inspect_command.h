// `dorvex inspect`, as the tool offers it.
#pragma once

#include "host_options.h"
#include "inspect/options.h"

namespace dorvex::cli {

// Gives way to the inspector, a program of its own: the tool links no schema and
// starts fast, and a document that hurts the inspector hurts nothing else.
// Throws EnvironmentError when the inspector cannot be started.
[[noreturn]] int runInspect(const HostArguments& host, const InspectOptions& options);

}  // namespace dorvex::cli
