// Reading of object streams: from a host I/O object or a zip to a map of
// messages, and from a table tile to its cell texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

#include "Readers/hostapi/host_records.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "Tools/vnexport.h"

namespace google::protobuf {
class Message;
}
namespace TSP {
class Reference;
}
namespace TST {
class Tile;
class TableDataList;
}  // namespace TST

namespace vn::iwork13 {

// A new instance for a type id, owned by the caller, or null for an unknown id.
using MessageFactory = google::protobuf::Message* (*)(int);

// Decompresses one member that arrives in reads of any size. Create it with
// the read buffer set and all else empty, for one member only.
//
// There is no end-of-file state: the caller calls read until bytesConsumed has
// reached the member's size. That loop does not end where the member has one to
// three bytes behind its last chunk, or is shorter than its stated size, since
// such bytes are never counted.
struct VN_API DataDecompresser {
  unsigned char* readBuffer;                // the caller's
  std::uint32_t readBufferSize;             // bytes; the size of every read request
  std::vector<unsigned char> pendingChunk;  // body bytes of a chunk that crosses reads
  std::vector<unsigned char> objectStream;  // what has been decompressed so far
  std::uint32_t pendingChunkRemaining;      // body bytes still to come
  std::uint32_t bytesConsumed;              // member bytes accounted for

  // Decompresses one chunk body and appends it to objectStream. Throws
  // iwa_uncompression_error.
  void decompressChunk(const unsigned char* body, std::uint32_t length);

  // Performs one read of the whole buffer through the Read slot of io and
  // consumes it. Throws iwa_uncompression_error; bytesConsumed then stays.
  void read(_VPTPIOobj* io);
};

// A document in memory: every parsed object by its identifier, in ascending
// order. Not locked; belongs to one document.
class VN_API MessageMap {
 public:
  using Map = std::map<unsigned long long, google::protobuf::Message*>;

  MessageMap() = default;
  MessageMap(const MessageMap&) = delete;
  MessageMap& operator=(const MessageMap&) = delete;
  // Deletes the instances, from the lowest identifier to the highest. Lets an
  // exception of a message's destructor through.
  ~MessageMap() noexcept(false);

  // Drains one member of size bytes from io, in reads of bufferSize bytes
  // through the caller's buffer, and adds its objects. An exception of the
  // decompression leaves the map as it was.
  void populate(_VPTPIOobj* io, std::uint32_t size, unsigned char* buffer, std::uint32_t bufferSize,
                MessageFactory factory);

  // Walks one object stream and adds its objects. The first object stored under
  // an identifier stays. Reports nothing about bad data; does not end where a
  // length prefix cannot be read in the middle of a stream.
  void populate(const std::vector<unsigned char>& objectStream, MessageFactory factory);

  // The object of exactly that identifier, which the map owns, or null. The
  // overloads ask for the identifier of a reference, 0 if it is not set; a null
  // reference gives null.
  google::protobuf::Message* lookup(unsigned long long identifier) const;
  google::protobuf::Message* lookup(const TSP::Reference& reference) const;
  google::protobuf::Message* lookup(const TSP::Reference* reference) const;

  bool empty() const { return map_.empty(); }
  std::size_t size() const { return map_.size(); }

  // The container itself, for the text sweep: a message in it may still be
  // pending (pending_message.h). Use lookup to get a message.
  const Map& entries() const { return map_; }

 private:
  mutable Map map_;  // a lookup builds the message that it returns
};

// Walks the zip that io holds, through the host's unzip module, and adds the
// objects of its selected members to the map; follows nested Index.zip members.
// io stays the caller's. buffer is the read buffer of MessageMap::populate.
//
// A member whose stream is bad counts for nothing and the walk goes on. Throws
// vn::except classes for what is wrong with the container or a scratch stream,
// reader_init_error "unzip" where the container cannot be opened.
VN_API void unzipFile(_VPTPIOobj* io, MessageMap& map, tag_TPVAPIServices* services,
                      unsigned char* buffer, std::uint32_t bufferSize, MessageFactory factory);

// The cell texts of a tile: a list of strings for each row of it. tile must not
// be null; list holds the strings of text cells and may be null. Numbers come
// out with six significant digits. Throws std::out_of_range for a cell that lies
// outside its row's storage.
VN_API std::list<std::list<std::string>> getTileStrings(const TST::Tile* tile,
                                                        const TST::TableDataList* list);

}  // namespace vn::iwork13
