#include "fuzz_host.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/registry.h"
#include "looking/chunk_stream.h"
#include "reference_walk.h"
#include "support/host_tables.h"
#include "support/package_writer.h"

// Of the container module, which is linked in too.
extern "C" int unzipGetContainerReaderInterface(ContainerReaderInterface* interface);

namespace dorvex::fuzz {
namespace {

constexpr std::size_t kMostScratchBytes = std::size_t{8} << 20;
constexpr int kMostNestedContainers = 4;
constexpr std::size_t kReaderBuffer = 4096;

}  // namespace

struct FuzzHost::Stream : _VPTPIOobj {
  explicit Stream(FuzzHost& owner) : _VPTPIOobj{}, host(owner), readLengths(owner.readLengths_) {}

  FuzzHost& host;
  ReadLengths readLengths;
  std::string contents;
  std::string path;
  std::size_t position = 0;
  bool ended = false;        // its end was reported
  bool isContainer = false;  // it is read by the container module
  bool isChecked = false;    // it is known that the reader's walk of it ends
  std::unique_ptr<ByteStore> store;
  std::optional<ChunkAlignedReader> aligned;
};

struct FuzzHost::Container {
  FuzzHost& host;
  void* handle;
};

struct FuzzHost::Slots {
  static FuzzHost& hostOf(tag_TPVAPIServices* services) {
    return *static_cast<Services*>(services)->host;
  }
  static Stream& streamOf(_VPTPIOobj* io) { return *static_cast<Stream*>(io); }

  // I/O objects.

  static int open(_VPTPIOobj* io) {
    streamOf(io).position = 0;
    return 1;
  }

  static int readInStep(Stream& stream, void* buffer, std::uint32_t count) {
    if (!stream.aligned) {
      const auto* bytes = reinterpret_cast<const unsigned char*>(stream.contents.data());
      stream.store = makeMemoryStore({bytes, stream.contents.size()});
      stream.aligned.emplace(*stream.store);
    }
    const std::int64_t got = stream.aligned->readAt(stream.position, buffer, count);
    stream.position += static_cast<std::size_t>(got);
    return static_cast<int>(got);
  }

  static int readBytes(Stream& stream, void* buffer, std::uint32_t count) {
    const std::size_t left =
        stream.contents.size() - std::min(stream.position, stream.contents.size());
    const std::size_t size = std::min(stream.readLengths.next(count), left);
    std::memcpy(buffer, stream.contents.data() + stream.position, size);
    stream.position += size;
    return static_cast<int>(size);
  }

  static int read(_VPTPIOobj* io, void* buffer, std::uint32_t count) {
    Stream& stream = streamOf(io);
    if (stream.isContainer) return readBytes(stream, buffer, count);
    if (stream.ended || !walkWillEnd(stream)) stream.host.endDocument();
    const bool inStep = stream.host.reading_ == Reading::kInStep;
    const int got = inStep ? readInStep(stream, buffer, count) : readBytes(stream, buffer, count);
    stream.ended = got == 0;
    return got;
  }

  // Decodes a member just as the reader is about to, and looks at the objects.
  static bool walkWillEnd(Stream& stream) {
    if (stream.isChecked) return true;
    stream.isChecked = true;
    Stream copy(stream.host);
    testing::fillObject<Slots>(copy);
    copy.contents = stream.contents;
    copy.isChecked = true;
    std::vector<unsigned char> buffer(kReaderBuffer);
    vn::iwork13::DataDecompresser decompresser{buffer.data(), kReaderBuffer, {}, {}, 0, 0};
    try {
      while (decompresser.bytesConsumed < copy.contents.size()) decompresser.read(&copy);
    } catch (...) {
      return true;  // the reader does not come to the walk either
    }
    return walkEnds(decompresser.objectStream, vn::iwork13::getPagesMessage);
  }

  static int write(_VPTPIOobj* io, const void* buffer, std::uint32_t count) {
    Stream& stream = streamOf(io);
    stream.host.scratchBytes_ += count;
    if (stream.host.scratchBytes_ > kMostScratchBytes) return 0;
    stream.contents.append(static_cast<const char*>(buffer), count);
    return static_cast<int>(count);
  }

  static int seek(_VPTPIOobj* io, std::int64_t offset, int whence) {
    Stream& stream = streamOf(io);
    const auto origin =
        whence == VN_SEEK_END ? static_cast<std::int64_t>(stream.contents.size()) : 0;
    stream.position = static_cast<std::size_t>(
        std::clamp<std::int64_t>(origin + offset, 0, static_cast<std::int64_t>(INT32_MAX)));
    return 0;
  }

  static std::int64_t tell(_VPTPIOobj* io) {
    return static_cast<std::int64_t>(streamOf(io).position);
  }

  static int close(_VPTPIOobj* io) {
    Stream& stream = streamOf(io);
    const auto erased = std::erase_if(
        stream.host.streams_, [&stream](const auto& open) { return open.get() == &stream; });
    require(erased == 1, "the reader closes streams that it opened");
    return 0;
  }

  static _VPTPIOobj* openFile(tag_TPVAPIServices* services, const char* path, const char*) {
    FuzzHost& host = hostOf(services);
    auto stream = std::make_unique<Stream>(host);
    testing::fillObject<Slots>(*stream);
    if (path != nullptr) {
      host.openedPaths_.emplace_back(path);
      std::error_code error;
      if (!std::filesystem::is_regular_file(path, error)) return nullptr;
      stream->contents = testing::readFile(path);
      stream->path = path;
      stream->pathName = stream->path.c_str();
    }
    host.streams_.push_back(std::move(stream));
    return host.streams_.back().get();
  }

  // The allocator.

  static void* alloc(VNAllocator* allocator, std::size_t size) {
    FuzzHost& host = *static_cast<FuzzHost*>(allocator->opaque);
    void* block = std::malloc(size);
    std::memset(block, testing::kDirty, size);
    host.blocks_.insert(block);
    return block;
  }

  static void release(VNAllocator* allocator, void* block) {
    FuzzHost& host = *static_cast<FuzzHost*>(allocator->opaque);
    if (host.blocks_.erase(block) == 0)
      host.soundFrees_ = false;
    else
      std::free(block);
  }

  // Modules.

  static int loadDll(tag_TPVAPIServices* services, const char*, void** handle) {
    FuzzHost& host = hostOf(services);
    ++host.loadedModules_;
    *handle = &host;
    return 1;
  }

  static void* getDllSymbol(tag_TPVAPIServices*, void*, const char*) {
    return reinterpret_cast<void*>(fillTap);
  }

  static void freeDll(tag_TPVAPIServices* services, void*) { --hostOf(services).loadedModules_; }

  // The container module, with the host in between.

  static int fillTap(ContainerReaderInterface* interface) {
    *interface = {openContainer, closeContainer, getEntryInfo, extractEntry, getEntryCount, {}};
    return 1;
  }

  static void* openContainer(_VPTPIOobj* io, tag_TPVAPIServices* services, int option) {
    FuzzHost& host = hostOf(services);
    if (host.openContainers_ == kMostNestedContainers) host.endDocument();
    streamOf(io).isContainer = true;
    void* handle = host.module_.OpenContainer(io, services, option);
    if (handle == nullptr) return nullptr;
    ++host.openContainers_;
    return new Container{host, handle};
  }

  static int closeContainer(void* container) {
    const std::unique_ptr<Container> closed(static_cast<Container*>(container));
    --closed->host.openContainers_;
    return closed->host.module_.CloseContainer(closed->handle);
  }

  static int getEntryInfo(void* container, std::int32_t index, ContainerEntryInfo* entry) {
    const auto& [host, handle] = *static_cast<Container*>(container);
    std::memset(entry, testing::kDirty, sizeof *entry);
    return host.module_.GetEntryInfo(handle, index, entry);
  }

  static int extractEntry(void* container, std::int32_t index, _VPTPIOobj* stream) {
    const auto& [host, handle] = *static_cast<Container*>(container);
    const int status = host.module_.ExtractEntry(handle, index, stream);
    if (host.scratchBytes_ > kMostScratchBytes) host.endDocument();
    return status;
  }

  static int getEntryCount(void* container) {
    const auto& [host, handle] = *static_cast<Container*>(container);
    return host.module_.GetEntryCount(handle);
  }
};

FuzzHost::FuzzHost(ReadLengths readLengths, Reading reading)
    : readLengths_(readLengths), reading_(reading) {
  testing::fillServices<Slots>(services_, *this);
  unzipGetContainerReaderInterface(&module_);
}

FuzzHost::~FuzzHost() {
  for (void* block : blocks_) std::free(block);  // overflow buffers that nobody fetched
}

_VPTPIOobj* FuzzHost::addDocument(std::string contents, std::optional<std::string> path) {
  Stream& stream = *documents_.emplace_back(std::make_unique<Stream>(*this));
  testing::fillObject<Slots>(stream);
  stream.contents = std::move(contents);
  if (path) {
    stream.path = std::move(*path);
    stream.pathName = stream.path.c_str();
  }
  return &stream;
}

void FuzzHost::endDocument() {
  hasEnded_ = true;
  throw EndedByHost{};
}

void FuzzHost::requireAllClosed() const {
  require(streams_.empty(), "the reader closes every stream");
  require(openContainers_ == 0, "the reader closes every container");
  require(loadedModules_ == 0, "the reader gives back every module");
}

}  // namespace dorvex::fuzz
