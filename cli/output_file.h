// A file that is written whole or not at all.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "output.h"

namespace dorvex::cli {

// What to do where a file of that name exists.
enum class OnExists { kFail, kSkip, kReplace };

// Takes its name when it is kept, and vanishes otherwise. Until then it has no
// name at all, where the file system can do that, and one that begins with a dot
// beside the other where it cannot.
//
// A device, a pipe or whatever else is no regular file is written into instead.
class OutputFile {
 public:
  // Throws OutputError when the file cannot be made.
  explicit OutputFile(const std::filesystem::path& path);
  ~OutputFile();
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  Output& output() { return output_; }

  // Gives the file its name, in place of another only where that may be
  // replaced; it then has the mode of the other. Throws OutputError, with EEXIST
  // where it may not.
  void keep(bool replace);

  // Takes away the names of files that are not kept yet; for the end of the
  // process. Files that are made afterwards wait for that end.
  static void abandonAll();

  // Whether a file stands in the way at that path; what is written into does not.
  static bool isTaken(const std::filesystem::path& path);

 private:
  int open();
  int openInPlace();
  int openUnnamed();
  int openNamed();
  void takeMode(bool replace) const;
  void nameTemporarily();
  void takeFreeName();

  std::filesystem::path path_;
  std::string temporary_;  // the name until it is kept; empty while it has none
  bool inPlace_ = false;
  int fd_;
  Output output_;
};

}  // namespace dorvex::cli
