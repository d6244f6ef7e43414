// A process that has loaded the reader module once and forks workers from
// there, so that a worker costs no loading. It reads no document.
#pragma once

#include <memory>
#include <mutex>
#include <optional>

#include "bytes/unique_fd.h"
#include "dorvex/host.h"
#include "isolation/child_process.h"

namespace dorvex {

class ForkServer {
 public:
  // Forks the server. Null, and errno, when the system refuses.
  static std::shared_ptr<ForkServer> start(const HostOptions& options);

  // Ends the server, and with it every worker.
  ~ForkServer();
  ForkServer(const ForkServer&) = delete;
  ForkServer& operator=(const ForkServer&) = delete;

  // A new worker; nothing, and errno, when the system refuses or the server is
  // gone. withLibzip: one that can read unusual zips, too.
  std::optional<WorkerProcess> fork(bool withLibzip);

  // Ends a worker and gives its wait status: how it died, if it had died by
  // itself. Nothing when the server is gone. To be called once for each worker.
  std::optional<int> end(pid_t worker);

 private:
  ForkServer(pid_t server, UniqueFd control);

  std::mutex mutex_;  // one request at a time
  pid_t server_;
  UniqueFd control_;
};

}  // namespace dorvex
