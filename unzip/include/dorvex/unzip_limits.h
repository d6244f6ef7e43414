// The limits that unzip.so keeps to, and the entry point through which a host
// sets them. A host that knows nothing of it opens containers through
// ContainerReaderInterface, and then the defaults below hold.
#pragma once

#include <cstdint>

#include "Readers/hostapi/host_records.h"

extern "C" {

// A limit that was passed.
enum UnzipLimit : std::int32_t {
  UNZIP_LIMIT_NONE = 0,
  UNZIP_LIMIT_MEMBERS,
  UNZIP_LIMIT_MEMBER_BYTES,
  UNZIP_LIMIT_TOTAL_BYTES,
  UNZIP_LIMIT_EXPANSION,
};

// What one document may hold. Zero means no limit. The record is the host's and
// may serve several containers, which then share totalBytes.
struct UnzipLimits {
  std::uint32_t members = 100'000;  // of one container
  std::uint32_t expansion = 1'100;  // bytes of a member for each byte that it takes in the zip
  std::uint64_t memberBytes = std::uint64_t{1} << 30;  // of one member, unpacked
  std::uint64_t totalBytes = std::uint64_t{2} << 30;   // of all members that are extracted

  // Written by the module.
  std::uint64_t writtenBytes = 0;        // of totalBytes, so far
  UnzipLimit passed = UNZIP_LIMIT_NONE;  // the limit for which a call failed last
};

// Opens the zip held by io, as OpenContainer does. *limits must live as long as
// the container. Null also for a zip of too many members; passed tells. A member
// that would pass a limit fails with VN_CONTAINER_GENERAL_FAILURE, before or
// while it is written, and passed tells too.
using UnzipOpenLimitedContainerFunction = void* (*)(_VPTPIOobj* io, UnzipLimits* limits);

}  // extern "C"

// The name under which unzip.so exports it.
inline constexpr char kUnzipOpenLimitedContainer[] = "unzipOpenLimitedContainer";
