// A file descriptor to write to, with every failure noticed.
#pragma once

#include <unistd.h>

#include <string>
#include <string_view>

namespace dorvex::cli {

// Writing failed, or nobody reads any more; errno's value says which. Nothing
// further can be written.
struct OutputError {
  int error;
};

class Output {
 public:
  // The descriptor stays the caller's.
  explicit Output(int fd = STDOUT_FILENO) : fd_(fd) {}
  // Buffers bytes; throws OutputError.
  void write(std::string_view bytes);
  // Writes what is buffered; throws OutputError.
  void flush();

 private:
  int fd_;
  std::string buffer_;
};

}  // namespace dorvex::cli
