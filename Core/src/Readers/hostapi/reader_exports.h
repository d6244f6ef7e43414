/// @file
/// The names with C linkage that a host finds in dorvexsr.so by symbol, and
/// vn_iwork13_ShutDownProtobuf of protobuf_general.h, the seventh.
#pragma once

#include "Readers/hostapi/reader_interface.h"
#include "Tools/formats/vniwork13/protobuf_general.h"
#include "Tools/vnexport.h"

extern "C" {

/// Zeroes the 13 slots of the host's table and fills the five that this reader
/// offers.
/// @param[out] table The table, which stays the host's.
VN_API void dorvexGetReaderInterface(ReaderInterface* table);

/// Makes a context from the host's allocator.
/// @param a1 Only stored.
/// @param a2 Only stored.
/// @param[out] result 1 on success; left alone on failure.
/// @param services The host's table, which stays valid as long as the context.
/// @param a5 Only stored.
/// @return The context, which the host gives back through FreeContext of the
///     table; null, and 2 in lastError of the services, when there is no memory.
/// @throws std::bad_alloc when the ordinary heap has no memory for the parts of
///     the context.
VN_API void* dorvexAllocateContext(void* a1, void* a2, std::uint32_t* result,
                                   tag_TPVAPIServices* services, std::uint32_t a5);

/// Module start: nothing to do.
/// @return True.
VN_API bool vnDllInit();

/// Module stop: shuts protobuf down. No document may be open, and none may be
/// opened afterwards without loading the module anew.
VN_API void vnDllShutdown();

/// Empty, and no load-time initialiser despite its name.
VN_API void init();

/// The module's load-time terminator: the loader runs it at unload. Shuts
/// protobuf down, which is harmless after vnDllShutdown.
VN_API void fini();

}  // extern "C"
