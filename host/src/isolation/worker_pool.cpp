#include "isolation/worker_pool.h"

#include <cerrno>
#include <chrono>

#include "bytes/patiently.h"
#include "isolation/fd_channel.h"
#include "isolation/frame_reader.h"
#include "isolation/lone_worker.h"
#include "reading/time_budget.h"

namespace dorvex {
namespace {

// For a worker to tidy up behind a document, or to come into being while the
// fork server still loads the module. Longer means that something is wrong.
constexpr std::chrono::seconds kPatience(30);

// So many new workers in a row die by chance only where nearly all of them do.
constexpr int kNewWorkersTried = 10;

enum class Answer { kTaken, kGone, kNone };

Answer handOver(int channel, Order order, int document) {
  if (!sendByte(channel, static_cast<unsigned char>(order), document)) return Answer::kGone;
  FrameReader frames(channel, 0);
  TimeBudget patience(kPatience);
  const TimeBudget::Running running(patience);
  auto outcome = FrameReader::Outcome::kMore;
  while ((outcome = frames.read()) == FrameReader::Outcome::kMore) {
    const TimeBudget::Wait wait = patience.waitFor(channel);
    if (wait == TimeBudget::Wait::kOver) return Answer::kNone;
    if (wait == TimeBudget::Wait::kFailed) return Answer::kGone;
  }
  const bool taken = outcome == FrameReader::Outcome::kFrame && frames.type() == FrameType::kTaken;
  return taken ? Answer::kTaken : Answer::kGone;
}

}  // namespace

Worker::Worker(std::shared_ptr<ForkServer> server, WorkerProcess process)
    : server_(std::move(server)), process_(std::move(process)) {}

Worker::~Worker() { end(); }

std::optional<int> Worker::end() {
  if (process_.process < 0) return std::nullopt;
  const pid_t process = std::exchange(process_.process, -1);
  return server_ ? server_->end(process) : endChild(process);
}

WorkerPool::WorkerPool(const HostOptions& options, std::chrono::milliseconds patience)
    : options_(options), patience_(patience) {
  if (options.oneDocument) {
    if (auto process = forkLoneWorker(options)) {
      lone_ = std::make_unique<Worker>(nullptr, std::move(*process));
    }
  } else {
    server_ = ForkServer::start(options);
  }
}

std::shared_ptr<ForkServer> WorkerPool::server() {
  const std::lock_guard lock(mutex_);
  return server_;
}

// Another thread may have been first.
std::shared_ptr<ForkServer> WorkerPool::restarted(const std::shared_ptr<ForkServer>& gone) {
  const std::lock_guard lock(mutex_);
  if (server_ == gone) server_ = ForkServer::start(options_);
  return server_;
}

std::unique_ptr<Worker> WorkerPool::takeLone() {
  const std::lock_guard lock(mutex_);
  return std::move(lone_);
}

std::unique_ptr<Worker> WorkerPool::takeIdle() {
  const std::lock_guard lock(mutex_);
  if (idle_.empty()) return nullptr;
  auto worker = std::move(idle_.back());
  idle_.pop_back();
  return worker;
}

std::unique_ptr<Worker> WorkerPool::makeNew() {
  auto from = server();
  auto process = from ? from->fork(needsLibzip_) : std::nullopt;
  // Somebody has killed the server; the system itself would refuse again.
  if (!process && (!from || errno == ECHILD)) {
    from = restarted(from);
    process = from ? from->fork(needsLibzip_) : std::nullopt;
  }
  return process ? std::make_unique<Worker>(std::move(from), std::move(*process)) : nullptr;
}

// Where there cannot be one more, an idle one gives its place up.
std::unique_ptr<Worker> WorkerPool::takeOrMake(bool mustBeNew, bool& isNew) {
  auto worker = mustBeNew ? nullptr : takeIdle();
  isNew = worker == nullptr;
  if (isNew) worker = takeLone();
  if (!worker) worker = makeNew();
  if (!worker && isShortage(errno)) {
    const int error = errno;
    takeIdle();
    errno = error;
  }
  return worker;
}

// Once a wait was in vain, documents do not take the whole of it one after the other.
std::unique_ptr<Worker> WorkerPool::waitForOne(bool mustBeNew, bool& isNew) {
  auto worker = patiently([&] { return takeOrMake(mustBeNew, isNew); },
                          waitedInVain_ ? patience_ / 100 : patience_);
  waitedInVain_ = !worker && isShortage(errno);
  return worker;
}

// A worker that does not take the document has read nothing of it: an idle one that
// has died meanwhile, or left because it had grown large, or a new one that somebody
// has killed. So it is passed over, but for a new one that only keeps silent: the
// next would take as long.
std::unique_ptr<Worker> WorkerPool::start(Order order, int document, bool mustBeNew) {
  for (int tried = 0; tried < kNewWorkersTried;) {
    bool isNew = false;
    auto worker = waitForOne(mustBeNew, isNew);
    if (!worker) return nullptr;
    tried += static_cast<int>(isNew);
    const Answer answer = handOver(worker->channel(), order, document);
    if (answer == Answer::kTaken) {
      ++worker->documents_;
      return worker;
    }
    if (isNew && answer == Answer::kNone) break;
  }
  errno = ECHILD;
  return nullptr;
}

// A directory needs a new worker, which is confined to it.
std::unique_ptr<Worker> WorkerPool::start(Order order, int document) {
  return start(order, document, order == Order::kReadDirectory);
}

std::unique_ptr<Worker> WorkerPool::startWithLibzip(Order order, int document) {
  needsLibzip_ = true;
  return start(order, document, true);
}

void WorkerPool::giveBack(std::unique_ptr<Worker> worker, Order order) {
  const bool served = worker->documents_ >= options_.documentsPerWorker;
  if (order == Order::kReadDirectory || served) return;
  const std::lock_guard lock(mutex_);
  idle_.push_back(std::move(worker));
}

}  // namespace dorvex
