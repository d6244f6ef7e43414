// The header of an archive in an object stream, a TSP.ArchiveInfo, as far as the walk
// needs it.
#pragma once

#include <cstdint>
#include <vector>

namespace google::protobuf::io {
class CodedInputStream;
}

namespace vn::iwork13 {

class MessageScanner;

struct ArchiveHeader {
  struct Payload {
    int type;
    int length;  // negative from 0x80000000 on
  };

  std::uint64_t identifier = 0;
  std::vector<Payload> payloads;
};

// Clears the header and reads it from the stream, under the limit that the caller
// has pushed, with the result and the cursor of parseMessage. The scanner is that of the
// stream.
bool readArchiveHeader(ArchiveHeader& header, google::protobuf::io::CodedInputStream& input,
                       MessageScanner& scanner);

}  // namespace vn::iwork13
