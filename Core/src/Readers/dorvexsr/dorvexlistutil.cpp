#include "Readers/dorvexsr/dorvexlistutil.h"

#include <algorithm>

namespace {

constexpr int kOutOfMemory = 2;

void* allocate(TAG_VNDORVEXGlobals* context, std::size_t size) {
  VNAllocator& allocator = context->services->allocator;
  return allocator.Alloc(&allocator, size);
}

void release(TAG_VNDORVEXGlobals* context, void* pointer) {
  VNAllocator& allocator = context->services->allocator;
  allocator.Free(&allocator, pointer);
}

// Low 32 bits of the distance, as all byte counts of the record.
std::int32_t bytesBetween(const unsigned char* start, const unsigned char* end) {
  return static_cast<std::int32_t>(end - start);
}

std::int32_t bytesInBuffer(const TAG_VNDORVEXGlobals* context) {
  return bytesBetween(context->tokenBufStart, context->tokenCursor);
}

// The counts are 32 bits wide and wrap.
void addToTotal(TAG_VNDORVEXGlobals* context, std::int32_t bytes) {
  context->overflowTotal = static_cast<std::int32_t>(
      static_cast<std::uint32_t>(context->overflowTotal) + static_cast<std::uint32_t>(bytes));
}

void closeTail(TAG_VNDORVEXGlobals* context, std::int32_t size) {
  context->overflowTail->size = size;
  addToTotal(context, size);
}

// Links a node behind the tail, which it closes.
void append(TAG_VNDORVEXGlobals* context, OverflowNode* node) {
  node->next = nullptr;
  node->prev = context->overflowTail;
  if (context->overflowTail != nullptr) {
    closeTail(context, bytesInBuffer(context));
    context->overflowTail->next = node;
  } else {
    context->overflowHead = node;
  }
  context->overflowTail = node;
}

bool hasRoom(const TAG_VNDORVEXGlobals* context, int needed) {
  const auto used = static_cast<double>(context->tokenCursor - context->tokenBufStart);
  const auto size = static_cast<double>(context->tokenBufSize);
  const double free = size - used;
  return free > 0 && !(used / size > 4096.0) && !(needed > free);
}

}  // namespace

int dorvexCheckOutputBuf(TAG_VNDORVEXGlobals* context, int needed) {
  if (hasRoom(context, needed)) return 0;

  auto* buffer = static_cast<unsigned char*>(
      allocate(context, std::max<std::size_t>(std::size_t{context->tokenBufSize} + kOverflowSlack,
                                              kSmallestOverflowBuffer)));
  if (buffer == nullptr) return kOutOfMemory;
  if (context->overflowHead == nullptr) {
    // The start of overflow. It stands even if the node cannot be had.
    context->firstBufferBytes = bytesInBuffer(context);
    context->overflowTotal = context->firstBufferBytes;
  }
  if (dorvexOverflow_insert(context, buffer, 0) != 0) {
    release(context, buffer);
    return kOutOfMemory;
  }
  context->tokenBufStart = buffer;
  context->tokenCursor = buffer;
  return 0;
}

int dorvexOverflow_insert(TAG_VNDORVEXGlobals* context, unsigned char* data, int size) {
  auto* node = static_cast<OverflowNode*>(allocate(context, sizeof(OverflowNode)));
  if (node == nullptr) return kOutOfMemory;
  node->data = data;
  node->size = size;
  append(context, node);
  return 0;
}

int dorvexOverflowUpdateTailTokenBufSize(TAG_VNDORVEXGlobals* context, unsigned char* end,
                                         unsigned char* start) {
  if (context->overflowTail == nullptr) return 1;
  closeTail(context, bytesBetween(start, end));
  return 0;
}

int dorvexOverflow_delete(TAG_VNDORVEXGlobals* context) {
  OverflowNode* head = context->overflowHead;
  if (head == nullptr) return 0;
  context->overflowHead = head->next;
  if (head->next != nullptr)
    head->next->prev = nullptr;
  else
    context->overflowTail = nullptr;
  release(context, head);
  return 0;
}

int dorvexOverflow_getSize(TAG_VNDORVEXGlobals* context) {
  if (context->overflowHead == nullptr) return 0;
  if (context->overflowHead == context->overflowTail) return 1;
  int size = -1;
  for (const OverflowNode* node = context->overflowHead; node != nullptr; node = node->next) ++size;
  return size;
}
