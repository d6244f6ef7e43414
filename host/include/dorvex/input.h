// What a document is read from.
#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <istream>
#include <span>
#include <variant>

namespace dorvex {

// Names a document; nothing is opened before it is read.
class Input {
 public:
  // Gives up to count bytes into buffer and returns their number, 0 at the end.
  // What it throws passes through Host::open.
  using ReadFunction = std::function<std::size_t(void* buffer, std::size_t count)>;

  // A file, or a package directory. A file that cannot be sought in (a pipe) is
  // read to its end first.
  static Input path(std::filesystem::path path) { return Input(std::move(path)); }
  // Bytes that stay the caller's, unchanged, until the Document is gone.
  static Input memory(std::span<const unsigned char> bytes) { return Input(bytes); }
  // A stream, read to its end when the document is opened: in memory up to
  // HostOptions::scratchMemory, in an unnamed temporary file beyond. It must
  // live until then.
  static Input stream(std::istream& stream) { return Input(&stream); }
  // A callback, read in the same way.
  static Input callback(ReadFunction read) { return Input(std::move(read)); }

 private:
  friend class OpenInput;
  using Source = std::variant<std::filesystem::path, std::span<const unsigned char>, std::istream*,
                              ReadFunction>;
  explicit Input(Source source) : source_(std::move(source)) {}

  Source source_;
};

}  // namespace dorvex
