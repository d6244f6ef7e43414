#include "output_file.h"

#include <fcntl.h>
#include <stdio.h>  // NOLINT(modernize-deprecated-headers): renameat2 is not C++'s
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <mutex>
#include <set>

namespace dorvex::cli {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kMode = 0666;  // less what the mask takes

// The names of files that are not kept yet.
std::mutex namesMutex;
std::set<std::string>& names() {
  static std::set<std::string> all;
  return all;
}

void forget(const std::string& name) {
  const std::lock_guard lock(namesMutex);
  names().erase(name);
}

// Tries names in the folder of path until make, which gives 0 or -1 with errno,
// finds one that is free; gives it. Throws OutputError.
std::string temporaryName(const fs::path& path, const std::function<int(const char*)>& make) {
  static unsigned number = 0;
  const std::lock_guard lock(namesMutex);
  while (true) {
    std::string name = path.parent_path() /
                       (".dorvex-" + std::to_string(::getpid()) + "-" + std::to_string(number++));
    names().insert(name);
    if (make(name.c_str()) == 0) return name;
    const int error = errno;
    names().erase(name);
    if (error != EEXIST) throw OutputError{error};
  }
}

bool isInPlace(const fs::path& path) {
  std::error_code ignored;
  const auto status = fs::status(path, ignored);
  return fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status);
}

// A link stays, and what it leads to is written.
fs::path behindLinks(fs::path path) {
  std::error_code error;
  if (!fs::is_symlink(path, error)) return path;
  const fs::path target = fs::canonical(path, error);
  return error ? path : target;
}

std::string ofThisProcess(int fd) { return "/proc/self/fd/" + std::to_string(fd); }

}  // namespace

OutputFile::OutputFile(const fs::path& path)
    : path_(behindLinks(path)), inPlace_(isInPlace(path_)), fd_(open()), output_(fd_) {}

OutputFile::~OutputFile() {
  ::close(fd_);
  if (temporary_.empty()) return;
  ::unlink(temporary_.c_str());
  forget(temporary_);
}

int OutputFile::open() {
  if (inPlace_) return openInPlace();
  const int unnamed = openUnnamed();
  return unnamed >= 0 ? unnamed : openNamed();
}

int OutputFile::openInPlace() {
  const int fd = ::open(path_.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
  if (fd < 0) throw OutputError{errno};
  return fd;
}

// -1 where the file system cannot, or where a name could not be given later.
int OutputFile::openUnnamed() {
  const fs::path folder = path_.has_parent_path() ? path_.parent_path() : ".";
  const int fd = ::open(folder.c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode);
  if (fd < 0 || ::access(ofThisProcess(fd).c_str(), F_OK) == 0) return fd;
  ::close(fd);
  return -1;
}

int OutputFile::openNamed() {
  int fd = -1;
  temporary_ = temporaryName(path_, [&fd](const char* name) {
    fd = ::open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode);
    return fd < 0 ? -1 : 0;
  });
  return fd;
}

void OutputFile::takeMode(bool replace) const {
  struct stat replaced {};
  if (replace && ::stat(path_.c_str(), &replaced) == 0) ::fchmod(fd_, replaced.st_mode & 07777);
}

void OutputFile::nameTemporarily() {
  const std::string unnamed = ofThisProcess(fd_);
  temporary_ = temporaryName(path_, [&unnamed](const char* name) {
    return ::linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW);
  });
}

void OutputFile::takeFreeName() {
  if (temporary_.empty()) {
    if (::linkat(AT_FDCWD, ofThisProcess(fd_).c_str(), AT_FDCWD, path_.c_str(),
                 AT_SYMLINK_FOLLOW) != 0) {
      throw OutputError{errno};
    }
    return;
  }
  const bool renamed =
      ::renameat2(AT_FDCWD, temporary_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) == 0;
  if (renamed) {
    forget(temporary_);
    temporary_.clear();
    return;
  }
  // Some file systems know no renaming that spares what is there, but links; the
  // other name goes with this object.
  const bool unknown = errno == EINVAL || errno == ENOSYS;
  if (!unknown || ::link(temporary_.c_str(), path_.c_str()) != 0) throw OutputError{errno};
}

void OutputFile::keep(bool replace) {
  output_.flush();
  if (inPlace_) return;
  takeMode(replace);
  if (!replace) return takeFreeName();
  if (temporary_.empty()) nameTemporarily();
  if (::rename(temporary_.c_str(), path_.c_str()) != 0) throw OutputError{errno};
  forget(temporary_);
  temporary_.clear();
}

void OutputFile::abandonAll() {
  namesMutex.lock();
  for (const std::string& name : names()) ::unlink(name.c_str());
}

bool OutputFile::isTaken(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(path, ignored)) && !isInPlace(path);
}

}  // namespace dorvex::cli
