/// @file
/// The contract between a reader and a container module such as unzip.so.
///
/// A container module exports one function, named
/// "unzipGetContainerReaderInterface" for unzip.so, which fills the caller's
/// ContainerReaderInterface. Readers call the first five slots only.
#pragma once

#include "Readers/hostapi/host_records.h"

extern "C" {

/// Describes one member of a container. The caller gives the storage, uncleared.
struct ContainerEntryInfo {
  /// Path inside the container, NUL-terminated, separated by forward slashes.
  char name[1048];
  /// Bytes that ExtractEntry will write for this member.
  std::uint32_t size;
  unsigned char reserved[1072 - 1052];  ///< Not looked at.
};
static_assert(offsetof(ContainerEntryInfo, name) == 0);
static_assert(offsetof(ContainerEntryInfo, size) == 1048);
static_assert(sizeof(ContainerEntryInfo) == 1072);

/// The table of function pointers that a container module fills. Status results are numbers of the
/// shared error numbering, 0 for success.
struct ContainerReaderInterface {
  /// Opens the container held by io; option is always 0. The handle stays valid
  /// until CloseContainer; null means that io cannot be read as a container.
  void* (*OpenContainer)(_VPTPIOobj* io, tag_TPVAPIServices* services, int option);
  /// Releases the handle. io stays the caller's.
  int (*CloseContainer)(void* container);
  /// Describes member index, from 0.
  int (*GetEntryInfo)(void* container, std::int32_t index, ContainerEntryInfo* entry);
  /// Writes the member's contents through the slots of stream, exactly
  /// ContainerEntryInfo::size bytes, or returns a status that is not 0.
  int (*ExtractEntry)(void* container, std::int32_t index, _VPTPIOobj* stream);
  /// The number of members.
  int (*GetEntryCount)(void* container);
  /// Not called by any reader.
  void* reserved[6];
};
static_assert(sizeof(ContainerReaderInterface) == 11 * sizeof(void*));
static_assert(offsetof(ContainerReaderInterface, GetEntryCount) == 4 * sizeof(void*));

/// Signature of the exported function; its result is ignored.
using GetContainerReaderInterfaceFunction = int (*)(ContainerReaderInterface* interface);

}  // extern "C"
