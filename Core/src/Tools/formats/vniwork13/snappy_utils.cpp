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
    const std::vector<char> chunk = snappyUncompressChunk(cursor + kChunkHeaderSize, length);
    result.insert(result.end(), chunk.begin(), chunk.end());
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

std::vector<char> snappyUncompressChunk(const char* body, std::uint32_t length) {
  // The validating pass comes first: the preamble is trusted for the size of
  // the allocation only once the whole block is known to decode to that size.
  std::size_t size = 0;
  if (!snappy::IsValidCompressedBuffer(body, length) ||
      !snappy::GetUncompressedLength(body, length, &size))
    throw iwa_uncompression_error(kInvalidBody);
  std::vector<char> block(size);
  if (!snappy::RawUncompress(body, length, block.data()))
    throw iwa_uncompression_error(kInvalidBody);
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
