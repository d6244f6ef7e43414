// A worker that is forked from the calling program itself, for a host that opens one
// document: a fork server would be a process more, of which nothing is forked again.
#pragma once

#include <optional>

#include "dorvex/host.h"
#include "isolation/child_process.h"

namespace dorvex {

// Nothing, and errno, when the system refuses. The worker loads the modules, then waits
// for its document. It ends with the thread that calls this.
std::optional<WorkerProcess> forkLoneWorker(const HostOptions& options);

}  // namespace dorvex
