// The workers of one host: handed out one document at a time, used again, and
// replaced when they have served their time.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <vector>

#include "dorvex/host.h"
#include "isolation/fork_server.h"
#include "isolation/worker_protocol.h"

namespace dorvex {

// A worker process. Ends with the object.
class Worker {
 public:
  // server: which forked the process; null for a lone worker.
  Worker(std::shared_ptr<ForkServer> server, WorkerProcess process);
  ~Worker();
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;

  int channel() const { return process_.channel.get(); }
  // Ends the process. Its wait status: how it had died, if it had by itself.
  // Nothing when that can no longer be told.
  std::optional<int> end();

 private:
  friend class WorkerPool;
  std::shared_ptr<ForkServer> server_;
  WorkerProcess process_;
  std::uint32_t documents_ = 0;
};

// For several threads at once.
class WorkerPool {
 public:
  // patience: for descriptors, processes and memory that others may give back.
  explicit WorkerPool(const HostOptions& options,
                      std::chrono::milliseconds patience = std::chrono::seconds(10));

  // A worker that has taken document, or null and errno: ECHILD when one new
  // worker after the other dies before it takes it.
  std::unique_ptr<Worker> start(Order order, int document);

  // The same for a document for which a worker lacked libzip. From here on every new
  // worker has it.
  std::unique_ptr<Worker> startWithLibzip(Order order, int document);

  // Takes back a worker that has sent a result. One that read a directory is
  // confined to it and of no further use.
  void giveBack(std::unique_ptr<Worker> worker, Order order);

 private:
  std::unique_ptr<Worker> start(Order order, int document, bool mustBeNew);
  std::unique_ptr<Worker> takeLone();
  std::unique_ptr<Worker> takeIdle();
  std::unique_ptr<Worker> makeNew();
  std::unique_ptr<Worker> takeOrMake(bool mustBeNew, bool& isNew);
  std::unique_ptr<Worker> waitForOne(bool mustBeNew, bool& isNew);
  std::shared_ptr<ForkServer> server();
  std::shared_ptr<ForkServer> restarted(const std::shared_ptr<ForkServer>& gone);

  const HostOptions options_;
  const std::chrono::milliseconds patience_;
  std::mutex mutex_;
  std::shared_ptr<ForkServer> server_;  // null as long as a lone worker is enough
  std::unique_ptr<Worker> lone_;        // until it takes the one document
  std::vector<std::unique_ptr<Worker>> idle_;
  std::atomic<bool> needsLibzip_ = false;
  std::atomic<bool> waitedInVain_ = false;  // last time, for what the machine is short of
};

}  // namespace dorvex
