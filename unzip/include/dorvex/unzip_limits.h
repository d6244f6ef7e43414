// The limits that unzip.so keeps to, and the entry point through which a host
// sets them; and how a host has libzip loaded before it is needed. A host that knows nothing of it
// opens containers through ContainerReaderInterface, and then the defaults below hold.
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
  // No limit: the zip is none of the ordinary ones, and libzip, which reads the others,
  // cannot be loaded. dlerror() tells why.
  UNZIP_LIBZIP_MISSING,
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

// Loads unzip-libzip.so, which is linked with libzip and lies beside unzip.so, until
// unzip.so is unloaded. Opening a container does so by itself where the zip needs it; a
// process that can open no library by then calls this before. 1, or 0 where it cannot be
// loaded; dlerror() tells why.
using UnzipLoadLibzipFunction = int (*)();

}  // extern "C"

// The names under which unzip.so exports them.
inline constexpr char kUnzipOpenLimitedContainer[] = "unzipOpenLimitedContainer";
inline constexpr char kUnzipLoadLibzip[] = "unzipLoadLibzip";
