#include "isolation/worker_source.h"

#include <poll.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <string>
#include <vector>

#include "isolation/fd_channel.h"
#include "isolation/worker_pool.h"
#include "looking/diagnosis.h"
#include "reading/document_source.h"

namespace dorvex {
namespace {

using Clock = std::chrono::steady_clock;

Result nonsense() { return failedResult(Failure::kCrashed, "the reader's process sent nonsense"); }

Result deathResult(std::optional<int> waitStatus) {
  if (!waitStatus || !WIFSIGNALED(*waitStatus)) {
    return failedResult(Failure::kCrashed, "the reader's process ended without a result");
  }
  const int signal = WTERMSIG(*waitStatus);
  Result result =
      signal == SIGXCPU
          ? failedResult(Failure::kTimedOut, "stopped: the reader used up its processor time",
                         Limit::kProcessorTime)
          : failedResult(Failure::kCrashed,
                         std::string("the reader crashed: ") + ::strsignal(signal));
  result.signal = signal;
  return result;
}

// The worker reports that before it leaves. Where memory is limited, that is
// what it ran into.
Result outOfMemory(const Limits& limits) {
  return limits.memory == 0
             ? failedResult(Failure::kOutOfMemory, "memory is out")
             : failedResult(Failure::kOutOfMemory, "stopped: the reader used up its memory",
                            Limit::kMemory);
}

// Nothing for a frame that is no piece of a rendering.
std::optional<PieceType> pieceOf(FrameType type) {
  switch (type) {
    case FrameType::kOutput:
      return PieceType::kOutput;
    case FrameType::kFileName:
      return PieceType::kFileName;
    case FrameType::kFileBytes:
      return PieceType::kFileBytes;
    default:
      return std::nullopt;
  }
}

class WorkerSource final : public Document::Source {
 public:
  WorkerSource(std::shared_ptr<WorkerPool> pool, std::unique_ptr<Worker> worker, Order order,
               const HostOptions& options)
      : pool_(std::move(pool)),
        worker_(std::move(worker)),
        order_(order),
        renders_(options.rendering.has_value()),
        limits_(options.limits),
        timeLeft_(limits_.wallTime),
        buffer_(std::max<std::size_t>(ownedBufferSize(options.bufferSize), kLargestPieceFrame)) {}

  std::optional<std::span<const unsigned char>> next() override {
    while (!result_) {
      const auto header = receiveHeader();
      if (!header) break;
      if (header->type != FrameType::kTokens) {
        serve(*header);
      } else if (const auto tokens = receiveOutput(header->length)) {
        return tokens;
      }
    }
    return std::nullopt;
  }

  std::optional<Piece> nextPiece() override {
    while (!result_) {
      const auto header = receiveHeader();
      if (!header) break;
      const auto type = pieceOf(header->type);
      if (!type) {
        serve(*header);
      } else if (const auto bytes = receiveOutput(header->length)) {
        return Piece{*type, {reinterpret_cast<const char*>(bytes->data()), bytes->size()}};
      }
    }
    return std::nullopt;
  }

  bool renders() const override { return renders_; }

  Result result() override {
    worker_.reset();
    return std::move(*result_);
  }

 private:
  std::optional<FrameHeader> receiveHeader() {
    std::array<unsigned char, kFrameHeaderSize> bytes;
    if (!receive(bytes)) return std::nullopt;
    auto header = decodeHeader(bytes, buffer_.size());
    if (!header) result_ = nonsense();
    return header;
  }

  std::optional<std::span<const unsigned char>> receiveOutput(std::uint32_t length) {
    received_ += length;
    if (limits_.output > 0 && received_ > limits_.output) {
      result_ =
          failedResult(Failure::kLimitPassed,
                       "stopped: more than " + std::to_string(limits_.output) + " bytes came out",
                       Limit::kOutput);
      return std::nullopt;
    }
    if (!receive({buffer_.data(), length})) return std::nullopt;
    return std::span(buffer_).first(length);
  }

  void serve(const FrameHeader& header) {
    switch (header.type) {
      case FrameType::kResult:
        receiveResult(header.length);
        break;
      case FrameType::kNeedScratch:
        handOverScratch();
        break;
      case FrameType::kOutOfMemory:
        result_ = outOfMemory(limits_);
        break;
      case FrameType::kTaken:  // these have no place here
      case FrameType::kTokens:
      case FrameType::kOutput:
      case FrameType::kFileName:
      case FrameType::kFileBytes:
        result_ = nonsense();
        break;
    }
  }

  void receiveResult(std::uint32_t length) {
    std::vector<unsigned char> payload(length);
    if (!receive(payload)) return;
    result_ = decodeResult(payload);
    if (result_) {
      pool_->giveBack(std::move(worker_), order_);
    } else {
      result_ = nonsense();
    }
  }

  // A worker that is gone is noticed when it is read from.
  void handOverScratch() {
    const UniqueFd file = openUnnamedFile();
    const Order order = file ? Order::kScratch : Order::kNoScratch;
    sendByte(worker_->channel(), static_cast<unsigned char>(order), file.get());
  }

  // Fills bytes, or sets the result.
  bool receive(std::span<unsigned char> bytes) {
    while (!bytes.empty()) {
      if (!waitForBytes()) return false;
      const ssize_t got = ::read(worker_->channel(), bytes.data(), bytes.size());
      if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
      if (got <= 0) {
        result_ = deathResult(worker_->end());
        return false;
      }
      bytes = bytes.subspan(static_cast<std::size_t>(got));
    }
    return true;
  }

  bool waitForBytes() {
    pollfd source{worker_->channel(), POLLIN, 0};
    const auto start = Clock::now();
    const int ready = ::poll(&source, 1, timeout());
    timeLeft_ -= Clock::now() - start;
    if (ready < 0 && errno != EINTR) {
      result_ = systemFailure(errno);
      return false;
    }
    return ready > 0 || !outOfTime();
  }

  int timeout() const {
    if (!isTimed()) return -1;
    using std::chrono::milliseconds;
    const auto left = std::chrono::ceil<milliseconds>(timeLeft_);
    return static_cast<int>(
        std::clamp<milliseconds>(left, milliseconds(0), std::chrono::hours(24)).count());
  }

  bool isTimed() const { return limits_.wallTime.count() > 0; }

  bool outOfTime() {
    if (!isTimed() || timeLeft_.count() > 0) return false;
    result_ =
        failedResult(Failure::kTimedOut, "stopped: the reader took too long", Limit::kWallTime);
    return true;
  }

  std::shared_ptr<WorkerPool> pool_;
  std::unique_ptr<Worker> worker_;
  Order order_;
  bool renders_;
  Limits limits_;
  Clock::duration timeLeft_;
  std::uint64_t received_ = 0;  // bytes of tokens, or of a rendering
  std::vector<unsigned char> buffer_;
  std::optional<Result> result_;
};

Result notStarted(int error) {
  return error == ECHILD
             ? failedResult(Failure::kCrashed, "the reader's process died before it was ready")
             : systemFailure(error);
}

}  // namespace

std::unique_ptr<Document::Source> makeWorkerSource(const std::shared_ptr<WorkerPool>& pool,
                                                   const HostOptions& options, OpenInput input) {
  const Order order = input.directory() ? Order::kReadDirectory : Order::kReadFile;
  const UniqueFd document = input.takeDescriptor();
  if (!document) return makeFailedSource(systemFailure(errno));
  auto worker = pool->start(order, document.get());
  if (!worker) return makeFailedSource(notStarted(errno));
  return std::make_unique<WorkerSource>(pool, std::move(worker), order, options);
}

}  // namespace dorvex
