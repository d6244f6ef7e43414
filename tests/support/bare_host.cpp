#include "support/bare_host.h"

#include <dlfcn.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string_view>

#include "support/host_code.h"
#include "support/host_tables.h"
#include "support/package_writer.h"

namespace dorvex::testing {
namespace {

Stream& toStream(_VPTPIOobj* io) { return *static_cast<Stream*>(io); }

}  // namespace

int readFromMemory(Stream& stream, void* buffer, std::uint32_t count) {
  const std::size_t left =
      stream.contents.size() - std::min(stream.position, stream.contents.size());
  const std::size_t size = std::min<std::size_t>({count, stream.maxRead, left});
  if (size != 0) std::memcpy(buffer, stream.contents.data() + stream.position, size);
  stream.position += size;
  return static_cast<int>(size);
}

int readToTheEndOnce(Stream& stream, void* buffer, std::uint32_t count) {
  if (stream.position > stream.contents.size()) throw EndOfDocument{};
  const int got = readFromMemory(stream, buffer, count);
  if (got == 0) ++stream.position;
  return got;
}

// A zip in memory behind the slots of a container module.
struct BareHost::EmulatedContainer {
  BareHost* host;
  std::vector<Member> members;
};

struct BareHost::Slots {
  static BareHost& hostOf(tag_TPVAPIServices* services) {
    return *static_cast<Services*>(services)->host;
  }

  // I/O objects.

  static int open(_VPTPIOobj* io) {
    const HostCode own;
    Stream& stream = toStream(io);
    stream.host->record("Open " + stream.name);
    if (stream.host->failsNow(Slot::kOpen)) return 0;
    stream.position = 0;
    return 1;
  }

  static int read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
    const HostCode own;
    Stream& stream = toStream(io);
    return stream.onRead ? stream.onRead(stream, buffer, count)
                         : readFromMemory(stream, buffer, count);
  }

  static int write(_VPTPIOobj* io, const void* buffer, std::uint32_t count) {
    const HostCode own;
    Stream& stream = toStream(io);
    stream.contents.append(static_cast<const char*>(buffer), count);
    return static_cast<int>(count);
  }

  static int seek(_VPTPIOobj* io, std::int64_t offset, int whence) {
    Stream& stream = toStream(io);
    const std::size_t origin = whence == VN_SEEK_END ? stream.contents.size() : 0;
    stream.position = origin + static_cast<std::size_t>(offset);
    return 0;
  }

  static std::int64_t tell(_VPTPIOobj* io) {
    return static_cast<std::int64_t>(toStream(io).position);
  }

  static int close(_VPTPIOobj* io) {
    const HostCode own;
    Stream& stream = toStream(io);
    BareHost& host = *stream.host;
    host.record("Close " + stream.name);
    std::erase_if(host.streams_, [&stream](const auto& open) { return open.get() == &stream; });
    return 0;
  }

  static void fillSlots(Stream& stream, BareHost& host) {
    stream.host = &host;
    stream.pathName = nullptr;
    fillObject<Slots>(stream);
  }

  static _VPTPIOobj* openFile(tag_TPVAPIServices* services, const char* path, const char* mode) {
    const HostCode own;
    BareHost& host = hostOf(services);
    const bool isScratch = path == nullptr;
    host.record(std::string("OpenFile ") + (isScratch ? "scratch" : path));
    if (std::string_view(mode) != (isScratch ? "a+" : "rb")) std::terminate();
    if (host.failsNow(Slot::kOpenFile)) return nullptr;
    auto stream = std::make_unique<Stream>();
    fillSlots(*stream, host);
    stream->name = isScratch ? "scratch" : path;
    if (!isScratch) {
      if (!std::filesystem::is_regular_file(path)) return nullptr;
      stream->contents = readFile(path);
    }
    if (host.onOpenFile) host.onOpenFile(*stream);
    host.streams_.push_back(std::move(stream));
    return host.streams_.back().get();
  }

  // The allocator.

  static void* alloc(VNAllocator* allocator, std::size_t size) {
    const HostCode own;
    BareHost& host = *static_cast<BareHost*>(allocator->opaque);
    if (host.failsNow(Slot::kAlloc)) return nullptr;
    void* block = std::malloc(size);
    std::memset(block, kDirty, size);
    host.blocks_.insert(block);
    return block;
  }

  static void release(VNAllocator* allocator, void* block) {
    const HostCode own;
    BareHost& host = *static_cast<BareHost*>(allocator->opaque);
    if (host.blocks_.erase(block) == 0)
      ++host.badFrees_;
    else
      std::free(block);
  }

  // Modules.

  static int loadDll(tag_TPVAPIServices* services, const char* name, void** handle) {
    const HostCode own;
    BareHost& host = hostOf(services);
    host.record(std::string("LoadDll ") + name);
    if (host.failsNow(Slot::kLoadDll)) return 0;
    *handle = &host;
    if (host.containerModulePath_)
      *handle = dlopen(host.containerModulePath_->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (*handle == nullptr) return 0;
    ++host.loadedModules_;
    return 1;
  }

  static void* getDllSymbol(tag_TPVAPIServices* services, void* handle, const char* symbol) {
    const HostCode own;
    BareHost& host = hostOf(services);
    host.record(std::string("GetDllSymbol ") + symbol);
    if (host.failsNow(Slot::kGetDllSymbol)) return nullptr;
    if (host.containerModulePath_) return dlsym(handle, symbol);
    return reinterpret_cast<void*>(getContainerReaderInterface);
  }

  static void freeDll(tag_TPVAPIServices* services, void* handle) {
    const HostCode own;
    BareHost& host = hostOf(services);
    host.record("FreeDll");
    --host.loadedModules_;
    if (host.containerModulePath_) dlclose(handle);
  }

  // The emulated container module.

  static int getContainerReaderInterface(ContainerReaderInterface* interface) {
    *interface = {openContainer, closeContainer, getEntryInfo, extractEntry, getEntryCount, {}};
    return 1;
  }

  static void* openContainer(_VPTPIOobj* io, tag_TPVAPIServices* services, int option) {
    const HostCode own;
    BareHost& host = hostOf(services);
    host.record("OpenContainer");
    if (option != 0) std::terminate();
    if (host.failsNow(Slot::kOpenContainer)) return nullptr;
    try {
      auto container = std::make_unique<EmulatedContainer>();
      container->host = &host;
      const std::string& bytes = toStream(io).contents;
      if (bytes.empty()) return nullptr;  // libzip would take it for a zip of no members
      container->members = unzip(bytes);
      ++host.openContainers_;
      return container.release();
    } catch (const std::exception&) {
      return nullptr;
    }
  }

  static int closeContainer(void* handle) {
    const HostCode own;
    const std::unique_ptr<EmulatedContainer> container(static_cast<EmulatedContainer*>(handle));
    container->host->record("CloseContainer");
    --container->host->openContainers_;
    return 0;
  }

  static int getEntryInfo(void* handle, std::int32_t index, ContainerEntryInfo* entry) {
    const HostCode own;
    auto& [host, members] = *static_cast<EmulatedContainer*>(handle);
    host->record("GetEntryInfo " + std::to_string(index));
    int status = VN_CONTAINER_OK;
    if (host->failsNow(Slot::kGetEntryInfo, &status)) return status;
    const Member& member = members[static_cast<std::size_t>(index)];
    std::memset(entry, kDirty, sizeof *entry);
    std::memcpy(entry->name, member.name.c_str(), member.name.size() + 1);
    const auto stated = host->statedSizes.find(index);
    entry->size = stated != host->statedSizes.end()
                      ? stated->second
                      : static_cast<std::uint32_t>(member.contents.size());
    return VN_CONTAINER_OK;
  }

  static int extractEntry(void* handle, std::int32_t index, _VPTPIOobj* stream) {
    const HostCode own;
    auto& [host, members] = *static_cast<EmulatedContainer*>(handle);
    host->record("ExtractEntry " + std::to_string(index));
    int status = VN_CONTAINER_OK;
    if (host->failsNow(Slot::kExtractEntry, &status)) return status;
    const std::string& contents = members[static_cast<std::size_t>(index)].contents;
    stream->Write(stream, contents.data(), static_cast<std::uint32_t>(contents.size()));
    return VN_CONTAINER_OK;
  }

  static int getEntryCount(void* handle) {
    auto& [host, members] = *static_cast<EmulatedContainer*>(handle);
    return host->entryCount.value_or(static_cast<int>(members.size()));
  }
};

BareHost::BareHost() { fillServices<Slots>(services_, *this); }

BareHost::~BareHost() {
  for (void* block : blocks_) std::free(block);
}

Stream& BareHost::addDocument(std::string contents, std::optional<std::string> path) {
  Stream& stream = *documents_.emplace_back(std::make_unique<Stream>());
  Slots::fillSlots(stream, *this);
  stream.name = "document";
  stream.contents = std::move(contents);
  if (path) {
    stream.path = std::move(*path);
    stream.pathName = stream.path.c_str();
  }
  return stream;
}

void BareHost::failAt(Slot slot, int call, int status) { failures_[{slot, call}] = status; }

int BareHost::logged(const std::string& entry) const {
  return static_cast<int>(std::ranges::count(log_, entry));
}

bool BareHost::failsNow(Slot slot, int* status) {
  const int call = ++counts_[static_cast<std::size_t>(slot)];
  const auto failure = failures_.find({slot, call});
  if (failure == failures_.end()) return false;
  if (status != nullptr) *status = failure->second;
  return true;
}

}  // namespace dorvex::testing
