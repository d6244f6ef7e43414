// Loads the module that is linked with libzip when the first zip needs it.

#include <dlfcn.h>

#include <atomic>
#include <filesystem>
#include <mutex>

#include "libzip_archive.h"
#include "libzip_module.h"

namespace dorvex::unzip {
namespace {

using OpenFunction = decltype(&unzipOpenByLibzip);

// Beside this module and nowhere else, as hosts look for modules.
std::filesystem::path libzipModule() {
  Dl_info here{};
  ::dladdr(reinterpret_cast<void*>(&loadLibzip), &here);
  return std::filesystem::path(here.dli_fname).replace_filename(kLibzipModule);
}

// Loaded until this module is unloaded. What could not be loaded is tried again: the
// process may just have been short of descriptors.
class Library {
 public:
  Library() = default;
  ~Library() {
    if (void* const handle = handle_) ::dlclose(handle);
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  OpenFunction open() {
    const std::lock_guard lock(mutex_);
    if (handle_ == nullptr) handle_ = ::dlopen(libzipModule().c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const handle = handle_;
    if (handle == nullptr) return nullptr;
    return reinterpret_cast<OpenFunction>(::dlsym(handle, kUnzipOpenByLibzip));
  }

 private:
  std::mutex mutex_;
  // Atomic for ThreadSanitizer alone: another thread may unload this module and then one
  // load it again in the same place, under a lock of the dynamic loader that it does not see.
  std::atomic<void*> handle_ = nullptr;
};

Library& library() {
  static Library library;
  return library;
}

}  // namespace

bool loadLibzip() { return library().open() != nullptr; }

std::unique_ptr<LibzipArchive> openByLibzip(_VPTPIOobj* io, std::vector<std::uint64_t> flags) {
  const OpenFunction open = library().open();
  return std::unique_ptr<LibzipArchive>(open != nullptr ? open(io, &flags) : nullptr);
}

}  // namespace dorvex::unzip
