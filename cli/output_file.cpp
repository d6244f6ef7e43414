#include "output_file.h"

#include <fcntl.h>
#include <stdio.h>  // NOLINT(modernize-deprecated-headers): renameat2 is not C++'s
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>

namespace dorvex::cli {
namespace {

std::string temporaryName(const std::filesystem::path& path) {
  std::string name = ".";
  name += path.filename().string() + "-XXXXXX";
  return path.parent_path() / name;
}

// mkostemp makes files for their owner alone; others are made by the mask.
mode_t modeByMask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return 0666 & ~mask;
}

}  // namespace

OutputFile::OutputFile(std::filesystem::path path)
    : path_(std::move(path)),
      temporary_(temporaryName(path_)),
      fd_(::mkostemp(temporary_.data(), O_CLOEXEC)),
      output_(fd_) {
  if (fd_ < 0) throw OutputError{errno};
}

OutputFile::~OutputFile() {
  ::close(fd_);
  if (!kept_) ::unlink(temporary_.c_str());
}

void OutputFile::keep(bool replace) {
  static const mode_t mode = modeByMask();
  output_.flush();
  ::fchmod(fd_, mode);
  if (::renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, path_.c_str(),
                  replace ? 0 : RENAME_NOREPLACE) != 0) {
    throw OutputError{errno};
  }
  kept_ = true;
}

}  // namespace dorvex::cli
