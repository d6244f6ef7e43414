// The entry points, called directly. What comes of whole documents is tested on
// the built module.
#include "Readers/dorvexsr/dorvexsr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "Readers/dorvexsr/dorvexlistutil.h"
#include "support/bare_host.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace {

using namespace dorvex::testing;

ReaderInterface readerInterface() {
  ReaderInterface table;
  dorvexGetReaderInterface(&table);
  return table;
}

const ReaderInterface kReader = readerInterface();

TAG_VNDORVEXGlobals* globalsOf(const ReaderSession& session) {
  return static_cast<TAG_VNDORVEXGlobals*>(session.context());
}

TEST(GetReaderInterface, FillsExactlyFiveSlotsOfATableFullOfJunk) {
  void* slots[13];
  std::memset(slots, 0xA5, sizeof slots);
  dorvexGetReaderInterface(reinterpret_cast<ReaderInterface*>(slots));
  for (int i = 0; i < 13; ++i) EXPECT_EQ(slots[i] != nullptr, i < 4 || i == 9) << i;
  EXPECT_EQ(slots[0], reinterpret_cast<void*>(dorvexAllocateContext));
  EXPECT_EQ(slots[1], reinterpret_cast<void*>(dorvexFreeContext));
  EXPECT_EQ(slots[2], reinterpret_cast<void*>(dorvexInitDoc));
  EXPECT_EQ(slots[3], reinterpret_cast<void*>(dorvexFillBuffer));
  EXPECT_EQ(slots[9], reinterpret_cast<void*>(dorvexGetCharSet));
}

TEST(AllocateContext, GivesAZeroedRecordWithItsListsAndMap) {
  BareHost host;
  std::uint32_t result = 77;
  int a1 = 0;
  int a2 = 0;
  auto* context = static_cast<TAG_VNDORVEXGlobals*>(
      dorvexAllocateContext(&a1, &a2, &result, host.services(), 5));
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(result, 1U);
  EXPECT_EQ(context->hostArg1, &a1);
  EXPECT_EQ(context->hostArg2, &a2);
  EXPECT_EQ(context->hostArg5, 5U);
  EXPECT_EQ(context->services, host.services());
  EXPECT_TRUE(context->stringListA->empty());
  EXPECT_TRUE(context->stringListB->empty());
  EXPECT_TRUE(context->messageMap->empty());
  EXPECT_EQ(context->tokenCursor, nullptr);
  EXPECT_EQ(context->ioObj, nullptr);
  EXPECT_EQ(context->overflowHead, nullptr);
  EXPECT_EQ(context->docInitialised, 0);
  EXPECT_EQ(context->scratchBufSize, 0U);
  EXPECT_EQ(context->scratchBuf[4095], 0);
  EXPECT_EQ(host.liveBlocks(), 1U);
  delete context->messageMap;
  dorvexFreeContext(context);
}

TEST(AllocateContext, ReportsThroughLastErrorWhereThereIsNoMemory) {
  BareHost host;
  host.failAt(Slot::kAlloc, 1);
  std::uint32_t result = 77;
  EXPECT_EQ(dorvexAllocateContext(nullptr, nullptr, &result, host.services(), 0), nullptr);
  EXPECT_EQ(host.services()->lastError, 2);
  EXPECT_EQ(result, 77U);
}

TEST(InitDoc, StoresWhatItIsGivenAndReadsNothing) {
  BareHost host;
  Stream& document = host.addDocument("");
  ReaderSession session(kReader, host, &document);
  TAG_VNDORVEXGlobals* context = globalsOf(session);
  context->firstBufferBytes = 7;
  context->overflowTotal = 8;
  EXPECT_EQ(dorvexInitDoc(context, nullptr, 0x123456789L, &document), 0);
  EXPECT_EQ(context->docParam, 0x23456789);
  EXPECT_EQ(context->docInitialised, 1);
  EXPECT_EQ(context->firstBufferBytes, 0);
  EXPECT_EQ(context->overflowTotal, 0);
  EXPECT_EQ(context->ioObj, &document);
  EXPECT_EQ(context->scratchBufSize, 4096U);
  EXPECT_TRUE(host.log().empty());
}

TEST(FreeContext, TakesNull) { EXPECT_EQ(dorvexFreeContext(nullptr), 0); }

TEST(FreeContext, GivesTheRecordBackAndNothingElse) {
  BareHost host;
  ReaderSession session(
      kReader, host,
      &host.addDocument(zip({{"Document.iwa", iwa({storage(1, {std::string(500, 'x')})})}})));
  ASSERT_EQ(session.fill(100).result, 0);
  const auto* map = globalsOf(session)->messageMap;
  EXPECT_EQ(host.liveBlocks(), 3U);  // the record, a node and its buffer
  session.free();
  EXPECT_EQ(host.liveBlocks(), 2U);  // what was not fetched stays
  EXPECT_EQ(host.badFrees(), 0);
  EXPECT_EQ(map->size(), 1U);  // and so does the map
  delete map;
}

TEST(GetCharSet, Is53AndLooksAtNeitherArgument) {
  EXPECT_EQ(dorvexGetCharSet(nullptr, nullptr), 53);
  int ignored = 7;
  EXPECT_EQ(dorvexGetCharSet(nullptr, &ignored), 53);
  EXPECT_EQ(ignored, 7);
}

TEST(FillBuffer, ReturnsSixForAnyNullAndLeavesTheRestUntouched) {
  BareHost host;
  ReaderSession session(kReader, host, &host.addDocument(""));
  unsigned char buffer[8] = {};
  unsigned length = 11;
  int percent = 12;
  EXPECT_EQ(dorvexFillBuffer(nullptr, buffer, &length, &percent, 8), 6);
  EXPECT_EQ(dorvexFillBuffer(session.context(), nullptr, &length, &percent, 8), 6);
  EXPECT_EQ(dorvexFillBuffer(session.context(), buffer, nullptr, &percent, 8), 6);
  EXPECT_EQ(dorvexFillBuffer(session.context(), buffer, &length, nullptr, 8), 6);
  EXPECT_EQ(length, 11U);
  EXPECT_EQ(percent, 12);
  EXPECT_EQ(globalsOf(session)->tokenBufStart, nullptr);
  EXPECT_EQ(globalsOf(session)->tokenBufSize, 0U);
  EXPECT_TRUE(host.log().empty());
}

TEST(FillBuffer, ReturnsSixForAnExceptionOutOfClose) {
  BareHost host;
  host.onOpenFile = [](Stream& stream) { stream.Close = [](_VPTPIOobj*) -> int { throw 42; }; };
  ReaderSession session(kReader, host,
                        &host.addDocument(zip({{"Document.iwa", iwa({storage(1, {"x"})})}})));
  EXPECT_EQ(session.fill(500).result, 6);
}

TEST(FillBuffer, PointsAtTheHostsBufferOfEachCall) {
  BareHost host;
  ReaderSession session(kReader, host,
                        &host.addDocument(zip({{"Document.iwa", iwa({storage(1, {"x"})})}})));
  session.fill(500);
  EXPECT_EQ(globalsOf(session)->tokenBufSize, 500U);
  session.fill(600);
  EXPECT_EQ(globalsOf(session)->tokenBufSize, 600U);
}

TEST(FillBuffer, LeavesTheSumOfAllBuffersInTheTotal) {
  BareHost host;
  std::vector<std::string> texts(200, std::string(70, 'x'));
  ReaderSession session(kReader, host,
                        &host.addDocument(zip({{"Document.iwa", iwa({storage(1, texts)})}})));
  ASSERT_EQ(session.fill(1000).result, 0);
  const TAG_VNDORVEXGlobals* context = globalsOf(session);
  std::int32_t sum = context->firstBufferBytes;
  for (const OverflowNode* node = context->overflowHead; node != nullptr; node = node->next)
    sum += node->size;
  EXPECT_EQ(context->overflowTotal, sum);
  EXPECT_EQ(sum, 51 + 200 * 84);
}

TEST(FillBuffer, WrapsTheProductOfTheProgressAt32Bits) {
  constexpr int kSize = 21474837;  // a hundred times as much does not fit
  BareHost host;
  ReaderSession session(kReader, host, &host.addDocument(""));
  TAG_VNDORVEXGlobals* context = globalsOf(session);
  VNAllocator& allocator = host.services()->allocator;
  auto* data = static_cast<unsigned char*>(allocator.Alloc(&allocator, kSize));
  ASSERT_EQ(dorvexOverflow_insert(context, data, kSize), 0);
  ASSERT_EQ(dorvexOverflow_insert(context, nullptr, 0), 0);
  context->overflowHead->size = kSize;
  context->overflowTotal = 30000000;
  session.percent = 1000;
  EXPECT_EQ(session.fill(kSize).percent, 1000 - 71);
}

}  // namespace
