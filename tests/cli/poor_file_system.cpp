// Preloaded, makes a program meet a file system that can do less: no files
// without a name, with DORVEX_TEST_NO_NOREPLACE no renaming that spares what is
// there, and with DORVEX_TEST_FORBIDDEN no opening of anything of that name.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>  // NOLINT(modernize-deprecated-headers): renameat2 is not C++'s

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <string_view>

#include "Tools/vnexport.h"

namespace {

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// Sets errno where it is.
bool isForbidden(std::string_view path) {
  const char* const forbidden = std::getenv("DORVEX_TEST_FORBIDDEN");
  if (forbidden == nullptr) return false;
  while (path.ends_with('/')) path.remove_suffix(1);
  const bool isSo = path.substr(path.rfind('/') + 1) == forbidden;
  if (isSo) errno = EPERM;
  return isSo;
}

int openUnlessUnnamed(const char* name, const char* path, int flags, mode_t mode) {
  if (isForbidden(path)) return -1;
  if ((flags & O_TMPFILE) == O_TMPFILE) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return next<int(const char*, int, ...)>(name)(path, flags, mode);
}

mode_t modeOf(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

VN_API int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return openUnlessUnnamed("open", path, flags, mode);
}

VN_API int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return openUnlessUnnamed("open64", path, flags, mode);
}

VN_API int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  if (isForbidden(path)) return -1;
  return next<int(int, const char*, int, ...)>("openat")(folder, path, flags, mode);
}

VN_API DIR* opendir(const char* path) {
  return isForbidden(path) ? nullptr : next<DIR*(const char*)>("opendir")(path);
}

VN_API int renameat2(int from, const char* old, int to, const char* name, unsigned flags) {
  if (flags != 0 && std::getenv("DORVEX_TEST_NO_NOREPLACE") != nullptr) {
    errno = EINVAL;
    return -1;
  }
  return next<int(int, const char*, int, const char*, unsigned)>("renameat2")(from, old, to, name,
                                                                              flags);
}
}
