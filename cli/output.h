// A file descriptor to write to, with every failure noticed.
#pragma once

#include <sys/uio.h>
#include <unistd.h>

#include <span>
#include <string>
#include <string_view>

#include "blocks.h"

namespace dorvex::cli {

// Writing failed, or nobody reads any more; errno's value says which. Nothing
// further can be written.
struct OutputError {
  int error;
};

class Output {
 public:
  // The descriptor stays the caller's.
  explicit Output(int fd = STDOUT_FILENO);
  // Buffers bytes; throws OutputError, and nothing else: what a caller takes for one
  // whole does not end half-way for lack of memory.
  void write(std::string_view bytes);
  // The same for bytes in blocks, in as few calls as the system allows.
  void write(const Blocks& bytes);
  // Writes what is buffered; throws OutputError.
  void flush();

 private:
  void writeThrough(std::span<iovec> rest);

  int fd_;
  std::string buffer_;  // of a capacity that does not change
};

}  // namespace dorvex::cli
