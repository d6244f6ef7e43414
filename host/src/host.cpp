#include "dorvex/host.h"

#include <mutex>
#include <stdexcept>

#include "isolation/worker_source.h"
#include "reading/document_source.h"
#include "reading/reader_module.h"
#include "reading/spooled_source.h"

namespace dorvex {
namespace {

// The first buffer must hold the beginning of the stream, for which the reader
// does not look at the size. From 21474837 bytes on its progress figure
// overflows.
constexpr std::uint32_t kSmallestDeclared = 51;
constexpr std::uint32_t kLargestDeclared = 16 * 1024 * 1024;

}  // namespace

// --- Document ---

Document::Document(std::unique_ptr<Source> source) : source_(std::move(source)) {}
Document::Document(Document&&) noexcept = default;
Document& Document::operator=(Document&&) noexcept = default;
Document::~Document() = default;

// Texts that came out before a failure make it a partial reading; a rendering that
// shows nothing does not.
void Document::end(Result result) {
  const bool showsNothing = isRendered() && result.failure == Failure::kNothingRecognised;
  const bool textsCameOut = tokenBytes_ > 0 && !showsNothing;
  if (result.status == Status::kFailed && textsCameOut) {
    result.status = Status::kPartial;
    result.message = "partial text: " + result.message;
  }
  result.tokenBytes = tokenBytes_;
  result_ = std::move(result);
  source_.reset();
  buffer_ = {};
}

void Document::failOnTokens(const TokenStreamError& error) {
  end(moduleFailure(std::string("the module's token stream is broken: ") + error.what()));
}

bool Document::fetch() {
  if (result_) return false;
  const auto buffer = source_->next();
  if (!buffer) {
    Result result = source_->result();
    try {
      if (result.status != Status::kFailed) reader_.finish();
      end(std::move(result));
    } catch (const TokenStreamError& error) {
      failOnTokens(error);
    }
    return false;
  }
  buffer_ = *buffer;
  tokenBytes_ += buffer_.size();
  return true;
}

bool Document::check(std::span<const unsigned char> buffer) {
  try {
    reader_.start(buffer);
    while (reader_.next()) {
    }
    return true;
  } catch (const TokenStreamError& error) {
    failOnTokens(error);
    return false;
  }
}

std::optional<std::span<const unsigned char>> Document::nextBuffer() {
  if (!fetch() || !check(buffer_)) return std::nullopt;
  return buffer_;
}

std::optional<std::string> Document::nextText() {
  while (!result_) {
    try {
      while (const auto token = reader_.next()) {
        if (joiner_.take(*token)) return std::move(joiner_.text());
      }
      if (fetch()) reader_.start(buffer_);
    } catch (const TokenStreamError& error) {
      failOnTokens(error);
    }
  }
  return std::nullopt;
}

bool Document::isRendered() const { return source_ && source_->renders(); }

std::optional<Piece> Document::nextPiece() {
  if (result_) return std::nullopt;
  const auto piece = source_->nextPiece();
  if (piece) {
    tokenBytes_ += piece->bytes.size();
  } else {
    end(source_->result());
  }
  return piece;
}

TextRange Document::texts() { return TextRange(*this); }

const Result& Document::result() {
  while (isRendered() ? nextPiece().has_value() : nextText().has_value()) {
  }
  return *result_;
}

// --- Host ---

struct Host::State {
  HostOptions options;
  std::shared_ptr<WorkerPool> pool;  // with workers

  // In process, the module stays loaded from one document to the next.
  std::mutex mutex;
  std::shared_ptr<ReaderModule> module;

  std::shared_ptr<ReaderModule> loadedModule() {
    const std::lock_guard lock(mutex);
    if (!module) module = ReaderModule::load(options.module);
    return module;
  }

  std::unique_ptr<Document::Source> start(OpenInput input, TimeBudget budget) {
    return pool ? makeWorkerSource(pool, options, std::move(input), budget)
                : readInProcess(std::move(input));
  }

  std::unique_ptr<Document::Source> readInProcess(OpenInput input) {
    try {
      return makeSession(options, std::move(input), loadedModule());
    } catch (const ModuleError& error) {
      return makeFailedSource(unloadable(error.what()));
    }
  }
};

Host::Host(HostOptions options) {
  if (options.bufferSize < kSmallestDeclared || options.bufferSize > kLargestDeclared) {
    throw std::invalid_argument("bufferSize must be " + std::to_string(kSmallestDeclared) + " to " +
                                std::to_string(kLargestDeclared));
  }
  if (options.rendering && options.isolation != Isolation::kWorkers)
    throw std::invalid_argument("documents are rendered in worker processes only");
  state_ = std::make_shared<State>();
  // Without a slash the loader would search its own folders; and the working
  // directory may change.
  if (!options.module.empty()) options.module = std::filesystem::absolute(options.module);
  state_->options = std::move(options);
  if (state_->options.isolation == Isolation::kWorkers) {
    state_->pool = std::make_shared<WorkerPool>(state_->options);
  }
}

Host::~Host() = default;
Host::Host(Host&&) noexcept = default;
Host& Host::operator=(Host&&) noexcept = default;

const HostOptions& Host::options() const { return state_->options; }

Document Host::open(const Input& input) const {
  const HostOptions& options = state_->options;
  const TimeBudget budget(options.limits.wallTime, options.wait);
  Result failure;
  OpenInput opened = OpenInput::open(input, {options.scratchMemory, options.limits.input}, failure);
  if (!opened) return Document(makeFailedSource(std::move(failure)));
  if (!opened.isUnread()) return Document(state_->start(std::move(opened), budget));
  return Document(makeSpooledSource(std::move(opened), budget, options.rendering.has_value(),
                                    [state = state_](OpenInput read, TimeBudget left) {
                                      return state->start(std::move(read), left);
                                    }));
}

Result Host::forEachText(const Input& input,
                         const std::function<void(std::string_view text)>& take) const {
  Document document = open(input);
  while (const auto text = document.nextText()) take(*text);
  return document.result();
}

}  // namespace dorvex
