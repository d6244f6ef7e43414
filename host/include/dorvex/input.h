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

  // A file, or a package directory. What cannot be sought in (a pipe, a device) is
  // read to its end first, within Limits::wallTime and Limits::input.
  static Input path(std::filesystem::path path) { return Input(std::move(path)); }
  // Bytes that stay the caller's, unchanged, until the Document is gone.
  static Input memory(std::span<const unsigned char> bytes) { return Input(bytes); }
  // A descriptor that stays the caller's, read from where it stands to its end
  // without being opened again. A regular file that stands at its beginning, and a
  // directory, is read in place.
  static Input descriptor(int fd) { return Input(Descriptor{fd}); }
  // A stream, read to its end when the document is opened: in memory up to
  // HostOptions::scratchMemory, in an unnamed temporary file beyond. It must
  // live until then.
  static Input stream(std::istream& stream) { return Input(&stream); }
  // A callback, read in the same way.
  static Input callback(ReadFunction read) { return Input(std::move(read)); }

 private:
  friend class OpenInput;
  struct Descriptor {
    int fd;
  };
  using Source = std::variant<std::filesystem::path, std::span<const unsigned char>, Descriptor,
                              std::istream*, ReadFunction>;
  explicit Input(Source source) : source_(std::move(source)) {}

  Source source_;
};

}  // namespace dorvex
