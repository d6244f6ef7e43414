// The container module as a reader sees it, and I/O objects over memory.
#pragma once

#include <dlfcn.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <stdexcept>
#include <string>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "dorvex/unzip_limits.h"

namespace dorvex::testing {

// A stream over a string. Slots may be replaced.
struct MemoryObject : _VPTPIOobj {
  explicit MemoryObject(std::string contents = "") : _VPTPIOobj{}, bytes(std::move(contents)) {
    Read = [](_VPTPIOobj* io, void* buffer, std::uint32_t count) -> int {
      return self(io).read(static_cast<char*>(buffer), count);
    };
    Write = [](_VPTPIOobj* io, const void* buffer, std::uint32_t count) -> int {
      return self(io).write(static_cast<const char*>(buffer), count);
    };
    Seek = [](_VPTPIOobj* io, std::int64_t offset, int whence) -> int {
      const auto size = static_cast<std::int64_t>(self(io).bytes.size());
      self(io).position = offset + (whence == VN_SEEK_END ? size : 0);
      return 0;  // readers ignore it, and hosts may say anything
    };
    Tell = [](_VPTPIOobj* io) { return self(io).position; };
  }

  static MemoryObject& self(_VPTPIOobj* io) { return *static_cast<MemoryObject*>(io); }

  int read(char* buffer, std::uint32_t count) {
    ++reads;
    const std::size_t start = std::min(bytes.size(), static_cast<std::size_t>(position));
    const std::size_t got = std::min({bytes.size() - start, std::size_t{count}, longestRead});
    std::memcpy(buffer, bytes.data() + start, got);
    position += static_cast<std::int64_t>(got);
    return static_cast<int>(got);
  }

  int write(const char* buffer, std::uint32_t count) {
    const std::size_t room = capacity - std::min(capacity, bytes.size());
    const std::size_t taken = std::min({std::size_t{count}, room, longestWrite});
    bytes.append(buffer, taken);
    return static_cast<int>(taken);
  }

  std::string bytes;
  std::int64_t position = 0;
  int reads = 0;
  std::size_t longestRead = std::numeric_limits<std::size_t>::max();
  std::size_t longestWrite = std::numeric_limits<std::size_t>::max();
  std::size_t capacity = std::numeric_limits<std::size_t>::max();
};

// unzip.so, loaded for as long as the object lives.
class LoadedModule {
 public:
  explicit LoadedModule(const std::string& file = DORVEX_CONTAINER_MODULE)
      : handle_(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(::dlerror());
    const auto fill = reinterpret_cast<GetContainerReaderInterfaceFunction>(
        ::dlsym(handle_, "unzipGetContainerReaderInterface"));
    if (fill == nullptr) throw std::runtime_error("no entry point");
    std::memset(&interface, 0xA5, sizeof interface);
    fill(&interface);
    openLimited = reinterpret_cast<UnzipOpenLimitedContainerFunction>(
        ::dlsym(handle_, kUnzipOpenLimitedContainer));
    if (openLimited == nullptr) throw std::runtime_error("no entry point for limits");
    loadLibzip = reinterpret_cast<UnzipLoadLibzipFunction>(::dlsym(handle_, kUnzipLoadLibzip));
    if (loadLibzip == nullptr) throw std::runtime_error("no entry point for libzip");
  }
  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;
  ~LoadedModule() { ::dlclose(handle_); }

  ContainerReaderInterface interface;
  UnzipOpenLimitedContainerFunction openLimited = nullptr;
  UnzipLoadLibzipFunction loadLibzip = nullptr;

 private:
  void* handle_;
};

}  // namespace dorvex::testing
