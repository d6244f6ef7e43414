/// @file
/// The table of function pointers that a reader module fills for its host.
#pragma once

#include "Readers/hostapi/host_records.h"

extern "C" {

/// 13 pointer-sized slots in the host's memory. A slot that the reader does not
/// offer is null: the host tests a slot before it calls it.
struct ReaderInterface {
  /// A new per-document context, or null with services->lastError set to 2.
  /// Stores 1 in *result on success. a1, a2 and a5 are the host's own values.
  void* (*AllocateContext)(void* a1, void* a2, std::uint32_t* result, tag_TPVAPIServices* services,
                           std::uint32_t a5);
  /// Releases a context; null is allowed. Always 0.
  int (*FreeContext)(void* context);
  /// Gives the context its document. description may be null. Always 0.
  int (*InitDoc)(void* context, adDocDesc* description, long param, _VPTPIOobj* io);
  /// Fills buffer with whole tokens; *length is the number of bytes, *percent
  /// the progress, which the host keeps unchanged between calls. size is the
  /// declared capacity; the buffer must really own at least the larger of
  /// size + 14 and 4110 bytes. Returns 0, or 2 (out of memory), 4 (bad input)
  /// or 6 (any other failure), and then *length and *percent are not written.
  int (*FillBuffer)(void* context, unsigned char* buffer, unsigned int* length, int* percent,
                    unsigned int size);
  void* reserved4[5];  ///< Null.
  /// The tagVNCharSet of all text tokens. Both arguments are ignored.
  int (*GetCharSet)(void* context, int* ignored);
  void* reserved10[3];  ///< Null.
};
static_assert(sizeof(ReaderInterface) == 13 * sizeof(void*));
static_assert(offsetof(ReaderInterface, GetCharSet) == 9 * sizeof(void*));

/// Signature of dorvexGetReaderInterface.
using GetReaderInterfaceFunction = void (*)(ReaderInterface* table);
/// Signature of vnDllInit.
using DllInitFunction = bool (*)();
/// Signature of vnDllShutdown.
using DllShutdownFunction = void (*)();

}  // extern "C"
