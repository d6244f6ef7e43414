// Preloaded, makes a program meet a file system that can do less: no files
// without a name, and with DORVEX_TEST_NO_NOREPLACE no renaming that spares what
// is there.

#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>  // NOLINT(modernize-deprecated-headers): renameat2 is not C++'s

#include <cerrno>
#include <cstdarg>
#include <cstdlib>

namespace {

template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

int openUnlessUnnamed(const char* name, const char* path, int flags, mode_t mode) {
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

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return openUnlessUnnamed("open", path, flags, mode);
}

int open64(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeOf(flags, arguments);
  va_end(arguments);
  return openUnlessUnnamed("open64", path, flags, mode);
}

int renameat2(int from, const char* old, int to, const char* name, unsigned flags) {
  if (flags != 0 && std::getenv("DORVEX_TEST_NO_NOREPLACE") != nullptr) {
    errno = EINVAL;
    return -1;
  }
  return next<int(int, const char*, int, const char*, unsigned)>("renameat2")(from, old, to, name,
                                                                              flags);
}
}
