/// @file
/// Decoding of .iwa members: a member is a run of chunks, one behind the other.
///
/// A chunk is a header byte of 0, three bytes of body length (little-endian) and
/// a body, which is one Snappy block in the raw format. The object stream of a
/// member is the concatenation of its decompressed chunks. Lengths and sizes are
/// in bytes.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <vector>

#include "Tools/vnexport.h"

namespace vn::iwork13 {

/// A chunk that cannot be decoded. Not of the vn::except family: it costs a
/// member, and no number of the host stands for it.
class VN_API iwa_uncompression_error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The length of a chunk's header.
inline constexpr std::uint32_t kChunkHeaderSize = 4;

/// How many times its own length a sound block can be once decompressed: three bytes
/// copy 64 at most. One that states more is not sound.
inline constexpr std::uint32_t kMostExpansion = 22;

/// Reads the length of a chunk's body.
/// @param header The chunk's first four bytes, which must be there.
/// @return The length.
/// @throws iwa_uncompression_error "Invalid chunk header" unless the first byte
///     is 0.
std::uint32_t getChunkLength(const unsigned char* header);

/// Decompresses one chunk body.
/// @param body The body.
/// @param length Its length.
/// @return The object stream's bytes.
/// @throws iwa_uncompression_error "Invalid compressed iwa buffer" for anything
///     that Snappy refuses.
std::vector<char> snappyUncompressChunk(const char* body, std::uint32_t length);

/// The same, with the result appended to a stream. Instantiated for char and
/// unsigned char.
/// @param body The body.
/// @param length Its length.
/// @param[in,out] stream The stream, which a failure leaves as it was.
/// @throws iwa_uncompression_error As snappyUncompressChunk.
template <typename Byte>
void appendUncompressedChunk(const char* body, std::uint32_t length, std::vector<Byte>& stream);

/// Decompresses a whole member. Bad data is no error: it ends the result.
/// @param buffer The member.
/// @param size Its size.
/// @return Every chunk before the first one that cannot be decoded. A tail of up
///     to four bytes is ignored.
/// @throws std::bad_alloc
VN_API std::vector<char> uncompressIwaBuffer(const char* buffer, std::uint32_t size);

}  // namespace vn::iwork13
