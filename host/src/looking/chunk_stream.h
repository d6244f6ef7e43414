// The chunks of a member stream, as far as a host has to know them.
//
// A member stream is a run of chunks and nothing else. A chunk is a zero byte,
// the length of its body in three bytes, low byte first, and the body, one raw
// Snappy block.
//
// The reader takes a stream in reads of 4096 bytes and keeps no chunk header
// from one read to the next: a header that a read cuts in two, or that ends
// exactly where a read ends, makes it lose its place, and then a sound member
// is dropped or the document never ends. Short reads do it no harm. So the host
// shortens its reads such that none ends within a header or directly behind it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "bytes/byte_store.h"

namespace dorvex {

class ObjectLook;

// Tells how much of a chunk stream may be given in one read.
class ChunkAlignedReader {
 public:
  // The store must outlive this object and is not changed.
  explicit ChunkAlignedReader(ByteStore& store) : store_(store) {}

  // Reads up to count bytes at offset, so that the read does not end 1 to 4
  // bytes behind the start of a chunk; a read that would be empty by that rule
  // (at most four bytes are left, or asked for) is given as it stands. Behind a
  // header that is none, reads are not shortened. Result as ByteStore::readAt.
  std::int64_t readAt(std::uint64_t offset, void* buffer, std::size_t count);

 private:
  std::size_t alignedCount(std::uint64_t offset, std::size_t count);
  bool followHeader();
  void rewind();

  ByteStore& store_;
  std::uint64_t lastHeader_ = 0;  // the header before nextHeader_
  std::uint64_t nextHeader_ = 0;  // the first header that no read has gone past
  bool lost_ = false;             // what stands at nextHeader_ is no header
};

// What the chunks hold, decompressed.
struct ObjectStream {
  std::uint64_t size = 0;  // of all of it
  std::string bytes;       // all of it, or nothing where size is above kMostReadableObjects
};

// Looks through a whole chunk stream: every header and every Snappy block, and
// that nothing follows the last chunk. Nothing for a sound stream (an empty one
// is sound); otherwise what is wrong, as a phrase for people. The reader drops
// such a stream, or its end, without a word. The blocks go decompressed into
// objects if it is given, up to the first fault.
std::optional<std::string> findChunkFault(ByteStore& store, ObjectStream* objects = nullptr);

// The same, with look to look through what the blocks hold. Gives how much that is, as
// far as it has come; look is not shown what is beyond kMostReadableObjects.
struct ChunkLook {
  std::optional<std::string> fault;
  std::uint64_t objectBytes = 0;
};
ChunkLook lookThroughChunks(ByteStore& store, ObjectLook& look);

}  // namespace dorvex
