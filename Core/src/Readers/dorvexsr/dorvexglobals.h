// The per-document record: everything of one open document hangs from it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Readers/hostapi/host_records.h"
#include "Tools/formats/vniwork13/iwa_utils.h"

// One element of the overflow list. The node and its data come from the host's
// allocator.
struct OverflowNode {
  OverflowNode* next;
  OverflowNode* prev;
  unsigned char* data;  // owned until the pump has copied it out
  std::int32_t size;    // bytes of whole tokens; 0 until the buffer is closed
};

// Comes zeroed from the host's allocator. The fields that are stored and never
// read, and the two lists that stay empty, are part of the record.
struct TAG_VNDORVEXGlobals {
  unsigned char* tokenCursor;             // next byte to write in the current output buffer
  unsigned char* tokenBufStart;           // the host's buffer or the newest overflow buffer
  std::uint32_t tokenBufSize;             // as the host declared it in the latest fill
  std::int32_t docParam;                  // never read
  std::int32_t docInitialised;            // never read
  std::vector<std::string>* stringListA;  // never filled
  std::vector<std::string>* stringListB;  // never filled
  std::int32_t overflowTotal;             // token bytes of all closed buffers, once overflow began
  std::int32_t firstBufferBytes;          // bytes in the host's buffer when overflow began
  OverflowNode* overflowHead;
  OverflowNode* overflowTail;
  void* hostArg1;                  // never read
  void* hostArg2;                  // never read
  _VPTPIOobj* ioObj;               // the host's
  tag_TPVAPIServices* services;    // the host's
  std::uint32_t hostArg5;          // never read
  unsigned char scratchBuf[4096];  // raw stream bytes of the member being read
  std::uint32_t scratchBufSize;
  vn::iwork13::MessageMap* messageMap;  // empty: nothing has been parsed yet
};
