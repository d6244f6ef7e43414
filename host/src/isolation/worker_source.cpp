#include "isolation/worker_source.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>

#include "isolation/fd_channel.h"
#include "isolation/frame_reader.h"
#include "isolation/worker_pool.h"
#include "looking/diagnosis.h"
#include "reading/document_source.h"

namespace dorvex {
namespace {

Result workerOutOfTime() {
  return failedResult(Failure::kTimedOut, "stopped: the reader took too long", Limit::kWallTime);
}

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

Result notStarted(int error) {
  return error == ECHILD
             ? failedResult(Failure::kCrashed, "the reader's process died before it was ready")
             : systemFailure(error);
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
               UniqueFd document, const HostOptions& options, TimeBudget budget,
               std::uint64_t fileSize)
      : pool_(std::move(pool)),
        document_(std::move(document)),
        worker_(std::move(worker)),
        order_(order),
        renders_(options.rendering.has_value()),
        limits_(options.limits),
        budget_(budget),
        fileSize_(fileSize),
        largestTokens_(ownedBufferSize(options.bufferSize)),
        frames_(worker_->channel(), largestTokens_) {}

  std::optional<std::span<const unsigned char>> next() override {
    const TimeBudget::Running running(budget_);
    while (!result_ && waitForFrame()) {
      if (frames_.type() != FrameType::kTokens) {
        serve();
      } else if (!passesOutput()) {
        return frames_.payload();
      }
    }
    return std::nullopt;
  }

  std::optional<Piece> nextPiece() override {
    const TimeBudget::Running running(budget_);
    while (!result_ && waitForFrame()) {
      const auto type = pieceOf(frames_.type());
      if (!type) {
        serve();
      } else if (!passesOutput()) {
        const auto bytes = frames_.payload();
        return Piece{*type, {reinterpret_cast<const char*>(bytes.data()), bytes.size()}};
      }
    }
    return std::nullopt;
  }

  bool renders() const override { return renders_; }

  Result result() override {
    worker_.reset();
    if (order_ == Order::kReadFile) result_->inputBytes = fileSize_;
    result_->missingConfinement = std::move(missingConfinement_);
    return std::move(*result_);
  }

 private:
  // Sets the result where no frame comes any more.
  bool waitForFrame() {
    using Outcome = FrameReader::Outcome;
    auto outcome = Outcome::kMore;
    while (!budget_.isOver() && (outcome = frames_.read()) == Outcome::kMore) {
      if (budget_.waitFor(worker_->channel()) == TimeBudget::Wait::kFailed) {
        result_ = systemFailure(errno);
        return false;
      }
    }
    if (outcome == Outcome::kMore) {
      result_ = workerOutOfTime();
    } else if (outcome == Outcome::kEnded) {
      result_ = deathResult(worker_->end());
    } else if (outcome == Outcome::kNonsense) {
      result_ = nonsense();
    }
    return !result_;
  }

  bool passesOutput() {
    received_ += frames_.payload().size();
    if (limits_.output == 0 || received_ <= limits_.output) return false;
    result_ = failedResult(
        Failure::kLimitPassed,
        "stopped: more than " + std::to_string(limits_.output) + " bytes came out", Limit::kOutput);
    return true;
  }

  void serve() {
    switch (frames_.type()) {
      case FrameType::kResult:
        takeResult();
        break;
      case FrameType::kNeedScratch:
        handOverScratch();
        break;
      case FrameType::kOutOfMemory:
        result_ = outOfMemory(limits_);
        break;
      case FrameType::kNeedLibzip:
        startAgain();
        break;
      case FrameType::kLessConfined:
        noteWhatIsMissing();
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

  void noteWhatIsMissing() {
    constexpr std::size_t kMostPhrases = 8;
    if (missingConfinement_.size() == kMostPhrases) {
      result_ = nonsense();
      return;
    }
    const auto phrase = frames_.payload();
    missingConfinement_.emplace_back(phrase.begin(), phrase.end());
  }

  void takeResult() {
    result_ = decodeResult(frames_.payload());
    if (result_) {
      if (result_->failure == Failure::kOutOfMemory && limits_.memory > 0) {
        result_->limit = Limit::kMemory;
      }
      pool_->giveBack(std::move(worker_), order_);
    } else {
      result_ = nonsense();
    }
  }

  // With one that has libzip, once, and before anything has come out.
  void startAgain() {
    if (startedAgain_ || received_ > 0) {
      result_ = nonsense();
      return;
    }
    startedAgain_ = true;
    missingConfinement_.clear();
    worker_.reset();
    worker_ = pool_->startWithLibzip(order_, document_.get());
    if (worker_) {
      frames_ = FrameReader(worker_->channel(), largestTokens_);
    } else {
      result_ = notStarted(errno);
    }
  }

  // A worker that is gone is noticed when it is read from. One that asks and
  // does not take what it gets has to do without.
  void handOverScratch() {
    if (worker_ == nullptr) return;  // one that has given its result asks for nothing
    const UniqueFd file = openUnnamedFile();
    const auto answer = file ? ScratchAnswer::kFile : ScratchAnswer::kNone;
    sendByte(worker_->channel(), static_cast<unsigned char>(answer), file.get());
  }

  std::shared_ptr<WorkerPool> pool_;
  UniqueFd document_;  // for another worker, should this one be unable to read it
  std::unique_ptr<Worker> worker_;
  Order order_;
  bool renders_;
  Limits limits_;
  TimeBudget budget_;
  std::uint64_t fileSize_;      // 0 for a directory, which only the worker looks into
  std::uint64_t received_ = 0;  // bytes of tokens, or of a rendering
  bool startedAgain_ = false;
  std::vector<std::string> missingConfinement_;
  std::size_t largestTokens_;
  FrameReader frames_;
  std::optional<Result> result_;
};

}  // namespace

std::unique_ptr<Document::Source> makeWorkerSource(const std::shared_ptr<WorkerPool>& pool,
                                                   const HostOptions& options, OpenInput input,
                                                   TimeBudget budget) {
  const Order order = input.directory() ? Order::kReadDirectory : Order::kReadFile;
  const std::uint64_t size = input.size();
  UniqueFd document = input.takeDescriptor();
  if (!document) return makeFailedSource(systemFailure(errno));
  auto worker = pool->start(order, document.get());
  if (!worker) return makeFailedSource(notStarted(errno));
  return std::make_unique<WorkerSource>(pool, std::move(worker), order, std::move(document),
                                        options, budget, size);
}

}  // namespace dorvex
