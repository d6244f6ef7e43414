// Decoding of .iwa members: a member is a run of chunks, one behind the other.
//
// A chunk is a header byte of 0, three bytes of body length (little-endian) and
// a body, which is one Snappy block in the raw format. The object stream of a
// member is the concatenation of its decompressed chunks.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "Tools/vnexport.h"

namespace vn::iwork13 {

// A chunk that cannot be decoded. Not of the vn::except family: it costs a
// member, and no number of the host stands for it.
class VN_API iwa_uncompression_error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Bytes of a chunk's header.
inline constexpr std::uint32_t kChunkHeaderSize = 4;

// The length of a chunk's body. Reads four bytes, which must be there. Throws
// iwa_uncompression_error "Invalid chunk header" unless the first byte is 0.
std::uint32_t getChunkLength(const unsigned char* header);

// Decompresses one chunk body of length bytes. Throws iwa_uncompression_error
// "Invalid compressed iwa buffer" for anything that Snappy refuses.
std::vector<char> snappyUncompressChunk(const char* body, std::uint32_t length);

// The same, with the result appended to a stream, which a failure leaves as it
// was. Instantiated for char and unsigned char.
template <typename Byte>
void appendUncompressedChunk(const char* body, std::uint32_t length, std::vector<Byte>& stream);

// Decompresses a whole member of size bytes. Never throws for bad data: the
// result holds every chunk before the first one that cannot be decoded, and a
// tail of up to four bytes is ignored. Throws std::bad_alloc.
VN_API std::vector<char> uncompressIwaBuffer(const char* buffer, std::uint32_t size);

}  // namespace vn::iwork13
