#include "Tools/formats/vniwork13/snappy_utils.h"

#include <snappy.h>

#include <cstddef>

namespace vn::iwork13 {
namespace {

constexpr const char kInvalidHeader[] = "Invalid chunk header";
constexpr const char kInvalidSize[] = "Invalid chunk size";
constexpr const char kInvalidBody[] = "Invalid compressed iwa buffer";

// Appends every chunk of the buffer to result, and throws at the first bad one.
void appendChunks(const char* cursor, const char* end, std::vector<char>& result) {
  do {
    const std::uint32_t length = getChunkLength(reinterpret_cast<const unsigned char*>(cursor));
    if (length > static_cast<std::size_t>(end - cursor) - kChunkHeaderSize)
      throw iwa_uncompression_error(kInvalidSize);
    appendUncompressedChunk(cursor + kChunkHeaderSize, length, result);
    cursor += kChunkHeaderSize + length;
    // Strictly more than a header: a tail of up to four bytes is no chunk.
  } while (end - cursor > static_cast<std::ptrdiff_t>(kChunkHeaderSize));
}

}  // namespace

std::uint32_t getChunkLength(const unsigned char* header) {
  if (header[0] != 0) throw iwa_uncompression_error(kInvalidHeader);
  return static_cast<std::uint32_t>(header[1]) | static_cast<std::uint32_t>(header[2]) << 8 |
         static_cast<std::uint32_t>(header[3]) << 16;
}

template <typename Byte>
void appendUncompressedChunk(const char* body, std::uint32_t length, std::vector<Byte>& stream) {
  // The validating pass comes first: the preamble is trusted for the size of
  // the allocation, and the fast decoder runs, only once the whole block is known to
  // decode to that size.
  std::size_t size = 0;
  if (!snappy::IsValidCompressedBuffer(body, length) ||
      !snappy::GetUncompressedLength(body, length, &size))
    throw iwa_uncompression_error(kInvalidBody);
  const std::size_t start = stream.size();
  stream.resize(start + size);
  if (!snappy::RawUncompress(body, length, reinterpret_cast<char*>(stream.data() + start))) {
    stream.resize(start);
    throw iwa_uncompression_error(kInvalidBody);
  }
}

template void appendUncompressedChunk(const char*, std::uint32_t, std::vector<char>&);
template void appendUncompressedChunk(const char*, std::uint32_t, std::vector<unsigned char>&);

std::vector<char> snappyUncompressChunk(const char* body, std::uint32_t length) {
  std::vector<char> block;
  appendUncompressedChunk(body, length, block);
  return block;
}

std::vector<char> uncompressIwaBuffer(const char* buffer, std::uint32_t size) {
  std::vector<char> result;
  if (size <= kChunkHeaderSize) return result;
  try {
    appendChunks(buffer, buffer + size, result);
  } catch (const iwa_uncompression_error&) {
    // What was decoded before the bad chunk is the result; callers are not told.
  }
  return result;
}

}  // namespace vn::iwork13
