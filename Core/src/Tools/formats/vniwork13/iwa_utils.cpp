#include "Tools/formats/vniwork13/iwa_utils.h"

#include <google/protobuf/message.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <utility>

#include "Readers/hostapi/container_reader.h"
#include "TSPMessages.pb.h"
#include "Tools/formats/vniwork13/give_back.h"
#include "Tools/formats/vniwork13/member_kind.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "Tools/vnstring/vnstring.h"

namespace vn::iwork13 {

// ---------------------------------------------------------------------------
// DataDecompresser

namespace {

// Not by insert at the end: some compilers lose count of its sizes, and warn.
void append(std::vector<unsigned char>& bytes, const unsigned char* begin,
            const unsigned char* end) {
  const std::size_t size = bytes.size();
  bytes.resize(size + static_cast<std::size_t>(end - begin));
  std::copy(begin, end, bytes.begin() + static_cast<std::ptrdiff_t>(size));
}

// At a chunk boundary: the end of the chunk, or of the read where the chunk is
// not complete. Returns cursor where less than a header is left.
//
// Nothing of a header is carried over to the next read, and a header that ends
// exactly with the read leaves pendingChunk empty, so the next read takes the
// body for a header. Hosts depend on both: a host that must read such a stream
// shortens its reads.
const unsigned char* beginChunk(DataDecompresser& decompresser, const unsigned char* cursor,
                                const unsigned char* end) {
  if (end - cursor < static_cast<std::ptrdiff_t>(kChunkHeaderSize)) return cursor;
  const std::uint32_t length = getChunkLength(cursor);
  const unsigned char* body = cursor + kChunkHeaderSize;
  const auto available = static_cast<std::size_t>(end - body);
  if (length > available) {
    append(decompresser.pendingChunk, body, end);
    decompresser.pendingChunkRemaining = length - static_cast<std::uint32_t>(available);
    return end;
  }
  decompresser.decompressChunk(body, length);
  return body + length;
}

// Inside a chunk: the end of its body, or of the read.
const unsigned char* continueChunk(DataDecompresser& decompresser, const unsigned char* cursor,
                                   const unsigned char* end) {
  auto& [readBuffer, readBufferSize, pending, objectStream, remaining, consumed] = decompresser;
  const auto available = static_cast<std::size_t>(end - cursor);
  if (available < remaining) {
    append(pending, cursor, end);
    remaining -= static_cast<std::uint32_t>(available);
    return end;
  }
  const unsigned char* chunkEnd = cursor + remaining;
  append(pending, cursor, chunkEnd);
  decompresser.decompressChunk(pending.data(), static_cast<std::uint32_t>(pending.size()));
  pending.clear();
  return chunkEnd;
}

}  // namespace

void DataDecompresser::decompressChunk(const unsigned char* body, std::uint32_t length) {
  appendUncompressedChunk(reinterpret_cast<const char*>(body), length, objectStream);
}

void DataDecompresser::read(_VPTPIOobj* io) {
  const auto count = static_cast<std::uint32_t>(io->Read(io, readBuffer, readBufferSize));
  const unsigned char* const end = readBuffer + count;
  const unsigned char* cursor = readBuffer;
  while (cursor != end) {
    // An empty pendingChunk is the only sign of a chunk boundary; one that lacks
    // nothing is decompressed without a byte of this read.
    if (!pendingChunk.empty()) {
      cursor = continueChunk(*this, cursor, end);
      continue;
    }
    const unsigned char* const next = beginChunk(*this, cursor, end);
    if (next == cursor) break;  // one to three bytes, never counted
    cursor = next;
  }
  bytesConsumed += static_cast<std::uint32_t>(cursor - readBuffer);
}

// ---------------------------------------------------------------------------
// MessageMap

using google::protobuf::Message;

MessageMap::~MessageMap() noexcept(false) {
  for (const auto& [identifier, message] : map_) delete message;
}

namespace {

// Room for the whole stream of a member of that size, if the rest of it expands as its
// first chunks have. Otherwise most of the stream would be copied once more while it
// grows. What a size states is believed up to a multiple of what is there.
void makeRoom(DataDecompresser& decompresser, std::uint32_t size) {
  constexpr std::size_t kMostTimes = 16;
  std::vector<unsigned char>& stream = decompresser.objectStream;
  const std::size_t decompressed = decompresser.bytesConsumed - decompresser.pendingChunk.size();
  if (decompressed == 0 || size <= decompressed) return;
  const std::size_t expected = stream.size() * size / decompressed;
  stream.reserve(std::min(expected + expected / 8, kMostTimes * stream.size()));
}

}  // namespace

void MessageMap::populate(_VPTPIOobj* io, std::uint32_t size, unsigned char* buffer,
                          std::uint32_t bufferSize, MessageFactory factory) {
  DataDecompresser decompresser{buffer, bufferSize, {}, {}, 0, 0};
  while (decompresser.bytesConsumed < size && decompresser.objectStream.empty())
    decompresser.read(io);
  makeRoom(decompresser, size);
  while (decompresser.bytesConsumed < size) decompresser.read(io);
  walkObjectStream(std::move(decompresser.objectStream), factory, kDefaultReading, map_);
}

void MessageMap::populate(const std::vector<unsigned char>& objectStream, MessageFactory factory) {
  walkObjectStream(objectStream, factory, kDefaultReading, map_);
}

Message* MessageMap::lookup(unsigned long long identifier) const {
  const auto entry = map_.find(identifier);
  return entry != map_.end() ? buildPending(entry->second) : nullptr;
}

Message* MessageMap::lookup(const TSP::Reference& reference) const {
  return lookup(static_cast<unsigned long long>(reference.identifier()));
}

Message* MessageMap::lookup(const TSP::Reference* reference) const {
  return reference != nullptr ? lookup(*reference) : nullptr;
}

// ---------------------------------------------------------------------------
// unzipFile

namespace {

constexpr const char kContainerModule[] = "unzip";

// A module of the host, given back at the end of its scope.
class HostModule {
 public:
  explicit HostModule(tag_TPVAPIServices* services) : services_(services) {}
  HostModule(const HostModule&) = delete;
  HostModule& operator=(const HostModule&) = delete;
  ~HostModule() noexcept(false) {
    if (handle_ != nullptr) loan_.giveBack([this] { services_->FreeDll(services_, handle_); });
  }

  bool load(const char* name) { return services_->LoadDll(services_, name, &handle_) != 0; }
  void* symbol(const char* name) { return services_->GetDllSymbol(services_, handle_, name); }

 private:
  Loan loan_;
  tag_TPVAPIServices* services_;
  void* handle_ = nullptr;
};

// A container of the host's unzip module, opened over an I/O object. Hosts may end
// a document by an exception out of any slot, out of OpenContainer as well.
class Container {
 public:
  Container(_VPTPIOobj* io, tag_TPVAPIServices* services) : module_(services) {
    if (services == nullptr || !load()) return;
    handle_ = interface_.OpenContainer(io, services, 0);
  }
  Container(const Container&) = delete;
  Container& operator=(const Container&) = delete;
  ~Container() noexcept(false) {
    if (handle_ != nullptr) loan_.giveBack([this] { interface_.CloseContainer(handle_); });
  }

  bool isOpen() const { return handle_ != nullptr; }
  int entryCount() { return interface_.GetEntryCount(handle_); }

  // Both throw the class of a status that is not 0.
  void getEntryInfo(std::int32_t index, ContainerEntryInfo& entry) {
    except::throw_on_error(interface_.GetEntryInfo(handle_, index, &entry));
  }
  void extractEntry(std::int32_t index, _VPTPIOobj* stream) {
    except::throw_on_error(interface_.ExtractEntry(handle_, index, stream));
  }

 private:
  bool load() {
    std::array<char, 64> name{};
    static_cast<void>(std::snprintf(name.data(), name.size(), "%s%s", kContainerModule, ".so"));
    if (!module_.load(name.data())) return false;
    void* symbol = module_.symbol("unzipGetContainerReaderInterface");
    if (symbol == nullptr) return false;
    reinterpret_cast<GetContainerReaderInterfaceFunction>(symbol)(&interface_);
    return true;
  }

  Loan loan_;
  HostModule module_;  // given back behind the container, which is its own
  void* handle_ = nullptr;
  ContainerReaderInterface interface_{};
};

// An empty stream of the host for one member, closed at the end of its scope.
class ScratchStream {
 public:
  explicit ScratchStream(tag_TPVAPIServices* services)
      : io_(services->OpenFile(services, nullptr, "a+")) {
    if (io_ == nullptr) throw except::out_of_core_error();
  }
  ScratchStream(const ScratchStream&) = delete;
  ScratchStream& operator=(const ScratchStream&) = delete;
  ~ScratchStream() noexcept(false) {
    if (io_->Close != nullptr) loan_.giveBack([this] { io_->Close(io_); });
  }

  _VPTPIOobj* io() const { return io_; }

  // Makes what was written readable from its beginning.
  void rewind() const {
    if (io_->Open == nullptr || io_->Open(io_) == 0) throw except::bad_input_stream_error();
  }

 private:
  Loan loan_;
  _VPTPIOobj* io_;
};

}  // namespace

void unzipFile(_VPTPIOobj* io, MessageMap& map, tag_TPVAPIServices* services, unsigned char* buffer,
               std::uint32_t bufferSize, MessageFactory factory) {
  Container container(io, services);
  if (!container.isOpen()) throw except::reader_init_error(kContainerModule);

  ContainerEntryInfo entry{};
  const int count = container.entryCount();
  for (std::int32_t index = 0; index < count; ++index) {
    container.getEntryInfo(index, entry);
    const MemberKind kind = classifyMember(entry.name);
    if (kind == MemberKind::kIgnored) continue;

    const ScratchStream stream(services);
    container.extractEntry(index, stream.io());
    stream.rewind();
    if (kind == MemberKind::kNestedContainer) {
      unzipFile(stream.io(), map, services, buffer, bufferSize, factory);
      continue;
    }
    try {
      map.populate(stream.io(), entry.size, buffer, bufferSize, factory);
    } catch (const std::exception&) {
      // A bad object stream costs only its own member.
    }
  }
}

}  // namespace vn::iwork13
