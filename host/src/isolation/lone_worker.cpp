#include "isolation/lone_worker.h"

#include <unistd.h>

#include <utility>

#include "isolation/worker.h"

namespace dorvex {
namespace {

[[noreturn]] void runLoneWorker(UniqueFd channel, const HostOptions& options, pid_t parent) {
  endWithParent(parent);
  partFromTheCaller(channel);
  runWorker(std::move(channel), options, warmUp(options));
}

}  // namespace

std::optional<WorkerProcess> forkLoneWorker(const HostOptions& options) {
  WorkerChannel channel = makeWorkerChannel();
  if (!channel.mine) return std::nullopt;
  const pid_t parent = ::getpid();
  const pid_t worker = ::fork();
  if (worker < 0) return std::nullopt;
  if (worker == 0) {
    channel.mine.reset();
    runLoneWorker(std::move(channel.its), options, parent);
  }
  return WorkerProcess{worker, std::move(channel.mine)};
}

}  // namespace dorvex
