// A document that is read in a child process of its own.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX
#include <sys/resource.h>
#include <sys/wait.h>

extern "C" {  // glibc 2.36 forgot it in this header
#include <sys/pidfd.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string>
#include <vector>

#include "child_protocol.h"
#include "diagnosis.h"
#include "document_source.h"

namespace dorvex {
namespace {

using Clock = std::chrono::steady_clock;

// --- In the child ---

int resultPipe = -1;

// Without this the reader would take a failed allocation for a member that is
// damaged, drop it and go on. Nothing here allocates.
void reportOutOfMemory() {
  sendFrame(resultPipe, FrameType::kOutOfMemory, {});
  ::_exit(EXIT_FAILURE);
}

// The hard limit on processor time lies above, since passing it is SIGKILL,
// which does not tell what happened.
void apply(const Limits& limits) {
  if (const auto seconds = static_cast<rlim_t>(limits.processorTime.count()); seconds > 0) {
    const rlimit limit{seconds, seconds + 1};
    ::setrlimit(RLIMIT_CPU, &limit);
  }
  if (limits.memory > 0) {
    const rlimit limit{limits.memory, limits.memory};
    ::setrlimit(RLIMIT_AS, &limit);
  }
}

[[noreturn]] void runChild(int pipe, const HostOptions& options, OpenInput input) {
  ::signal(SIGPIPE, SIG_IGN);
  resultPipe = pipe;
  apply(options.limits);
  std::set_new_handler(reportOutOfMemory);
  const auto session = makeSession(options, std::move(input));
  while (const auto buffer = session->next()) {
    if (!sendFrame(pipe, FrameType::kTokens, *buffer)) ::_exit(EXIT_FAILURE);
  }
  sendFrame(pipe, FrameType::kResult, encodeResult(session->result()));
  // No destructors, no unloading: the process is all that has to be cleaned up.
  ::_exit(EXIT_SUCCESS);
}

// --- In the parent ---

Result failed(Failure failure, std::string message) {
  Result result;
  result.status = Status::kFailed;
  result.failure = failure;
  result.message = std::move(message);
  return result;
}

Result deathResult(int waitStatus) {
  if (!WIFSIGNALED(waitStatus)) {
    return failed(Failure::kCrashed, "the reader's process ended without a result");
  }
  const int signal = WTERMSIG(waitStatus);
  Result result =
      signal == SIGXCPU
          ? failed(Failure::kTimedOut, "stopped: the reader used up its processor time")
          : failed(Failure::kCrashed, std::string("the reader crashed: ") + ::strsignal(signal));
  result.signal = signal;
  return result;
}

class ChildSource final : public Document::Source {
 public:
  ChildSource(pid_t child, UniqueFd pipe, const HostOptions& options)
      : child_(child),
        pipe_(std::move(pipe)),
        exit_(::pidfd_open(child, 0)),
        timeLeft_(options.limits.wallTime),
        limited_(options.limits.wallTime.count() > 0),
        buffer_(ownedBufferSize(options.bufferSize)) {}

  ~ChildSource() override { stop(); }

  std::optional<std::span<const unsigned char>> next() override {
    while (!result_) {
      const auto header = receiveHeader();
      if (!header) break;
      if (header->type == FrameType::kTokens) {
        if (receive({buffer_.data(), header->length}))
          return std::span(buffer_).first(header->length);
      } else if (header->type == FrameType::kResult) {
        receiveResult(header->length);
      } else {
        result_ = failed(Failure::kOutOfMemory, "memory is out");
      }
    }
    return std::nullopt;
  }

  Result result() override {
    stop();
    return std::move(*result_);
  }

 private:
  std::optional<FrameHeader> receiveHeader() {
    std::array<unsigned char, kFrameHeaderSize> bytes;
    if (!receive(bytes)) return std::nullopt;
    auto header = decodeHeader(bytes, buffer_.size());
    if (!header) result_ = failed(Failure::kCrashed, "the reader's process sent nonsense");
    return header;
  }

  void receiveResult(std::uint32_t length) {
    std::vector<unsigned char> payload(length);
    if (!receive(payload)) return;
    result_ = decodeResult(payload);
    if (!result_) result_ = failed(Failure::kCrashed, "the reader's process sent nonsense");
  }

  // Fills bytes, or sets the result.
  bool receive(std::span<unsigned char> bytes) {
    while (!bytes.empty()) {
      if (!waitForBytes()) return false;
      const ssize_t got = ::read(pipe_.get(), bytes.data(), bytes.size());
      if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
      if (got <= 0) {
        reap();
        return false;
      }
      bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
    return true;
  }

  // A pipe that stays silent does not tell a dead child from a busy one when
  // another child, forked meanwhile, holds its other end too. The descriptor of
  // the process does.
  bool waitForBytes() {
    std::array<pollfd, 2> sources{{{pipe_.get(), POLLIN, 0}, {exit_.get(), POLLIN, 0}}};
    const auto start = Clock::now();
    const int ready = ::poll(sources.data(), sources.size(), timeout());
    timeLeft_ -= std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    if (ready < 0 && errno != EINTR) {
      result_ = systemFailure(errno);
      return false;
    }
    if (ready <= 0) return !outOfTime();
    if (sources[0].revents == 0) {
      reap();
      return false;
    }
    return true;
  }

  int timeout() const {
    if (!limited_) return -1;
    constexpr std::chrono::milliseconds longest = std::chrono::hours(24);
    return static_cast<int>(std::clamp(timeLeft_, std::chrono::milliseconds(0), longest).count());
  }

  bool outOfTime() {
    if (!limited_ || timeLeft_.count() > 0) return false;
    result_ = failed(Failure::kTimedOut, "stopped: the reader took too long");
    return true;
  }

  // The child has ended without a result.
  void reap() {
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
    result_ = deathResult(status);
  }

  void stop() {
    if (child_ < 0) return;
    ::kill(child_, SIGKILL);
    while (::waitpid(child_, nullptr, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
  }

  pid_t child_;
  UniqueFd pipe_;
  UniqueFd exit_;
  std::chrono::milliseconds timeLeft_;
  bool limited_;
  std::vector<unsigned char> buffer_;
  std::optional<Result> result_;
};

}  // namespace

std::unique_ptr<Document::Source> makeChildSource(const HostOptions& options, OpenInput input) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return makeFailedSource(systemFailure(errno));
  UniqueFd readEnd(ends[0]);
  UniqueFd writeEnd(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) return makeFailedSource(systemFailure(errno));
  if (child == 0) {
    readEnd.reset();
    runChild(writeEnd.get(), options, std::move(input));
  }
  return std::make_unique<ChildSource>(child, std::move(readEnd), options);
}

}  // namespace dorvex
