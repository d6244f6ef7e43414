// What is done alike in every process that is forked from the calling program.
#pragma once

#include <sys/types.h>

#include "bytes/unique_fd.h"

namespace dorvex {

struct WorkerProcess {
  pid_t process = -1;
  UniqueFd channel;  // this end of it
};

// In the child: nothing of what the calling program has open stays but the channel and
// standard error, for last words. Signals are left to the calling program.
void partFromTheCaller(UniqueFd& channel);

// In the child: it ends when the thread that forked it does, and at once if that has
// happened already.
void endWithParent(pid_t parent);

// In the parent: ends a child and gives its wait status, which tells how it had died if
// it had by itself. Its number stays taken until then, so the right one is hit.
int endChild(pid_t child);

// The channel of a worker. Whatever a worker does, no send to it and no read from it
// waits.
struct WorkerChannel {
  UniqueFd mine;
  UniqueFd its;
};
// Null, and errno, when the system refuses.
WorkerChannel makeWorkerChannel();

}  // namespace dorvex
