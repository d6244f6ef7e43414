// The entry points of the reader. The host finds dorvexGetReaderInterface and
// dorvexAllocateContext by name and the others through the table; see
// reader_interface.h for the calling order, arguments and ownership.
#pragma once

#include "Readers/dorvexsr/dorvexglobals.h"
#include "Readers/hostapi/reader_interface.h"
#include "Tools/vnexport.h"

extern "C" {

// Zeroes the 13 slots of the host's table and fills the five that this reader
// offers.
VN_API void dorvexGetReaderInterface(ReaderInterface* table);

// A new context from the host's allocator, or null with services->lastError set
// to 2 and *result left alone. a1, a2 and a5 are only stored.
VN_API void* dorvexAllocateContext(void* a1, void* a2, std::uint32_t* result,
                                   tag_TPVAPIServices* services, std::uint32_t a5);

}  // extern "C"

// Gives the record back to the host. The message map, its messages and pending
// overflow buffers stay allocated: they outlive the context. Always 0.
int dorvexFreeContext(void* context);

// Stores the document's I/O object; opens and reads nothing. Always 0.
int dorvexInitDoc(void* context, adDocDesc* description, long param, _VPTPIOobj* io);

// The pump: reads the whole document in the first call, and hands over one
// stored buffer in each later one. 0, 2, 4 or 6; no exception leaves it.
int dorvexFillBuffer(void* context, unsigned char* buffer, unsigned int* length, int* percent,
                     unsigned int size);

// 53, UTF-8; looks at neither argument.
int dorvexGetCharSet(void* context, int* ignored);
