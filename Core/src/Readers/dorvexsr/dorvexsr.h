// The entry points of the reader that the host reaches through the table alone;
// see reader_interface.h for the calling order, arguments and ownership, and
// reader_exports.h for those that it finds by name.
#pragma once

#include "Readers/dorvexsr/dorvexglobals.h"
#include "Readers/hostapi/reader_exports.h"

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
