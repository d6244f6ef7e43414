#include "chunk_stream.h"

#include <snappy.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <vector>

namespace dorvex {
namespace {

constexpr std::uint64_t kHeaderSize = 4;

using Header = std::array<unsigned char, kHeaderSize>;

bool is_header(const Header& header) { return header[0] == 0; }

std::uint64_t body_length(const Header& header) {
  return std::uint64_t{header[1]} | std::uint64_t{header[2]} << 8 | std::uint64_t{header[3]} << 16;
}

std::string at_chunk(std::uint64_t number, const std::string& fault) {
  return "chunk " + std::to_string(number) + " " + fault;
}

// A body where it lies in memory, otherwise in a buffer that is used again.
class BodyReader {
 public:
  explicit BodyReader(ByteStore& store) : store_(store) {}

  // Null on a read failure.
  const char* read(std::uint64_t offset, std::size_t length) {
    const auto memory = store_.in_memory();
    if (!memory.empty()) return reinterpret_cast<const char*>(memory.data()) + offset;
    buffer_.resize(std::max<std::size_t>(length, 1));
    const std::int64_t got = store_.read_at(offset, buffer_.data(), length);
    return got == static_cast<std::int64_t>(length) ? buffer_.data() : nullptr;
  }

 private:
  ByteStore& store_;
  std::vector<char> buffer_;
};

}  // namespace

std::int64_t ChunkAlignedReader::read_at(std::uint64_t offset, void* buffer, std::size_t count) {
  return store_.read_at(offset, buffer, aligned_count(offset, count));
}

std::size_t ChunkAlignedReader::aligned_count(std::uint64_t offset, std::size_t count) {
  const std::uint64_t size = store_.size();
  if (offset >= size) return count;
  if (offset < last_header_) rewind();
  const std::uint64_t end = offset + std::min<std::uint64_t>(count, size - offset);
  while (!lost_ && next_header_ + kHeaderSize < end) lost_ = !follow_header();
  const bool ends_in_header = !lost_ && next_header_ < end && next_header_ > offset;
  return static_cast<std::size_t>((ends_in_header ? next_header_ : end) - offset);
}

void ChunkAlignedReader::rewind() {
  last_header_ = 0;
  next_header_ = 0;
  lost_ = false;
}

bool ChunkAlignedReader::follow_header() {
  Header header;
  if (store_.read_at(next_header_, header.data(), kHeaderSize) != kHeaderSize) return false;
  if (!is_header(header)) return false;
  last_header_ = next_header_;
  next_header_ += kHeaderSize + body_length(header);
  return true;
}

std::optional<std::string> find_chunk_fault(ByteStore& store) {
  const std::uint64_t size = store.size();
  BodyReader bodies(store);
  std::uint64_t position = 0;
  for (std::uint64_t number = 1; position < size; ++number) {
    const std::uint64_t left = size - position;
    if (left < kHeaderSize) return "it has stray bytes behind its last chunk";
    Header header;
    if (store.read_at(position, header.data(), kHeaderSize) != kHeaderSize) {
      return at_chunk(number, std::string("cannot be read: ") + std::strerror(errno));
    }
    if (!is_header(header)) return at_chunk(number, "has no valid header");
    const std::uint64_t length = body_length(header);
    if (length > left - kHeaderSize) return at_chunk(number, "is cut short");
    const char* body = bodies.read(position + kHeaderSize, length);
    if (body == nullptr) {
      return at_chunk(number, std::string("cannot be read: ") + std::strerror(errno));
    }
    if (!snappy::IsValidCompressedBuffer(body, length)) {
      return at_chunk(number, "holds damaged data");
    }
    position += kHeaderSize + length;
  }
  return std::nullopt;
}

}  // namespace dorvex
