// The bytes of a member on their way from the zip to a stream.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Readers/hostapi/container_status.h"
#include "Readers/hostapi/host_records.h"
#include "io_reader.h"
#include "zip_layout.h"

namespace dorvex::unzip {

inline constexpr std::size_t kCopySize = 65536;

// Writes through the Write slot of a stream, and holds what it writes against what the
// central directory says of the member.
class MemberOutlet {
 public:
  // written: grows by the bytes that the stream took.
  MemberOutlet(const ZipEntry& entry, _VPTPIOobj* stream, std::uint64_t& written)
      : entry_(entry), stream_(stream), written_(written) {}

  // Damaged, and nothing written, where the member would be longer than stated.
  VNContainerStatus take(const char* bytes, std::size_t count);

  // Whether all has come: the stated size, with the stated checksum.
  VNContainerStatus finish() const;

 private:
  bool writeAll(const char* bytes, std::size_t count);

  const ZipEntry& entry_;
  _VPTPIOobj* stream_;
  std::uint64_t& written_;
  std::uint64_t total_ = 0;
  std::uint32_t crc_ = 0;
};

// Copies a member whose data begin at that offset and lie there as they are.
VNContainerStatus copyStored(IoReader& reader, std::uint64_t data, const ZipEntry& entry,
                             MemberOutlet& outlet);

// The same for one that is deflated.
VNContainerStatus copyDeflated(IoReader& reader, std::uint64_t data, const ZipEntry& entry,
                               MemberOutlet& outlet);

}  // namespace dorvex::unzip
