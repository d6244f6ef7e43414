// The walk of an object stream: archives one behind the other, each a varint
// length, a TSP.ArchiveInfo of that length and the payloads that it lists.
#pragma once

#include <vector>

#include "Tools/formats/vniwork13/iwa_utils.h"

namespace vn::iwork13 {

// How the walk reads a payload of a known type. The outcome is the same.
enum class PayloadReading {
  kBuild,  // parse every payload: the plain way, kept as the reference
  kScan,   // build nothing that is not looked up; see pending_message.h
};

#ifdef DORVEX_PLAIN_SWEEP
inline constexpr PayloadReading kDefaultReading = PayloadReading::kBuild;
#else
inline constexpr PayloadReading kDefaultReading = PayloadReading::kScan;
#endif

// Adds the objects of a stream to a map. The first object stored under an
// identifier stays. Reports nothing about bad data; does not end where a length
// prefix cannot be read in the middle of a stream. What a factory of registry.h
// would make is made when it is looked up; any other factory is called for each
// payload.
void walkObjectStream(std::vector<unsigned char> objectStream, MessageFactory factory,
                      PayloadReading reading, MessageMap::Map& map);

// Builds the message of a map's entry in its place, unless it is built already.
google::protobuf::Message* buildPending(google::protobuf::Message*& entry);

// The container of a map, for the text sweep: a message in it may be a stand-in.
const MessageMap::Map& entriesOf(const MessageMap& map);

}  // namespace vn::iwork13
