// A file that is written whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "output.h"

namespace dorvex::cli {

// What to do where a file of that name exists.
enum class OnExists { kFail, kSkip, kReplace };

// Takes its name when it is kept, and vanishes otherwise. Until then the bytes
// are in a file beside it whose name begins with a dot.
class OutputFile {
 public:
  // Throws OutputError when the file cannot be made.
  explicit OutputFile(std::filesystem::path path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  Output& output() { return output_; }

  // Gives the file its name, in place of another only where that may be
  // replaced. Throws OutputError, with EEXIST where it may not.
  void keep(bool replace);

 private:
  std::filesystem::path path_;
  std::string temporary_;
  int fd_;
  Output output_;
  bool kept_ = false;
};

}  // namespace dorvex::cli
