#include "Tools/vnose/vnose.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr unsigned long kLargestBlock = 0x7FFFFFFF;
constexpr mode_t kNewFileMode = 0644;
constexpr int kLowestDescriptor = 256;

// Opens a file and keeps its descriptor out of the low range, where the host
// and its children expect only their own.
int openHigh(const char* path, int flags) {
  const int fd = open(path, flags, kNewFileMode);
  if (fd < 0) return -1;
  if (fd >= kLowestDescriptor) return fd;
  const int moved = fcntl(fd, F_DUPFD, kLowestDescriptor);
  if (moved < 0) return fd;
  close(fd);
  return moved;
}

int openFlags(const char* mode) {
  struct ModeRow {
    char first;
    int plain;
    int plus;
  };
  static constexpr std::array<ModeRow, 3> rows{{
      {'r', O_RDONLY, O_RDWR},
      {'w', O_WRONLY | O_CREAT | O_TRUNC, O_RDWR | O_CREAT | O_TRUNC},
      {'a', O_WRONLY | O_CREAT | O_APPEND, O_RDWR | O_CREAT | O_APPEND},
  }};
  const bool plus = std::strrchr(mode, '+') != nullptr;
  for (const ModeRow& row : rows) {
    if (row.first == mode[0]) return plus ? row.plus : row.plain;
  }
  return O_RDONLY;
}

// The whole items in what read or write gave, a 32-bit number to its callers.
long wholeItems(ssize_t result, unsigned long size) {
  const int bytes = std::max(static_cast<int>(result), 0);
  return static_cast<long>(static_cast<unsigned long>(bytes) / size);
}

// Adds a line to the log of modules, if there is one to be kept. A log that
// cannot be opened costs its lines, not the process.
void logModule(const char* format, const char* argument) {
  if (std::getenv("VN_DLL_LOG") == nullptr) return;
  std::FILE* const log = std::fopen("dll_debug.log", "a");
  if (log == nullptr) return;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::fprintf(log, format, argument);
#pragma GCC diagnostic pop
  std::fclose(log);
}

// Where the components of a path begin that vnos_mkdir makes, or null when it
// has none.
char* firstComponent(char* path) {
  if (path[0] != '/') return path;
  if (path[1] != '/') return path + 1;
  // A server's name stands behind two slashes: nobody can make that.
  char* const slash = std::strchr(path + 3, '/');
  return slash == nullptr ? nullptr : slash + 1;
}

// mkdir, or the status as it is when the path exists.
int makeIfMissing(const char* path, mode_t mode, int status) {
  struct stat ignored;
  return stat(path, &ignored) == 0 ? status : mkdir(path, mode);
}

// Whether two lengths and what a temporary name adds to them are a block that
// this layer hands out. No sum here can overflow.
bool fitsTemporaryName(std::size_t directoryLength, std::size_t prefixLength, std::size_t added) {
  const std::size_t room = kLargestBlock - added;
  return directoryLength <= room && prefixLength <= room - directoryLength;
}

// fcntl on a range; a length of 0 stands for the size of the file.
int requestLock(vnos_flock* record, short type, int whence, long start, long length) {
  if (length == 0) length = lseek(record->fd, 0, SEEK_END);
  record->lock.l_type = type;
  record->lock.l_whence = static_cast<short>(whence);
  record->lock.l_start = start;
  record->lock.l_len = length;
  return fcntl(record->fd, F_SETLK, &record->lock);
}

}  // namespace

void* vnos_dlopen(const char* filename, int flag) {
  logModule("vnos_dlopen dll %s \n", filename);
  void* const handle = dlopen(filename, flag);
  if (handle != nullptr) return handle;
  const char* const error = dlerror();
  if (error != nullptr) logModule("vnos_dlopen error: %s\n", error);
  logModule("ERROR: vnos_dlopen dll %s \n", filename);
  return nullptr;
}

int vnos_dlclose(void* handle) { return dlclose(handle); }

char* vnos_dlerror() { return dlerror(); }

void* vnos_dlsym(void* handle, const char* symbol) { return dlsym(handle, symbol); }

void* vnos_malloc(unsigned long size) {
  return size == 0 || size > kLargestBlock ? nullptr : std::malloc(size);
}

void* vnos_valloc(unsigned long size) { return std::malloc(size); }

void* vnos_calloc(unsigned long count, unsigned long size) {
  if (count == 0 || size == 0) return nullptr;
  if (count > kLargestBlock || size > kLargestBlock || count * size > kLargestBlock) return nullptr;
  return std::calloc(count, size);
}

void* vnos_realloc(void* block, unsigned long size) {
  if (size > kLargestBlock) return nullptr;
  return block == nullptr ? std::malloc(size) : std::realloc(block, size);
}

void* vnos_Saferealloc(void* block, unsigned long size) {
  // Whether realloc frees the block for a size of 0 differs between systems; it
  // must be freed, and only once.
  const bool givesUp = size > kLargestBlock || (size == 0 && block != nullptr);
  if (!givesUp) return std::realloc(block, size);
  std::free(block);
  return nullptr;
}

void vnos_free(void* block) { std::free(block); }

long vnos_fopen(const char* path, const char* mode) { return openHigh(path, openFlags(mode)); }

long vnos_fopen64(const char* path, const char* mode) { return vnos_fopen(path, mode); }

int vnos_open(const char* path, int flags) { return openHigh(path, flags); }

int vnos_fclose(int fd) { return close(fd); }

int vnos_close(int fd) { return close(fd); }

long vnos_fread(int fd, void* buffer, unsigned long size, unsigned long count) {
  return wholeItems(read(fd, buffer, size * count), size);
}

long vnos_fwrite(int fd, const void* buffer, unsigned long size, unsigned long count) {
  return wholeItems(write(fd, buffer, size * count), size);
}

long vnos_read(int fd, void* buffer, unsigned long length) { return read(fd, buffer, length); }

long vnos_write(int fd, const void* buffer, unsigned long length) {
  return write(fd, buffer, length);
}

long vnos_lseek(int fd, long offset, int whence) { return lseek(fd, offset, whence); }

long vnos_lseek64(int fd, long offset, int whence) { return lseek(fd, offset, whence); }

int vnos_fseek(int fd, long offset, int whence) { return lseek(fd, offset, whence) < 0 ? -1 : 0; }

int vnos_fseek64(int fd, long offset, int whence) { return vnos_fseek(fd, offset, whence); }

long vnos_ftell(int fd) { return lseek(fd, 0, SEEK_CUR); }

long vnos_ftell64(int fd) { return lseek(fd, 0, SEEK_CUR); }

long vnos_filesize(int fd) {
  struct stat status;
  return fstat(fd, &status) == 0 ? status.st_size : -1;
}

long vnos_filesize64(int fd) { return vnos_filesize(fd); }

int vnos_ftruncate(int fd, long length) { return ftruncate(fd, length); }

int vnos_fsync(int fd) { return fsync(fd); }

int vnos_fstat(int fd, struct stat* buffer) { return fstat(fd, buffer); }

void vnos_fstat64(int /*fd*/, void* /*buffer*/) {}

int vnos_stat(const char* path, struct stat* buffer) { return stat(path, buffer); }

int vnos_statfs(const char* path, struct statfs* buffer) { return statfs(path, buffer); }

int vnos_access(const char* path, int mode) { return access(path, mode); }

int vnos_utimes(const char* path, const struct timeval* times) { return utimes(path, times); }

int vnos_chmod(const char* path, mode_t mode) { return chmod(path, mode); }

int vnos_rename(const char* from, const char* to) { return rename(from, to); }

int vnos_unlink(const char* path) { return unlink(path); }

int vnos_mkdir(const char* path, int mode) {
  constexpr std::size_t kLongestPath = 1024;
  if (path == nullptr || path[0] == '\0') return -1;
  std::array<char, kLongestPath + 1> buffer{};
  std::memcpy(buffer.data(), path, strnlen(path, kLongestPath));
  char* const start = firstComponent(buffer.data());
  if (start == nullptr) return -1;

  const auto permissions = static_cast<mode_t>(mode);
  int status = -1;
  // A failure on the way does not stop the walk: the status is that of the last
  // mkdir.
  for (char* slash = std::strchr(start, '/'); slash != nullptr;
       slash = std::strchr(slash + 1, '/')) {
    *slash = '\0';
    status = makeIfMissing(buffer.data(), permissions, status);
    *slash = '/';
  }
  return makeIfMissing(buffer.data(), permissions, status);
}

int vnos_rmdir(const char* path) { return rmdir(path); }

int vnos_chdir(const char* path) { return chdir(path); }

char* vnos_getcwd(char* buffer, unsigned long size) { return getcwd(buffer, size); }

char* vnos_tempnam(const char* directory, const char* prefix) {
  constexpr std::size_t kAdded = 16;  // the slash, six characters and a terminator fit
  constexpr int kAttempts = 2;
  if (directory == nullptr) directory = "/tmp";
  if (prefix == nullptr) prefix = "";
  const std::size_t directoryLength = std::strlen(directory);
  const std::size_t prefixLength = std::strlen(prefix);
  if (!fitsTemporaryName(directoryLength, prefixLength, kAdded)) return nullptr;

  const std::size_t size = directoryLength + prefixLength + kAdded;
  auto* const name = static_cast<char*>(std::malloc(size));
  if (name == nullptr) return nullptr;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    std::snprintf(name, size, "%s/%sXXXXXX", directory, prefix);
    const int fd = mkstemp(name);
    if (fd < 0) continue;
    close(fd);
    return name;
  }
  std::free(name);
  return nullptr;
}

DIR* vnos_opendir(const char* path, int /*reserved*/) { return opendir(path); }

struct dirent* vnos_readdir(DIR* dir) {
  return readdir(dir);
}

struct dirent* vnos_readdir_r(DIR* dir, struct dirent* /*entry*/, int /*reserved*/) {
  return readdir(dir);
}

int vnos_closedir(DIR* dir, int /*reserved*/) { return closedir(dir); }

int vnos_flock_init(vnos_flock* record, int flags, const char* path) {
  record->fd = -1;
  record->path = nullptr;
  if (path == nullptr) return 0;
  record->fd = openHigh(path, flags);
  // The open decides what errno says.
  const int error = errno;
  record->path = strdup(path);
  errno = error;
  return record->fd == -1 ? -1 : 0;
}

int vnos_flock_trywrlock(vnos_flock* record, int whence, long start, long length) {
  const int result = requestLock(record, F_WRLCK, whence, start, length);
  // Systems differ in what they say of a range that is held: callers need one
  // value.
  if (result == -1 && (errno == EACCES || errno == EAGAIN)) errno = EBUSY;
  return result;
}

int vnos_flock_unlock(vnos_flock* record, int whence, long start, long length) {
  return requestLock(record, F_UNLCK, whence, start, length);
}

int vnos_flock_free(vnos_flock* record) {
  if (record->fd == -1) return 0;
  vnos_flock_unlock(record, SEEK_SET, 0, 0);
  close(record->fd);
  record->fd = -1;
  std::free(record->path);
  record->path = nullptr;
  return 0;
}

int vnos_usleep(unsigned int microseconds) {
  usleep(microseconds);
  return 0;
}

mode_t vnos_umask(mode_t mask) { return umask(mask); }

int vnos_system(const char* command) { return system(command); }

void vnos_exit(int status) { exit(status); }

void vnos_dummy() {}
