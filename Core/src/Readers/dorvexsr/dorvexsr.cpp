#include "Readers/dorvexsr/dorvexsr.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Readers/dorvexsr/dorvexlistutil.h"
#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/vennik/vnexcept/vnexcept.h"

namespace {

using vn::iwork13::MessageMap;

// Returned by the pump; the numbers of the three classes that it tells apart.
enum FillResult : int { kSuccess = 0, kOutOfMemory = 2, kBadInput = 4, kGeneralFailure = 6 };

constexpr int kDone = 100;

TAG_VNDORVEXGlobals* toGlobals(void* context) { return static_cast<TAG_VNDORVEXGlobals*>(context); }

// part of total in percent, truncated. The product has 32 bits and wraps: a
// buffer of more than 21474836 bytes gives a wrong figure, as it always has.
int percentOf(std::int32_t part, std::int32_t total) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(part) * 100U) / total;
}

unsigned int bytesInBuffer(const TAG_VNDORVEXGlobals* context) {
  return static_cast<unsigned int>(context->tokenCursor - context->tokenBufStart);
}

// Whether dorvexOverflow_getSize is above 0, without walking the list: with a
// small host buffer there is a call of the pump for each of many nodes.
bool hasOverflow(const TAG_VNDORVEXGlobals* context) { return context->overflowHead != nullptr; }

// Reads the document and stages all its tokens.
void readDocument(TAG_VNDORVEXGlobals* context) {
  writePrologue(context);
  populateMessageMap(context);
  if (context->messageMap->empty()) throw vn::except::bad_input_stream_error();
  getAllText(context, *context->messageMap);
}

// Reports what the host's buffer holds.
void finishFirstBuffer(TAG_VNDORVEXGlobals* context, unsigned int* length, int* percent) {
  dorvexOverflowUpdateTailTokenBufSize(context, context->tokenCursor, context->tokenBufStart);
  *length = bytesInBuffer(context);
  if (hasOverflow(context)) {
    *length = static_cast<unsigned int>(context->firstBufferBytes);
    *percent = percentOf(context->firstBufferBytes, context->overflowTotal);
  } else {
    *percent = kDone;
  }
}

// Hands over the first stored buffer. percent is the host's running sum.
void drainOverflow(TAG_VNDORVEXGlobals* context, unsigned char* buffer, unsigned int* length,
                   int* percent) {
  const OverflowNode* head = context->overflowHead;
  const auto size = static_cast<std::size_t>(head->size);
  if (size != 0) std::memcpy(buffer, head->data, size);
  context->tokenCursor += size;
  *percent += percentOf(head->size, context->overflowTotal);
  VNAllocator& allocator = context->services->allocator;
  if (head->data != nullptr) allocator.Free(&allocator, head->data);
  dorvexOverflow_delete(context);
  if (!hasOverflow(context)) *percent = kDone;  // whatever truncation left
  *length = bytesInBuffer(context);
}

void fillBuffer(TAG_VNDORVEXGlobals* context, unsigned char* buffer, unsigned int* length,
                int* percent, unsigned int size) {
  if (context == nullptr || buffer == nullptr || length == nullptr || percent == nullptr)
    throw vn::except::general_error();
  context->tokenBufStart = buffer;
  context->tokenCursor = buffer;
  context->tokenBufSize = size;
  if (hasOverflow(context)) {
    drainOverflow(context, buffer, length, percent);
    return;
  }
  // An empty map is the only sign of the first call. So a call after a failure
  // that left objects in the map reports an empty success.
  if (context->messageMap->empty()) readDocument(context);
  finishFirstBuffer(context, length, percent);
}

// Nobody deletes a map (dorvexFreeContext). A function of its own, so that leak
// checkers can pass over the map by name, and over nothing else.
[[gnu::noinline]] MessageMap* newMessageMap() { return new MessageMap; }

}  // namespace

void dorvexGetReaderInterface(ReaderInterface* table) {
  *table = ReaderInterface{};
  table->AllocateContext = dorvexAllocateContext;
  table->FreeContext = dorvexFreeContext;
  table->InitDoc = dorvexInitDoc;
  table->FillBuffer = dorvexFillBuffer;
  table->GetCharSet = dorvexGetCharSet;
}

void* dorvexAllocateContext(void* a1, void* a2, std::uint32_t* result, tag_TPVAPIServices* services,
                            std::uint32_t a5) {
  VNAllocator& allocator = services->allocator;
  void* record = allocator.Alloc(&allocator, sizeof(TAG_VNDORVEXGlobals));
  if (record == nullptr) {
    services->lastError = kOutOfMemory;
    return nullptr;
  }
  std::memset(record, 0, sizeof(TAG_VNDORVEXGlobals));
  auto* context = static_cast<TAG_VNDORVEXGlobals*>(record);
  context->services = services;
  context->hostArg1 = a1;
  context->hostArg2 = a2;
  context->hostArg5 = a5;
  // Without memory for one of these the record is lost, but not the lists.
  auto stringListA = std::make_unique<std::vector<std::string>>();
  auto stringListB = std::make_unique<std::vector<std::string>>();
  delete std::exchange(context->messageMap, newMessageMap());  // null on a zeroed record
  context->stringListA = stringListA.release();
  context->stringListB = stringListB.release();
  *result = 1;
  return context;
}

int dorvexFreeContext(void* context) {
  if (context == nullptr) return 0;
  TAG_VNDORVEXGlobals* globals = toGlobals(context);
  delete globals->stringListB;
  delete globals->stringListA;
  // The message map is not deleted, nor are nodes that the host did not fetch.
  VNAllocator& allocator = globals->services->allocator;
  allocator.Free(&allocator, globals);
  return 0;
}

int dorvexInitDoc(void* context, adDocDesc* /*description*/, long param, _VPTPIOobj* io) {
  TAG_VNDORVEXGlobals* globals = toGlobals(context);
  globals->docInitialised = 1;
  globals->firstBufferBytes = 0;
  globals->overflowTotal = 0;
  globals->ioObj = io;
  globals->scratchBufSize = sizeof(globals->scratchBuf);
  globals->docParam = static_cast<std::int32_t>(param);
  return 0;
}

int dorvexFillBuffer(void* context, unsigned char* buffer, unsigned int* length, int* percent,
                     unsigned int size) {
  try {
    fillBuffer(toGlobals(context), buffer, length, percent, size);
    return kSuccess;
  } catch (const vn::except::out_of_core_error&) {
    return kOutOfMemory;
  } catch (const vn::except::bad_input_stream_error&) {
    return kBadInput;
  } catch (...) {
    return kGeneralFailure;
  }
}

int dorvexGetCharSet(void* /*context*/, int* /*ignored*/) { return VN_CHARSET_UTF8; }
