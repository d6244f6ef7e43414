// Standard output, with every failure noticed.
#pragma once

#include <string>
#include <string_view>

namespace dorvex::cli {

// Writing failed, or nobody reads any more; errno's value says which. Nothing
// further can be printed.
struct OutputError {
  int error;
};

class Output {
 public:
  // Buffers bytes; throws OutputError.
  void write(std::string_view bytes);
  // Writes what is buffered; throws OutputError.
  void flush();

 private:
  std::string buffer_;
};

}  // namespace dorvex::cli
