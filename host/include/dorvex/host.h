// Reading documents with a reader module. Start here:
//
//   dorvex::Host host({.module = "/usr/lib/dorvex/dorvexsr.so"});
//   dorvex::Document document = host.open(dorvex::Input::path("Letter.pages"));
//   for (const std::string& text : document.texts()) std::cout << text << '\n';
//   if (document.result().status != dorvex::Status::kOk) std::cerr << describe(document.result());
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "dorvex/input.h"
#include "dorvex/rendering.h"
#include "dorvex/result.h"
#include "dorvex/sandbox.h"
#include "dorvex/token_stream.h"

namespace dorvex {

// Where the reader works. It keeps what it parsed allocated for ever, and a
// hostile document may make it run for ever.
enum class Isolation {
  // In worker processes, one document at a time each: a crash or a hang costs
  // that document only.
  kWorkers,
  kInProcess,  // in the caller's process: memory stays behind, nothing limits it
};

// What a container within a document may hold, the document itself included.
// Zero means no limit. The host applies them in its container tap and hands
// them to its own container module.
struct ContainerLimits {
  std::uint32_t members = 100'000;  // of one container
  std::uint32_t depth = 16;         // containers that lie within each other
  // Bytes of one member, unpacked.
  std::uint64_t memberBytes = std::uint64_t{1} << 30;
  // Bytes of all members together, those of nested containers included.
  std::uint64_t totalBytes = std::uint64_t{2} << 30;
  // Bytes of a member, unpacked, for each byte that it takes in its container.
  std::uint32_t expansion = 1'100;
};

// What one document may take. Zero means no limit.
struct Limits {
  // Time that the host waits for a pipe that it reads, and for the reader; time in
  // which the caller does not ask for more does not count. For the reader only
  // with worker processes.
  std::chrono::milliseconds wallTime = std::chrono::seconds(60);
  // Processor time, rounded up to seconds. Only with worker processes.
  std::chrono::seconds processorTime{0};
  // Address space in bytes, beyond what the worker has before the document.
  // Only with worker processes.
  std::uint64_t memory = std::uint64_t{4} << 30;
  // Bytes of scratch streams that are open at a time, in memory and on disk.
  std::uint64_t scratch = std::uint64_t{4} << 30;
  // Bytes of the token stream, or of a rendering and the files beside it.
  std::uint64_t output = std::uint64_t{256} << 20;
  // Bytes of a document that has to be copied before it can be read: what a
  // stream, a callback, a pipe or a device gives.
  std::uint64_t input = std::uint64_t{4} << 30;
  ContainerLimits container{};
};

// The functions of a Document throw it when HostOptions::wait is over, or before
// that at a signal. Nothing is lost: called again, they go on.
struct WaitOver : std::exception {
  const char* what() const noexcept override { return "the wait for the reader is over"; }
};

struct HostOptions {
  // The reader module's file. The container module is looked for beside it.
  std::filesystem::path module;
  Isolation isolation = Isolation::kWorkers;
  // Render what documents say, instead of giving their texts. The content module is
  // looked for beside the reader module. Only with worker processes.
  std::optional<Rendering> rendering = std::nullopt;
  Sandbox sandbox = Sandbox::kWherePossible;  // of the workers
  Limits limits{};
  // Documents that a worker reads before it is replaced, since the reader gives
  // no memory back. One that has grown large is replaced earlier.
  std::uint32_t documentsPerWorker = 100;
  // One document is all that will be opened: its worker is forked from the calling
  // program itself, with no fork server between, which saves time. It ends with the
  // thread that makes the Host, and SIGCHLD must not be ignored. Further documents can
  // be opened all the same, each at the price of a new worker.
  bool oneDocument = false;
  // The size that is declared to the reader for its output buffer: 51 to
  // 16777216 bytes. It decides how much nextBuffer gives at a time.
  std::uint32_t bufferSize = 65536;
  // Bytes of an unpacked member, or of an input that is no file, that are kept
  // in memory; a larger one goes to an unnamed temporary file.
  std::size_t scratchMemory = std::size_t{16} * 1024 * 1024;
  // How long a function of a Document waits before it throws WaitOver, for callers
  // that have to look after signals or other work meanwhile. Zero: as long as it
  // takes, whatever signals come in. Only with worker processes.
  std::chrono::milliseconds wait{0};
  // Read member streams in step with their chunks. Without it the reader loses
  // sound members whose chunks do not suit its reads of 4096 bytes.
  bool alignReads = true;
};

class TextRange;

// One document being read. Texts and buffers come as they are asked for. Not
// for two threads at once. Destroying it early ends its worker process.
class Document {
 public:
  // What hands out the buffers of tokens.
  class Source;

  explicit Document(std::unique_ptr<Source> source);
  Document(Document&&) noexcept;
  Document& operator=(Document&&) noexcept;
  ~Document();

  // The next buffer of whole tokens, never empty; nothing at the end. Valid
  // until the next call. Not to be mixed with the two functions below.
  std::optional<std::span<const unsigned char>> nextBuffer();

  // The next text in UTF-8 as the document stores it, its pieces joined;
  // nothing at the end. What a broken token stream holds is given up to the
  // fault, and the result tells.
  std::optional<std::string> nextText();

  // The texts that are left, as a range to go through once.
  TextRange texts();

  // The next piece of what the document says, where HostOptions::rendering is set, and
  // where it is not, nothing. Never empty; nothing at the end.
  std::optional<Piece> nextPiece();

  // What became of the document. Reads what has not been asked for yet.
  const Result& result();

 private:
  void end(Result result);
  void failOnTokens(const TokenStreamError& error);
  bool fetch();
  bool isRendered() const;
  bool check(std::span<const unsigned char> buffer);

  std::unique_ptr<Source> source_;
  std::span<const unsigned char> buffer_;
  TokenStreamReader reader_;
  TextJoiner joiner_;
  std::uint64_t tokenBytes_ = 0;
  std::optional<Result> result_;
};

// An input range of std::string over a Document, which must outlive it.
class TextRange {
 public:
  class iterator {
   public:
    using iterator_concept = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = std::string;

    iterator() = default;
    const std::string& operator*() const { return *text_; }
    const std::string* operator->() const { return &*text_; }
    iterator& operator++() {
      text_ = document_->nextText();
      return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const iterator& it, std::default_sentinel_t) { return !it.text_; }

   private:
    friend class TextRange;
    explicit iterator(Document* document) : document_(document), text_(document->nextText()) {}

    Document* document_ = nullptr;
    std::optional<std::string> text_;
  };

  explicit TextRange(Document& document) : document_(&document) {}
  // Fetches the first text; call it once.
  iterator begin() { return iterator(document_); }
  std::default_sentinel_t end() const { return {}; }

 private:
  Document* document_;
};

// Opens documents with one module and one set of options. Several threads may
// use one Host.
class Host {
 public:
  // Throws std::invalid_argument for a buffer size out of range, and for a rendering
  // without workers. With workers,
  // forks the process that loads the module and forks them: in a program with
  // threads, make the Host before the threads.
  explicit Host(HostOptions options);
  ~Host();
  Host(Host&&) noexcept;
  Host& operator=(Host&&) noexcept;

  // Starts reading a document. Failures are results: a Document always comes
  // back, though it may hold nothing but its result. Throws only what an
  // Input's callback throws, and std::bad_alloc.
  Document open(const Input& input) const;

  // Hands every text to take, then tells what became of the document.
  Result forEachText(const Input& input,
                     const std::function<void(std::string_view text)>& take) const;

  const HostOptions& options() const;

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace dorvex
