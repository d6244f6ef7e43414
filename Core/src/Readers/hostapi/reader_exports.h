// The seven names with C linkage that a host finds in dorvexsr.so by symbol.
#pragma once

#include "Readers/hostapi/reader_interface.h"
#include "Tools/formats/vniwork13/protobuf_general.h"
#include "Tools/vnexport.h"

extern "C" {

// Zeroes the 13 slots of the host's table and fills the five that this reader
// offers.
VN_API void dorvexGetReaderInterface(ReaderInterface* table);

// A new context from the host's allocator, or null with services->lastError set
// to 2 and *result left alone; else *result is 1. a1, a2 and a5 are only stored.
// The host gives the context back through FreeContext of the table.
VN_API void* dorvexAllocateContext(void* a1, void* a2, std::uint32_t* result,
                                   tag_TPVAPIServices* services, std::uint32_t a5);

// Module start: nothing to do, true.
VN_API bool vnDllInit();

// Module stop: shuts protobuf down. No document may be open, and none may be
// opened afterwards without loading the module anew.
VN_API void vnDllShutdown();

// Empty, and no load-time initialiser despite its name.
VN_API void init();

// The module's load-time terminator: the loader runs it at unload. Shuts
// protobuf down, which is harmless after vnDllShutdown.
VN_API void fini();

// The seventh, vn_iwork13_ShutDownProtobuf, stands in protobuf_general.h.

}  // extern "C"
