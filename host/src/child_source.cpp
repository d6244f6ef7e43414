// A document that is read in a child process of its own.

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
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

int result_pipe = -1;

// Without this the reader would take a failed allocation for a member that is
// damaged, drop it and go on. Nothing here allocates.
void report_out_of_memory() {
  send_frame(result_pipe, FrameType::out_of_memory, {});
  ::_exit(EXIT_FAILURE);
}

void set_limit(decltype(RLIMIT_CPU) resource, rlim_t value) {
  if (value == 0) return;
  const rlimit limit{value, value};
  ::setrlimit(resource, &limit);
}

void apply(const Limits& limits) {
  set_limit(RLIMIT_CPU, static_cast<rlim_t>(limits.processor_time.count()));
  set_limit(RLIMIT_AS, limits.memory);
}

[[noreturn]] void run_child(int pipe, const HostOptions& options, OpenInput input) {
  ::signal(SIGPIPE, SIG_IGN);
  result_pipe = pipe;
  apply(options.limits);
  std::set_new_handler(report_out_of_memory);
  const auto session = make_session(options, std::move(input));
  while (const auto buffer = session->next()) {
    if (!send_frame(pipe, FrameType::tokens, *buffer)) ::_exit(EXIT_FAILURE);
  }
  send_frame(pipe, FrameType::result, encode_result(session->result()));
  // No destructors, no unloading: the process is all that has to be cleaned up.
  ::_exit(EXIT_SUCCESS);
}

// --- In the parent ---

Result failed(Failure failure, std::string message) {
  Result result;
  result.status = Status::failed;
  result.failure = failure;
  result.message = std::move(message);
  return result;
}

Result death_result(int wait_status) {
  if (!WIFSIGNALED(wait_status)) {
    return failed(Failure::crashed, "the reader's process ended without a result");
  }
  const int signal = WTERMSIG(wait_status);
  Result result =
      signal == SIGXCPU
          ? failed(Failure::timed_out, "stopped: the reader used up its processor time")
          : failed(Failure::crashed, std::string("the reader crashed: ") + ::strsignal(signal));
  result.signal = signal;
  return result;
}

class ChildSource final : public Document::Source {
 public:
  ChildSource(pid_t child, UniqueFd pipe, const HostOptions& options)
      : child_(child),
        pipe_(std::move(pipe)),
        exit_(::pidfd_open(child, 0)),
        time_left_(options.limits.wall_time),
        limited_(options.limits.wall_time.count() > 0),
        buffer_(owned_buffer_size(options.buffer_size)) {}

  ~ChildSource() override { stop(); }

  std::optional<std::span<const unsigned char>> next() override {
    while (!result_) {
      const auto header = receive_header();
      if (!header) break;
      if (header->type == FrameType::tokens) {
        if (receive({buffer_.data(), header->length}))
          return std::span(buffer_).first(header->length);
      } else if (header->type == FrameType::result) {
        receive_result(header->length);
      } else {
        result_ = failed(Failure::out_of_memory, "memory is out");
      }
    }
    return std::nullopt;
  }

  Result result() override {
    stop();
    return std::move(*result_);
  }

 private:
  std::optional<FrameHeader> receive_header() {
    std::array<unsigned char, kFrameHeaderSize> bytes;
    if (!receive(bytes)) return std::nullopt;
    auto header = decode_header(bytes, buffer_.size());
    if (!header) result_ = failed(Failure::crashed, "the reader's process sent nonsense");
    return header;
  }

  void receive_result(std::uint32_t length) {
    std::vector<unsigned char> payload(length);
    if (!receive(payload)) return;
    result_ = decode_result(payload);
    if (!result_) result_ = failed(Failure::crashed, "the reader's process sent nonsense");
  }

  // Fills bytes, or sets the result.
  bool receive(std::span<unsigned char> bytes) {
    while (!bytes.empty()) {
      if (!wait_for_bytes()) return false;
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
  bool wait_for_bytes() {
    std::array<pollfd, 2> sources{{{pipe_.get(), POLLIN, 0}, {exit_.get(), POLLIN, 0}}};
    const auto start = Clock::now();
    const int ready = ::poll(sources.data(), sources.size(), timeout());
    time_left_ -= std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
    if (ready < 0 && errno != EINTR) {
      result_ = system_failure(errno);
      return false;
    }
    if (ready <= 0) return !out_of_time();
    if (sources[0].revents == 0) {
      reap();
      return false;
    }
    return true;
  }

  int timeout() const {
    if (!limited_) return -1;
    constexpr std::chrono::milliseconds longest = std::chrono::hours(24);
    return static_cast<int>(std::clamp(time_left_, std::chrono::milliseconds(0), longest).count());
  }

  bool out_of_time() {
    if (!limited_ || time_left_.count() > 0) return false;
    result_ = failed(Failure::timed_out, "stopped: the reader took too long");
    return true;
  }

  // The child has ended without a result.
  void reap() {
    int status = 0;
    while (::waitpid(child_, &status, 0) < 0 && errno == EINTR) {
    }
    child_ = -1;
    result_ = death_result(status);
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
  std::chrono::milliseconds time_left_;
  bool limited_;
  std::vector<unsigned char> buffer_;
  std::optional<Result> result_;
};

}  // namespace

std::unique_ptr<Document::Source> make_child_source(const HostOptions& options, OpenInput input) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return make_failed_source(system_failure(errno));
  UniqueFd read_end(ends[0]);
  UniqueFd write_end(ends[1]);
  const pid_t child = ::fork();
  if (child < 0) return make_failed_source(system_failure(errno));
  if (child == 0) {
    read_end.reset();
    run_child(write_end.get(), options, std::move(input));
  }
  return std::make_unique<ChildSource>(child, std::move(read_end), options);
}

}  // namespace dorvex
