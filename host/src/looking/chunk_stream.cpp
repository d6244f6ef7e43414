#include "looking/chunk_stream.h"

#include <snappy.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "Tools/formats/vniwork13/snappy_utils.h"
#include "looking/object_stream.h"

namespace dorvex {
namespace {

constexpr std::uint64_t kHeaderSize = 4;

using Header = std::array<unsigned char, kHeaderSize>;

bool isHeader(const Header& header) { return header[0] == 0; }

std::uint64_t bodyLength(const Header& header) {
  return std::uint64_t{header[1]} | std::uint64_t{header[2]} << 8 | std::uint64_t{header[3]} << 16;
}

std::string atChunk(std::uint64_t number, const std::string& fault) {
  return "chunk " + std::to_string(number) + " " + fault;
}

// A body where it lies in memory, otherwise in a buffer that is used again.
class BodyReader {
 public:
  explicit BodyReader(ByteStore& store) : store_(store) {}

  // Null on a read failure.
  const char* read(std::uint64_t offset, std::size_t length) {
    const auto memory = store_.inMemory();
    if (!memory.empty()) return reinterpret_cast<const char*>(memory.data()) + offset;
    buffer_.resize(std::max<std::size_t>(length, 1));
    const std::int64_t got = store_.readAt(offset, buffer_.data(), length);
    return got == static_cast<std::int64_t>(length) ? buffer_.data() : nullptr;
  }

 private:
  ByteStore& store_;
  std::vector<char> buffer_;
};

// Takes the blocks of a stream one after the other.
template <typename Objects>
class BlockDecoder {
 public:
  explicit BlockDecoder(Objects& objects) : objects_(objects) {}

  std::uint64_t total() const { return total_; }

  // False for a block that is not a sound one. Decompressing one finds that out as
  // well as a look that writes nothing, and takes no longer.
  bool take(const char* body, std::size_t length) {
    std::size_t size = 0;
    if (!snappy::GetUncompressedLength(body, length, &size) ||
        size > length * vn::iwork13::kMostExpansion) {
      return false;
    }
    const bool sound =
        total_ + size > kMostReadableObjects ? pass(body, length) : decompress(body, length, size);
    if (sound) total_ += size;
    return sound;
  }

 private:
  bool pass(const char* body, std::size_t length) {
    if (!snappy::IsValidCompressedBuffer(body, length)) return false;
    objects_.drop();
    return true;
  }

  bool decompress(const char* body, std::size_t length, std::size_t size) {
    if (!snappy::RawUncompress(body, length, objects_.room(size))) return false;
    objects_.take(size);
    return true;
  }

  Objects& objects_;
  std::uint64_t total_ = 0;
};

// Keeps them.
class Keeping {
 public:
  explicit Keeping(std::string& bytes) : bytes_(bytes) {}

  char* room(std::size_t count) {
    bytes_.resize(kept_ + count);
    return bytes_.data() + kept_;
  }
  void take(std::size_t count) { kept_ += count; }
  void drop() {
    bytes_ = {};
    kept_ = 0;
  }
  void finish() { bytes_.resize(kept_); }

 private:
  std::string& bytes_;
  std::size_t kept_ = 0;
};

// Shows them.
class Showing {
 public:
  explicit Showing(ObjectLook& look) : look_(look) {}

  char* room(std::size_t count) { return look_.room(count); }
  void take(std::size_t count) { look_.take(count); }
  void drop() {}

 private:
  ObjectLook& look_;
};

// Without anything to decompress into.
class Checker {
 public:
  bool take(const char* body, std::size_t length) {
    return snappy::IsValidCompressedBuffer(body, length);
  }
};

template <typename Blocks>
std::optional<std::string> findFault(ByteStore& store, Blocks& blocks) {
  const std::uint64_t size = store.size();
  BodyReader bodies(store);
  std::uint64_t position = 0;
  for (std::uint64_t number = 1; position < size; ++number) {
    const std::uint64_t left = size - position;
    if (left < kHeaderSize) return "it has stray bytes behind its last chunk";
    Header header;
    if (store.readAt(position, header.data(), kHeaderSize) != kHeaderSize) {
      return atChunk(number, std::string("cannot be read: ") + std::strerror(errno));
    }
    if (!isHeader(header)) return atChunk(number, "has no valid header");
    const std::uint64_t length = bodyLength(header);
    if (length > left - kHeaderSize) return atChunk(number, "is cut short");
    const char* body = bodies.read(position + kHeaderSize, length);
    if (body == nullptr) {
      return atChunk(number, std::string("cannot be read: ") + std::strerror(errno));
    }
    if (!blocks.take(body, length)) return atChunk(number, "holds damaged data");
    position += kHeaderSize + length;
  }
  return std::nullopt;
}

}  // namespace

std::int64_t ChunkAlignedReader::readAt(std::uint64_t offset, void* buffer, std::size_t count) {
  return store_.readAt(offset, buffer, alignedCount(offset, count));
}

std::size_t ChunkAlignedReader::alignedCount(std::uint64_t offset, std::size_t count) {
  const std::uint64_t size = store_.size();
  if (offset >= size) return count;
  if (offset < lastHeader_) rewind();
  const std::uint64_t end = offset + std::min<std::uint64_t>(count, size - offset);
  while (!lost_ && nextHeader_ + kHeaderSize < end) lost_ = !followHeader();
  const bool endsInHeader = !lost_ && nextHeader_ < end && nextHeader_ > offset;
  return static_cast<std::size_t>((endsInHeader ? nextHeader_ : end) - offset);
}

void ChunkAlignedReader::rewind() {
  lastHeader_ = 0;
  nextHeader_ = 0;
  lost_ = false;
}

bool ChunkAlignedReader::followHeader() {
  Header header;
  if (store_.readAt(nextHeader_, header.data(), kHeaderSize) != kHeaderSize) return false;
  if (!isHeader(header)) return false;
  lastHeader_ = nextHeader_;
  nextHeader_ += kHeaderSize + bodyLength(header);
  return true;
}

std::optional<std::string> findChunkFault(ByteStore& store, ObjectStream* objects) {
  if (objects == nullptr) {
    Checker checker;
    return findFault(store, checker);
  }
  Keeping keeping(objects->bytes);
  BlockDecoder blocks(keeping);
  auto fault = findFault(store, blocks);
  keeping.finish();
  objects->size = blocks.total();
  return fault;
}

ChunkLook lookThroughChunks(ByteStore& store, ObjectLook& look) {
  Showing showing(look);
  BlockDecoder blocks(showing);
  auto fault = findFault(store, blocks);
  return {std::move(fault), blocks.total()};
}

}  // namespace dorvex
