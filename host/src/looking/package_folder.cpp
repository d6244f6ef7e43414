#include "looking/package_folder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "bytes/directory.h"
#include "bytes/unique_fd.h"

namespace dorvex {
namespace {

constexpr int kDeepest = 16;
constexpr int kMostEntries = 100'000;

struct Folder {
  std::string path;  // below the package, with a slash behind it; empty for itself
  int depth = 0;
  bool mayHoldStreams = true;  // the reader may enter it
  bool counts = true;          // not a link, whose files are counted where they are
};

std::uint64_t mix(std::uint64_t seed, std::uint64_t value) {
  return (seed ^ value) * 0x9E3779B97F4A7C15U + (seed >> 29);
}

std::uint64_t stateOf(const struct stat& status) {
  std::uint64_t state = mix(1, static_cast<std::uint64_t>(status.st_size));
  state = mix(state, static_cast<std::uint64_t>(status.st_mtim.tv_sec));
  state = mix(state, static_cast<std::uint64_t>(status.st_mtim.tv_nsec));
  return mix(state, static_cast<std::uint64_t>(status.st_ino));
}

bool isStreamFolder(std::string_view name) { return name == "Index" || name == "Tables"; }
bool isStreamFile(std::string_view name) { return name.ends_with(".iwa") || name == "Index.zip"; }

// One descriptor at a time, and no recursion: a package may be deep.
class FolderWalk {
 public:
  explicit FolderWalk(int root) : root_(root) {}

  FolderLook walk() {
    waiting_.push_back({});
    while (!waiting_.empty() && left_ > 0) {
      const Folder folder = std::move(waiting_.back());
      waiting_.pop_back();
      list(folder);
    }
    return std::move(look_);
  }

 private:
  void list(const Folder& folder) {
    UniqueFd fd(::openat(root_, folder.path.empty() ? "." : folder.path.c_str(),
                         O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const Directory stream(fd ? ::fdopendir(fd.get()) : nullptr);
    if (!stream) return note(folder);
    static_cast<void>(fd.release());
    errno = 0;
    while (const dirent* entry = ::readdir(stream.get())) {
      const std::string_view name = entry->d_name;
      if (name == "." || name == "..") continue;
      if (left_-- == 0) return;
      visit(folder, entry->d_name, ::dirfd(stream.get()));
      errno = 0;
    }
    if (errno != 0) note(folder);
  }

  // A folder that has gone since, or is none, is not the system's fault. One that the
  // reader does not enter does not matter.
  void note(const Folder& folder) {
    const int error = errno;
    if (!folder.mayHoldStreams || error == ENOENT || error == ENOTDIR || look_.failure) return;
    const std::string name =
        folder.path.empty() ? "" : folder.path.substr(0, folder.path.size() - 1);
    look_.failure = SystemFailure{name, error};
  }

  void visit(const Folder& folder, const char* name, int directory) {
    struct stat status {};
    const std::string path = folder.path + name;
    look_.kind.noteName(path);
    lookAtNames({path}, look_.package);
    if (::fstatat(directory, name, &status, AT_SYMLINK_NOFOLLOW) != 0) return;
    const bool entered = folder.mayHoldStreams && isStreamFolder(name);
    const bool isRead = folder.mayHoldStreams && isStreamFile(name);
    const bool isLink = S_ISLNK(status.st_mode);
    if (S_ISREG(status.st_mode) && folder.counts)
      look_.bytes += static_cast<std::uint64_t>(status.st_size);
    if (entered || isRead) {
      ::fstatat(directory, name, &status, 0);
      // The order in which the system lists them must not count.
      look_.streams += mix(std::hash<std::string>()(path), isRead ? stateOf(status) : 1);
    }
    if (S_ISDIR(status.st_mode) && folder.depth + 1 < kDeepest) {
      waiting_.push_back({path + "/", folder.depth + 1, entered, folder.counts && !isLink});
    }
  }

  int root_;
  int left_ = kMostEntries;
  std::vector<Folder> waiting_;
  FolderLook look_;
};

}  // namespace

FolderLook lookAtFolder(int directory) {
  FolderLook look = FolderWalk(directory).walk();
  look.package.directory = true;
  return look;
}

// Not by the C library, which asks in a way that a confined worker may not.
std::uint64_t stateOfFile(int file) {
#ifdef SYS_fstat
  struct stat status {};
  return ::syscall(SYS_fstat, file, &status) == 0 ? stateOf(status) : 0;
#else
  return 0;
#endif
}

}  // namespace dorvex
