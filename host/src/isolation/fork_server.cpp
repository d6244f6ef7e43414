#include "isolation/fork_server.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "isolation/fd_channel.h"
#include "isolation/worker.h"

namespace dorvex {
namespace {

enum class Request : unsigned char {
  kFork = 'F',            // comes with the worker's end of a channel; answered by a number
  kForkWithLibzip = 'Z',  // the same, once libzip is loaded
  kEnd = 'E',             // followed by a process's number; answered by its wait status
};

template <typename Number>
bool sendNumber(int channel, Number number) {
  std::array<unsigned char, sizeof number> bytes;
  std::memcpy(bytes.data(), &number, sizeof number);
  return sendBytes(channel, bytes);
}

template <typename Number>
bool receiveNumber(int channel, Number& number) {
  std::array<unsigned char, sizeof number> bytes;
  if (!receiveBytes(channel, bytes)) return false;
  std::memcpy(&number, bytes.data(), sizeof number);
  return true;
}

// --- In the server ---

void serveFork(int control, UniqueFd channel, const HostOptions& options, const WarmModule& warm) {
  const pid_t server = ::getpid();
  const pid_t worker = ::fork();
  if (worker == 0) {
    endWithParent(server);
    ::close(control);
    runWorker(std::move(channel), options, warm);
  }
  sendNumber(control, worker < 0 ? -errno : worker);
}

void serveEnd(int control) {
  pid_t worker = 0;
  if (!receiveNumber(control, worker) || worker <= 0) ::_exit(EXIT_FAILURE);
  sendNumber(control, endChild(worker));
}

[[noreturn]] void runServer(UniqueFd control, const HostOptions& options) {
  ::prctl(PR_SET_NAME, "dorvex-forks");
  partFromTheCaller(control);
  WarmModule warm = warmUp(options);
  for (;;) {
    ReceivedByte request = receiveByte(control.get());
    // The program is gone. The workers follow, by the signal they asked for.
    if (request.ended) ::_exit(EXIT_SUCCESS);
    switch (static_cast<Request>(request.byte)) {
      case Request::kForkWithLibzip:
        warmUpLibzip(warm);
        [[fallthrough]];
      case Request::kFork:
        serveFork(control.get(), std::move(request.fd), options, warm);
        break;
      case Request::kEnd:
        serveEnd(control.get());
    }
  }
}

}  // namespace

std::shared_ptr<ForkServer> ForkServer::start(const HostOptions& options) {
  auto [mine, its] = makeChannel();
  if (!mine) return nullptr;
  const pid_t server = ::fork();
  if (server < 0) return nullptr;
  if (server == 0) {
    mine.reset();
    runServer(std::move(its), options);
  }
  return std::shared_ptr<ForkServer>(new ForkServer(server, std::move(mine)));
}

ForkServer::ForkServer(pid_t server, UniqueFd control)
    : server_(server), control_(std::move(control)) {}

ForkServer::~ForkServer() {
  control_.reset();
  // It may still be loading the module, and has nothing to lose.
  endChild(server_);
}

std::optional<WorkerProcess> ForkServer::fork(bool withLibzip) {
  const auto request = withLibzip ? Request::kForkWithLibzip : Request::kFork;
  auto [mine, its] = makeWorkerChannel();
  if (!mine) return std::nullopt;
  const std::lock_guard lock(mutex_);
  int worker = 0;
  if (!sendByte(control_.get(), static_cast<unsigned char>(request), its.get()) ||
      !receiveNumber(control_.get(), worker)) {
    errno = ECHILD;
    return std::nullopt;
  }
  if (worker < 0) {
    errno = -worker;
    return std::nullopt;
  }
  return WorkerProcess{worker, std::move(mine)};
}

std::optional<int> ForkServer::end(pid_t worker) {
  const std::lock_guard lock(mutex_);
  int status = 0;
  const bool answered = sendByte(control_.get(), static_cast<unsigned char>(Request::kEnd)) &&
                        sendNumber(control_.get(), worker) && receiveNumber(control_.get(), status);
  return answered ? std::optional(status) : std::nullopt;
}

}  // namespace dorvex
