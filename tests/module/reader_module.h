// The built modules, loaded as any host loads them.
#pragma once

#include <dlfcn.h>

#include <stdexcept>
#include <string>

#include "Readers/hostapi/reader_interface.h"

namespace dorvex::testing {

// The reader module, loaded with dlopen; closed at the end.
class ReaderModule {
 public:
  ReaderModule() : handle_(dlopen(path(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
    symbol<GetReaderInterfaceFunction>("dorvexGetReaderInterface")(&interface_);
  }
  ReaderModule(const ReaderModule&) = delete;
  ReaderModule& operator=(const ReaderModule&) = delete;
  ~ReaderModule() { dlclose(handle_); }

  static const char* path() { return DORVEX_READER_MODULE; }

  const ReaderInterface& interface() const { return interface_; }

  // An exported function; throws where there is none.
  template <typename Function>
  Function symbol(const char* name) const {
    void* address = dlsym(handle_, name);
    if (address == nullptr) throw std::runtime_error(std::string("no symbol ") + name);
    return reinterpret_cast<Function>(address);
  }

 private:
  void* handle_;
  ReaderInterface interface_{};
};

// One reader for the whole test program. Never unloaded, since what is reported at
// the end of a process is told by the module's symbols.
inline const ReaderModule& theReader() {
  static const ReaderModule* const module = new ReaderModule;
  return *module;
}

// The container module that stands beside the reader.
inline std::string containerModulePath() { return DORVEX_CONTAINER_MODULE; }

}  // namespace dorvex::testing
