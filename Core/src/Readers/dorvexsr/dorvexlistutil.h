// The overflow list: output buffers from the host's allocator for the tokens
// that do not fit into the host's own buffer.
//
// Status results are 0, or 2 where the host's allocator gave null.
#pragma once

#include "Readers/dorvexsr/dorvexglobals.h"

// Bytes that an overflow buffer has beyond the host's declared buffer size. The
// room tests measure against the declared size and are looser than the writers
// that they serve; this slack pays for the difference.
inline constexpr std::uint32_t kOverflowSlack = 4096;

// Bytes that an overflow buffer has at least. A fresh buffer takes a whole token
// whatever its declared size: a piece of 4096 bytes, its frame of 9, and a break
// of 5. For a declared size below 14 the slack alone is too short for that.
inline constexpr std::uint32_t kSmallestOverflowBuffer = 4110;

// Makes sure that the current output buffer has room for needed bytes, or moves
// on to one new overflow buffer, whatever needed says.
int dorvexCheckOutputBuf(TAG_VNDORVEXGlobals* context, int needed);

// Appends a buffer that is already filled. The list owns data from then on.
int dorvexOverflow_insert(TAG_VNDORVEXGlobals* context, unsigned char* data, int size);

// Closes the last buffer, which holds the bytes from start to end. 1 when the
// list is empty.
int dorvexOverflowUpdateTailTokenBufSize(TAG_VNDORVEXGlobals* context, unsigned char* end,
                                         unsigned char* start);

// Removes the first node but not its data. Always 0.
int dorvexOverflow_delete(TAG_VNDORVEXGlobals* context);

// 0 for an empty list, 1 for one node, and one less than the number of nodes
// for more: good for telling empty from not empty, and for nothing else.
int dorvexOverflow_getSize(TAG_VNDORVEXGlobals* context);
