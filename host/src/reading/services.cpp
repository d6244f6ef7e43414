#include "reading/services.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>

#include "Readers/hostapi/container_status.h"
#include "looking/chunk_stream.h"
#include "looking/diagnosis.h"
#include "looking/object_stream.h"

namespace dorvex {
namespace {

constexpr char kContainerEntryPoint[] = "unzipGetContainerReaderInterface";

void release(VNAllocator*, void* pointer) { std::free(pointer); }

std::string lastLoaderError(const char* otherwise) {
  const char* reason = ::dlerror();
  return reason != nullptr ? reason : otherwise;
}

HostServices& host(tag_TPVAPIServices* services) { return *static_cast<HostServices*>(services); }

tag_TPVAPIServices* servicesOf(VNAllocator* allocator) {
  auto* bytes = reinterpret_cast<unsigned char*>(allocator);
  return reinterpret_cast<tag_TPVAPIServices*>(bytes - offsetof(tag_TPVAPIServices, allocator));
}

// Never waits for a writer at a pipe that poses as a member.
UniqueFd openRegular(const char* path) {
  UniqueFd file(::open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) return {};
  if (S_ISREG(status.st_mode)) return file;
  errno = S_ISDIR(status.st_mode) ? EISDIR : EINVAL;
  return {};
}

// What the reader follows as a zip within the zip.
bool isNestedContainer(std::string_view name) { return name.ends_with("Index.zip"); }

// The limits of a document as the container module takes them.
UnzipLimits toUnzipLimits(const ContainerLimits& limits) {
  // One set of defaults, whether a host sets limits or not.
  static_assert(ContainerLimits{}.members == UnzipLimits{}.members);
  static_assert(ContainerLimits{}.expansion == UnzipLimits{}.expansion);
  static_assert(ContainerLimits{}.memberBytes == UnzipLimits{}.memberBytes);
  static_assert(ContainerLimits{}.totalBytes == UnzipLimits{}.totalBytes);
  UnzipLimits result;
  result.members = limits.members;
  result.expansion = limits.expansion;
  result.memberBytes = limits.memberBytes;
  result.totalBytes = limits.totalBytes;
  return result;
}

PassedLimit passedLimit(const UnzipLimits& limits) {
  switch (limits.passed) {
    case UNZIP_LIMIT_MEMBERS:
      return {Limit::kMembers, limits.members, {}};
    case UNZIP_LIMIT_MEMBER_BYTES:
      return {Limit::kMemberBytes, limits.memberBytes, {}};
    case UNZIP_LIMIT_TOTAL_BYTES:
      return {Limit::kTotalBytes, limits.totalBytes, {}};
    case UNZIP_LIMIT_EXPANSION:
      return {Limit::kExpansion, limits.expansion, {}};
    case UNZIP_LIMIT_NONE:
    case UNZIP_LIBZIP_MISSING:
      break;
  }
  return {};
}

}  // namespace

// An object that the reader asked for and closes.
struct HostServices::OwnedObject : IoObject {
  OwnedObject(std::unique_ptr<ByteStore> store, Settings settings, Observations& observations,
              HostServices& owner)
      : IoObject(std::move(store), std::move(settings), observations), owner(owner) {
    Close = closeObject;
  }
  HostServices& owner;
  std::uint32_t depth = 0;  // containers that the member lies in
};

// A container that is open through the tap.
struct HostServices::Container {
  HostServices& host;
  ContainerReaderInterface module;
  void* handle;
  std::string name;     // its own, as a member or a file; empty for the document
  std::uint32_t depth;  // 1 for the document

  std::string memberName(std::int32_t index) const {
    const std::string prefix = name.empty() ? "" : name + "/";
    ContainerEntryInfo entry;
    if (module.GetEntryInfo(handle, index, &entry) != VN_CONTAINER_OK) {
      return prefix + "member number " + std::to_string(index + 1);
    }
    return prefix + entry.name;
  }
};

HostServices::ContainerModule HostServices::ContainerModule::of(void* handle, void* entryPoint) {
  ContainerModule module;
  reinterpret_cast<GetContainerReaderInterfaceFunction>(entryPoint)(&module.interface);
  module.openLimited = reinterpret_cast<UnzipOpenLimitedContainerFunction>(
      ::dlsym(handle, kUnzipOpenLimitedContainer));
  return module;
}

void* HostServices::ContainerModule::open(_VPTPIOobj* io, HostServices& host,
                                          UnzipLimits& limits) const {
  if (openLimited == nullptr) return interface.OpenContainer(io, &host, 0);
  errno = 0;
  void* const container = openLimited(io, &limits);
  if (limits.passed == UNZIP_LIBZIP_MISSING && errno != ENOMEM)
    host.observations_.missingModule = lastLoaderError(kContainerModule);
  return container;
}

HostServices::HostServices(Settings settings, Observations& observations)
    : tag_TPVAPIServices{},
      settings_(std::move(settings)),
      observations_(observations),
      quota_(settings_.scratchBytes, settings_.containers),
      unzipLimits_(toUnzipLimits(settings_.containers)) {
  LoadDll = loadDll;
  GetDllSymbol = getDllSymbol;
  FreeDll = freeDll;
  OpenFile = openFile;
  allocator.Alloc = allocate;
  allocator.Free = release;
  targetCharSet = VN_CHARSET_UTF8;
}

HostServices::~HostServices() {
  for (const auto& [name, handle] : modules_) ::dlclose(handle);
}

// The reader has no number for it.
void* HostServices::allocate(VNAllocator* allocator, std::size_t size) {
  void* memory = std::malloc(size);
  if (memory == nullptr) host(servicesOf(allocator)).observations_.outOfMemory = true;
  return memory;
}

// --- Modules ---

// Only plain file names: a module comes from the module folder and nowhere else.
void* HostServices::load(const std::string& name) {
  if (name.empty() || name.find('/') != std::string::npos) return nullptr;
  return ::dlopen((settings_.moduleFolder / name).c_str(), RTLD_NOW | RTLD_LOCAL);
}

int HostServices::loadDll(tag_TPVAPIServices* services, const char* name, void** handle) {
  auto& self = host(services);
  try {
    *handle = self.load(name);
    if (*handle == nullptr) {
      self.observations_.missingModule = lastLoaderError(name);
      return 0;
    }
    if (!self.modules_.contains(name)) self.modules_[name] = self.load(name);
    return 1;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

void* HostServices::getDllSymbol(tag_TPVAPIServices* services, void* handle, const char* symbol) {
  void* address = ::dlsym(handle, symbol);
  if (address == nullptr || std::strcmp(symbol, kContainerEntryPoint) != 0) return address;
  host(services).containerModule_ = ContainerModule::of(handle, address);
  return reinterpret_cast<void*>(&fillTap);
}

void HostServices::freeDll(tag_TPVAPIServices*, void* handle) { ::dlclose(handle); }

// --- Streams ---

_VPTPIOobj* HostServices::openFile(tag_TPVAPIServices* services, const char* path,
                                   const char* mode) {
  auto& self = host(services);
  const std::string_view wanted = mode != nullptr ? mode : "";
  try {
    if (path != nullptr && wanted == "rb") return self.openPath(path);
    if (path == nullptr && wanted == "a+") return self.openScratch();
  } catch (const std::bad_alloc&) {
    self.observations_.scratchFailure = {"", ENOMEM};
  }
  return nullptr;
}

_VPTPIOobj* HostServices::openPath(const char* path) {
  UniqueFd file = openRegular(path);
  std::unique_ptr<ByteStore> store = file ? makeFileStore(std::move(file)) : nullptr;
  if (!store) {
    observations_.openFailure = {nameOf(path), errno};
    return nullptr;
  }
  return adopt(std::move(store), {.content = contentOf(path),
                                  .alignReads = settings_.alignReads,
                                  .lookThrough = settings_.lookThrough,
                                  .name = nameOf(path),
                                  .path = path});
}

_VPTPIOobj* HostServices::openScratch() {
  return adopt(makeScratchStore(settings_.scratchMemory, settings_.openScratchFile),
               {.content = IoObject::Content::kUnknown,
                .alignReads = settings_.alignReads,
                .lookThrough = settings_.lookThrough,
                .name = "",
                .path = "",
                .quota = &quota_});
}

_VPTPIOobj* HostServices::adopt(std::unique_ptr<ByteStore> store, IoObject::Settings settings) {
  auto object =
      std::make_unique<OwnedObject>(std::move(store), std::move(settings), observations_, *this);
  _VPTPIOobj* io = object.get();
  objects_.emplace(io, std::move(object));
  return io;
}

int HostServices::closeObject(_VPTPIOobj* io) {
  static_cast<OwnedObject*>(io)->owner.objects_.erase(io);
  return 1;
}

HostServices::OwnedObject* HostServices::find(_VPTPIOobj* io) {
  const auto found = objects_.find(io);
  return found == objects_.end() ? nullptr : found->second.get();
}

std::string HostServices::nameOf(const std::string& path) const {
  const std::string prefix = settings_.root + "/";
  const bool inside = !settings_.root.empty() && path.starts_with(prefix);
  return inside ? path.substr(prefix.size()) : path;
}

// --- The tap ---

int HostServices::fillTap(ContainerReaderInterface* interface) {
  *interface = {openContainer, closeContainer, getEntryInfo, extractEntry, getEntryCount, {}};
  return 1;
}

// Notes the limit and ends the document.
void HostServices::stop(Limit limit, std::uint64_t allowed, const std::string& name) {
  observations_.limitPassed = {limit, allowed, name};
  throw LimitPassed{};
}

// Ends the document when the container module or a scratch stream has met a limit.
void HostServices::stopIfPassed(const std::string& name) {
  if (observations_.limitPassed) throw LimitPassed{};
  const PassedLimit passed = passedLimit(unzipLimits_);
  if (passed.limit != Limit::kNone) stop(passed.limit, passed.allowed, name);
}

void* HostServices::openContainer(_VPTPIOobj* io, tag_TPVAPIServices* services, int) {
  auto& self = host(services);
  const OwnedObject* object = self.find(io);
  const ContainerLimits& limits = self.settings_.containers;
  try {
    const std::string name = object != nullptr ? object->name() : "";
    const std::uint32_t depth = 1 + (object != nullptr ? object->depth : 0);
    if (limits.depth != 0 && depth > limits.depth) self.stop(Limit::kDepth, limits.depth, name);
    auto container = std::make_unique<Container>(
        Container{self, self.containerModule_.interface, nullptr, name, depth});
    errno = 0;
    container->handle = self.containerModule_.open(io, self, self.unzipLimits_);
    // A container module has no number for that, either.
    if (container->handle == nullptr && errno == ENOMEM) self.observations_.outOfMemory = true;
    self.stopIfPassed(name);
    if (container->handle != nullptr) return container.release();
    // Nothing may come out: whoever can load what is missing reads it from the beginning.
    if (self.observations_.missingModule) throw LimitPassed{};
    self.observations_.notAContainer = name;
  } catch (const std::bad_alloc&) {
    self.observations_.scratchFailure = {"", ENOMEM};
  }
  return nullptr;
}

int HostServices::closeContainer(void* container) {
  const std::unique_ptr<Container> owned(static_cast<Container*>(container));
  return owned->module.CloseContainer(owned->handle);
}

int HostServices::getEntryInfo(void* container, std::int32_t index, ContainerEntryInfo* entry) {
  const auto& self = *static_cast<Container*>(container);
  const int status = self.module.GetEntryInfo(self.handle, index, entry);
  try {
    if (status == VN_CONTAINER_OK) self.host.observations_.kind.noteName(entry->name);
    if (status == VN_CONTAINER_OK) return status;
    self.host.observations_.refused = {self.memberName(index), status};
  } catch (const std::bad_alloc&) {
    return VN_CONTAINER_OUT_OF_MEMORY;
  }
  return status;
}

// The size is compared once more: the reader would never find the end of a
// stream that is shorter than its record says.
int HostServices::extractEntry(void* container, std::int32_t index, _VPTPIOobj* stream) {
  const auto& self = *static_cast<Container*>(container);
  try {
    const std::string name = self.memberName(index);
    OwnedObject* object = self.host.find(stream);
    if (object != nullptr) {
      object->receiveMember(name);
      object->depth = self.depth;
    }
    int status = self.module.ExtractEntry(self.handle, index, stream);
    self.host.stopIfPassed(name);
    ContainerEntryInfo entry;
    if (status == VN_CONTAINER_OK) status = self.module.GetEntryInfo(self.handle, index, &entry);
    if (status == VN_CONTAINER_OK && object != nullptr && object->size() != entry.size) {
      status = VN_CONTAINER_DAMAGED;
    }
    if (status != VN_CONTAINER_OK) self.host.observations_.refused = {name, status};
    return status;
  } catch (const std::bad_alloc&) {
    return VN_CONTAINER_OUT_OF_MEMORY;
  }
}

int HostServices::getEntryCount(void* container) {
  const auto& self = *static_cast<Container*>(container);
  const int count = self.module.GetEntryCount(self.handle);
  const std::uint32_t most = self.host.settings_.containers.members;
  if (most != 0 && count > 0 && static_cast<std::uint32_t>(count) > most) {
    self.host.stop(Limit::kMembers, most, self.name);
  }
  return count;
}

// The container module for a look of the host's own, past the tap.
class HostServices::OwnContainerModule {
 public:
  explicit OwnContainerModule(HostServices& host)
      : host_(host),
        handle_(host.load(kContainerModule)),
        limits_(toUnzipLimits(host.settings_.containers)) {
    void* const entryPoint = handle_ != nullptr ? ::dlsym(handle_, kContainerEntryPoint) : nullptr;
    if (entryPoint != nullptr) functions_ = ContainerModule::of(handle_, entryPoint);
  }
  ~OwnContainerModule() {
    if (handle_ != nullptr) ::dlclose(handle_);
  }
  OwnContainerModule(const OwnContainerModule&) = delete;
  OwnContainerModule& operator=(const OwnContainerModule&) = delete;

  // Calls visit for each member of a zip, with a function that extracts it. False for
  // what is no zip.
  template <typename Visit>
  bool visitMembers(_VPTPIOobj& io, Visit visit) {
    const ContainerReaderInterface& container = functions_.interface;
    if (container.OpenContainer == nullptr) return false;
    void* const handle = functions_.open(&io, host_, limits_);
    if (handle == nullptr) return false;
    const std::unique_ptr<void, int (*)(void*)> close(handle, container.CloseContainer);
    const int count = container.GetEntryCount(handle);
    for (std::int32_t index = 0; index < count; ++index) {
      ContainerEntryInfo entry;
      if (container.GetEntryInfo(handle, index, &entry) != VN_CONTAINER_OK) continue;
      visit(std::string(entry.name),
            [&](_VPTPIOobj& stream) { return container.ExtractEntry(handle, index, &stream); });
    }
    return true;
  }

 private:
  HostServices& host_;
  void* handle_;
  ContainerModule functions_;
  UnzipLimits limits_;
};

std::optional<std::vector<std::string>> HostServices::listMembers(_VPTPIOobj& io) {
  std::vector<std::string> names;
  const bool listed = OwnContainerModule(*this).visitMembers(
      io, [&](std::string name, const auto&) { names.push_back(std::move(name)); });
  return listed ? std::optional(std::move(names)) : std::nullopt;
}

// Looks for streams that are not sound, in nested containers as well.
class HostServices::StreamSearch {
 public:
  explicit StreamSearch(HostServices& host)
      : host_(host),
        quota_(host.settings_.scratchBytes, host.settings_.containers),
        module_(host) {}

  // The names of the container's members go behind prefix. depth: 1 for the document.
  bool searchContainer(_VPTPIOobj& io, const std::string& prefix, std::uint32_t depth) {
    return module_.visitMembers(io, [&](const std::string& name, const auto& extract) {
      if (isNestedContainer(name)) {
        searchNested(prefix + name, depth + 1, extract);
      } else if (contentOf(name) == IoObject::Content::kChunks) {
        count(prefix + name, faultOfStream(extract));
      }
    });
  }

  std::vector<SkippedMember> unsound;
  std::size_t sound = 0;

 private:
  void count(const std::string& name, std::optional<std::string> fault) {
    if (fault) {
      unsound.push_back({name, std::move(*fault)});
    } else {
      ++sound;
    }
  }

  template <typename Extract>
  std::optional<std::string> faultOfStream(const Extract& extract) {
    const auto stream = scratch();
    const int status = extract(*stream);
    if (status != VN_CONTAINER_OK) return refusalText(status);
    ObjectLook objects(ObjectLook::Root::kIgnored);
    auto [fault, bytes] = lookThroughChunks(stream->store(), objects);
    return fault || bytes > kMostReadableObjects ? fault : objects.fault();
  }

  template <typename Extract>
  void searchNested(const std::string& name, std::uint32_t depth, const Extract& extract) {
    const std::uint32_t deepest = host_.settings_.containers.depth;
    if (deepest != 0 && depth > deepest) return count(name, "it lies too deep");
    const auto stream = scratch();
    const int status = extract(*stream);
    if (status != VN_CONTAINER_OK) return count(name, refusalText(status));
    if (!searchContainer(*stream, name + "/", depth)) count(name, "is not a readable zip");
  }

  std::unique_ptr<IoObject> scratch() {
    IoObject::Settings settings;
    settings.quota = &quota_;
    return std::make_unique<IoObject>(
        makeScratchStore(host_.settings_.scratchMemory, host_.settings_.openScratchFile),
        std::move(settings), unnoted_);
  }

  HostServices& host_;
  Quota quota_;
  Observations unnoted_;
  OwnContainerModule module_;
};

std::vector<SkippedMember> HostServices::findUnsoundStreams(_VPTPIOobj& io, std::size_t& sound) {
  StreamSearch search(*this);
  search.searchContainer(io, "", 1);
  sound = search.sound;
  return std::move(search.unsound);
}

}  // namespace dorvex
