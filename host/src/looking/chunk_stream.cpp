#include "looking/chunk_stream.h"

#include <snappy.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

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

// False for a block that is not a sound one.
bool appendBlock(const char* body, std::size_t length, ObjectStream& objects) {
  std::size_t size = 0;
  if (!snappy::IsValidCompressedBuffer(body, length) ||
      !snappy::GetUncompressedLength(body, length, &size)) {
    return false;
  }
  objects.size += size;
  if (objects.size > kMostReadableObjects) {
    objects.bytes = {};
    return true;
  }
  const std::size_t start = objects.bytes.size();
  objects.bytes.resize(start + size);
  return snappy::RawUncompress(body, length, objects.bytes.data() + start);
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
    const bool sound = objects != nullptr ? appendBlock(body, length, *objects)
                                          : snappy::IsValidCompressedBuffer(body, length);
    if (!sound) {
      return atChunk(number, "holds damaged data");
    }
    position += kHeaderSize + length;
  }
  return std::nullopt;
}

}  // namespace dorvex
