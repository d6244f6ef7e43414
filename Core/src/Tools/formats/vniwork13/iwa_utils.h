/// @file
/// Reading of object streams: from a host I/O object or a zip to a map of
/// messages, and from a table tile to its cell texts.
///
/// Sizes are in bytes, pointers may not be null unless a function says so, and
/// everything may throw std::bad_alloc.
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

/// The format library.
namespace vn::iwork13 {

/// Gives a new instance for a type id, which the caller owns, or null for an
/// unknown id. What it throws passes through.
using MessageFactory = google::protobuf::Message* (*)(int);

/// Decompresses one member that arrives in reads of any size. Create it with
/// the read buffer set and all else empty, for one member only.
///
/// There is no end-of-file state: the caller calls read until bytesConsumed has
/// reached the member's size. That loop does not end where the member has one to
/// three bytes behind its last chunk, or is shorter than its stated size, since
/// such bytes are never counted.
struct VN_API DataDecompresser {
  unsigned char* readBuffer;                ///< The caller's.
  std::uint32_t readBufferSize;             ///< The size of every read request.
  std::vector<unsigned char> pendingChunk;  ///< Body bytes of a chunk that crosses reads.
  std::vector<unsigned char> objectStream;  ///< What has been decompressed so far.
  std::uint32_t pendingChunkRemaining;      ///< Body bytes still to come.
  std::uint32_t bytesConsumed;              ///< Member bytes accounted for.

  /// Decompresses one chunk body and appends it to objectStream.
  /// @param body The body.
  /// @param length Its length.
  /// @throws iwa_uncompression_error for a body that Snappy refuses; objectStream
  ///     then stays.
  void decompressChunk(const unsigned char* body, std::uint32_t length);

  /// Performs one read of the whole buffer and consumes it.
  /// @param io The member; only its Read slot is used.
  /// @throws iwa_uncompression_error for a bad chunk; bytesConsumed then stays.
  void read(_VPTPIOobj* io);
};

/// A document in memory: every parsed object by its identifier, in ascending
/// order. Not locked; belongs to one document.
class VN_API MessageMap {
 public:
  /// The container.
  using Map = std::map<unsigned long long, google::protobuf::Message*>;

  /// An empty map.
  MessageMap() = default;
  MessageMap(const MessageMap&) = delete;
  MessageMap& operator=(const MessageMap&) = delete;
  /// Deletes the instances, from the lowest identifier to the highest. Lets an
  /// exception of a message's destructor through.
  ~MessageMap() noexcept(false);

  /// Drains one member from an I/O object and adds its objects. Does not end
  /// where DataDecompresser::read would not come to the end.
  /// @param io The member, ready to be read; stays the caller's.
  /// @param size The size of the member.
  /// @param buffer Room for bufferSize bytes, the caller's.
  /// @param bufferSize The size of every read.
  /// @param factory Makes the instances, which the map then owns.
  /// @throws iwa_uncompression_error for a bad chunk; the map stays as it was.
  void populate(_VPTPIOobj* io, std::uint32_t size, unsigned char* buffer, std::uint32_t bufferSize,
                MessageFactory factory);

  /// Walks one object stream and adds its objects. The first object stored under
  /// an identifier stays. Reports nothing about bad data; does not end where a
  /// length prefix cannot be read in the middle of a stream.
  /// @param objectStream The stream.
  /// @param factory Makes the instances, which the map then owns.
  void populate(const std::vector<unsigned char>& objectStream, MessageFactory factory);

  /// Finds an object.
  /// @param identifier Any number.
  /// @return The object of exactly that identifier, which the map owns, or null.
  google::protobuf::Message* lookup(unsigned long long identifier) const;

  /// Finds what a reference refers to.
  /// @param reference Its identifier counts, 0 if it is not set.
  /// @return The object, which the map owns, or null.
  google::protobuf::Message* lookup(const TSP::Reference& reference) const;

  /// Finds what a reference refers to.
  /// @param reference Its identifier counts, 0 if it is not set; null gives null.
  /// @return The object, which the map owns, or null.
  google::protobuf::Message* lookup(const TSP::Reference* reference) const;

  /// Whether there is no object.
  /// @return True if there is none.
  bool empty() const { return map_.empty(); }

  /// Counts the objects.
  /// @return Their number.
  std::size_t size() const { return map_.size(); }

 private:
  friend const Map& entriesOf(const MessageMap& map);

  mutable Map map_;  // holds stand-ins; a lookup builds the message that it returns
};

/// Walks a zip through the host's unzip module and adds the objects of its
/// selected members to a map; follows nested Index.zip members. A member whose
/// stream is bad counts for nothing, and the walk goes on.
/// @param io The zip; stays the caller's.
/// @param[in,out] map Where to add the objects.
/// @param services The host's table, for its modules and scratch streams.
/// @param buffer Room for bufferSize bytes, the caller's.
/// @param bufferSize The size of every read.
/// @param factory Makes the instances, which the map then owns.
/// @throws vn::except::reader_init_error "unzip" where the container cannot be
///     opened.
/// @throws vn::except::vennik_error or rather a class of its family, for what is
///     wrong with the container or a scratch stream.
VN_API void unzipFile(_VPTPIOobj* io, MessageMap& map, tag_TPVAPIServices* services,
                      unsigned char* buffer, std::uint32_t bufferSize, MessageFactory factory);

/// Reads the cell texts of a tile. Numbers come out with six significant digits.
/// @param tile The tile; only read.
/// @param list The strings of its text cells; only read, and may be null.
/// @return A list of strings for each row of the tile.
/// @throws std::out_of_range for a cell that lies outside its row's storage.
VN_API std::list<std::list<std::string>> getTileStrings(const TST::Tile* tile,
                                                        const TST::TableDataList* list);

}  // namespace vn::iwork13
