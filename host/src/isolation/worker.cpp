#include "isolation/worker.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <new>
#include <optional>
#include <utility>

#include "isolation/confinement.h"
#include "isolation/fd_channel.h"
#include "isolation/worker_protocol.h"
#include "looking/diagnosis.h"
#include "reading/document_source.h"
#include "reading/render.h"
#include "reading/services.h"

namespace dorvex {
namespace {

// The whole of a zip without members: an end record that counts none.
constexpr std::array<unsigned char, 22> kEmptyZip = {'P', 'K', 5, 6};

// A worker that once needed so much keeps most of it.
constexpr long kLargestKeptKiB = 512L * 1024;

// The address space of a worker, where the system does not tell (no /proc).
constexpr std::uint64_t kUsualSize = std::uint64_t{256} << 20;

int channelOfThisProcess = -1;

// Without this the reader would take a failed allocation for a member that is
// damaged, drop it and go on. Nothing here allocates.
void reportOutOfMemory() {
  sendFrame(channelOfThisProcess, FrameType::kOutOfMemory, {});
  ::_exit(EXIT_FAILURE);
}

rlim_t hardLimit(__rlimit_resource_t resource) {
  rlimit limit{};
  ::getrlimit(resource, &limit);
  return limit.rlim_max;
}

// The hard limits stay, since the next document's are counted anew.
void setSoftLimit(__rlimit_resource_t resource, std::uint64_t value) {
  const rlim_t hard = hardLimit(resource);
  const rlimit limit{std::min<rlim_t>(value, hard), hard};
  ::setrlimit(resource, &limit);
}

Result unconfined(const std::vector<std::string>& missing) {
  return failedResult(Failure::kNotConfined,
                      "not read, since it cannot be confined: " + missing.front());
}

FrameType frameOf(PieceType type) {
  switch (type) {
    case PieceType::kOutput:
      return FrameType::kOutput;
    case PieceType::kFileName:
      return FrameType::kFileName;
    case PieceType::kFileBytes:
      break;
  }
  return FrameType::kFileBytes;
}

class WorkerLoop {
 public:
  WorkerLoop(UniqueFd channel, const HostOptions& options, const WarmModule& warm)
      : channel_(std::move(channel)),
        options_(options),
        warm_(warm),
        ownSize_(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC)) {}

  [[noreturn]] void run() {
    for (;;) {
      ReceivedByte order = receiveByte(channel_.get());
      if (order.ended || !sendFrame(channel_.get(), FrameType::kTaken, {})) break;
      carryOut(static_cast<Order>(order.byte), std::move(order.fd));
      if (options_.oneDocument || hasGrownLarge()) break;
    }
    // No destructors, no unloading: the process is all that has to be cleaned up.
    ::_exit(EXIT_SUCCESS);
  }

 private:
  void carryOut(Order order, UniqueFd document) {
    const bool directory = order == Order::kReadDirectory;
    read(OpenInput::fromDescriptor(std::move(document), directory));
  }

  void read(OpenInput input) {
    const auto missing = confine(input);
    const bool refused = options_.sandbox == Sandbox::kRequired && !missing.empty();
    if (!refused) tellWhatIsMissing(missing);
    applyLimits();
    if (options_.rendering && !refused && warm_.content) return render(std::move(input));
    const auto source = refused ? makeFailedSource(unconfined(missing)) : open(std::move(input));
    bool begun = false;
    while (const auto buffer = source->next()) {
      begun = true;
      if (!sendFrame(channel_.get(), FrameType::kTokens, *buffer)) ::_exit(EXIT_FAILURE);
    }
    sendResult(source->result(), begun);
  }

  // Before the document has had a chance to say otherwise.
  void tellWhatIsMissing(const std::vector<std::string>& phrases) {
    for (const std::string& phrase : phrases) {
      const auto* bytes = reinterpret_cast<const unsigned char*>(phrase.data());
      if (!sendFrame(channel_.get(), FrameType::kLessConfined, {bytes, phrase.size()}))
        ::_exit(EXIT_FAILURE);
    }
  }

  // A confined process can load nothing. One whose server has tried says what it got.
  void sendResult(const Result& result, bool begun) {
    const bool mayLackLibzip = warm_.container != nullptr && !warm_.triedLibzip;
    if (result.failure == Failure::kModuleMissing && mayLackLibzip && !begun) {
      sendFrame(channel_.get(), FrameType::kNeedLibzip, {});
    } else {
      sendFrame(channel_.get(), FrameType::kResult, encodeResult(result));
    }
  }

  void render(OpenInput input) {
    bool begun = false;
    const auto send = [this, &begun](const Piece& piece) {
      begun = true;
      const auto* bytes = reinterpret_cast<const unsigned char*>(piece.bytes.data());
      if (!sendFrame(channel_.get(), frameOf(piece.type), {bytes, piece.bytes.size()}))
        ::_exit(EXIT_FAILURE);
      return true;
    };
    const Result result = renderDocument(
        options_, std::move(input), *warm_.content, warm_.module,
        [this] { return askForScratch(); }, send);
    sendResult(result, begun);
  }

  std::unique_ptr<Document::Source> open(OpenInput input) {
    if (!warm_.error.empty()) return makeFailedSource(unloadable(warm_.error));
    return makeSession(options_, std::move(input), warm_.module,
                       [this] { return askForScratch(); });
  }

  // Once and for all documents of this worker: they are all files, or this is
  // the one directory.
  std::vector<std::string> confine(const OpenInput& input) {
    // Files are opened relative to it, which needs no /proc.
    if (input.directory()) static_cast<void>(!::fchdir(input.directory().get()));
    if (options_.sandbox != Sandbox::kOff && !missing_) {
      missing_ =
          input.directory() ? confineToDirectory(input.directory().get()) : confineToHeldFiles();
    }
    return missing_.value_or(std::vector<std::string>{});
  }

  void applyLimits() {
    const Limits& limits = options_.limits;
    if (limits.processorTime.count() > 0) {
      setSoftLimit(RLIMIT_CPU, usedSeconds() + static_cast<rlim_t>(limits.processorTime.count()));
    }
    if (limits.memory > 0) setSoftLimit(RLIMIT_AS, addressSpace() + limits.memory);
    if (limits.scratch > 0) setSoftLimit(RLIMIT_FSIZE, limits.scratch);
  }

  static rlim_t usedSeconds() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return static_cast<rlim_t>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec + 1);
  }

  static bool hasGrownLarge() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss > kLargestKeptKiB;
  }

  // The file's first number is the size in pages. It was opened while that was
  // still allowed.
  std::uint64_t addressSpace() const {
    std::array<char, 64> text{};
    if (::pread(ownSize_.get(), text.data(), text.size() - 1, 0) <= 0) return kUsualSize;
    return std::strtoull(text.data(), nullptr, 10) *
           static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
  }

  UniqueFd askForScratch() {
    if (!sendFrame(channel_.get(), FrameType::kNeedScratch, {})) ::_exit(EXIT_FAILURE);
    ReceivedByte answer = receiveByte(channel_.get());
    if (answer.ended) ::_exit(EXIT_FAILURE);
    if (!answer.fd) errno = ENOSPC;
    return std::move(answer.fd);
  }

  UniqueFd channel_;
  const HostOptions& options_;
  const WarmModule& warm_;
  UniqueFd ownSize_;
  std::optional<std::vector<std::string>> missing_;  // of the confinement, once it is applied
};

}  // namespace

WarmModule warmUp(const HostOptions& options) {
  WarmModule warm;
  try {
    warm.module = ReaderModule::load(options.module);
    if (options.rendering) warm.content = std::make_shared<ContentModule>(options.module);
  } catch (const ModuleError& error) {
    warm.error = error.what();
    return warm;
  }
  // Held for ever: a confined worker could not load it again.
  warm.container =
      ::dlopen((options.module.parent_path() / kContainerModule).c_str(), RTLD_NOW | RTLD_LOCAL);
  const auto source = makeSession(options, OpenInput::fromMemory(kEmptyZip), warm.module);
  while (source->next()) {
  }
  source->result();
  return warm;
}

// A container module of somebody else's has no such function.
void warmUpLibzip(WarmModule& warm) {
  if (std::exchange(warm.triedLibzip, true) || warm.container == nullptr) return;
  const auto load =
      reinterpret_cast<UnzipLoadLibzipFunction>(::dlsym(warm.container, kUnzipLoadLibzip));
  if (load != nullptr) static_cast<void>(load());
}

void runWorker(UniqueFd channel, const HostOptions& options, const WarmModule& warm) {
  ::prctl(PR_SET_NAME, "dorvex-worker");
  // libzip asks for the local time of each member, and the C library would look each
  // time whether its file has changed. Nothing that the reader gives depends on it.
  if (!options.rendering) ::setenv("TZ", ":/etc/localtime", 0);
  std::signal(SIGXFSZ, SIG_IGN);  // a scratch file that grows too large is a failed write
  channelOfThisProcess = channel.get();
  std::set_new_handler(reportOutOfMemory);
  WorkerLoop(std::move(channel), options, warm).run();
}

}  // namespace dorvex
