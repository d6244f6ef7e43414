#include "Readers/dorvexsr/dorvexlistutil.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <string>
#include <vector>

#include "support/bare_host.h"
#include "support/guarded_buffer.h"

namespace {

using namespace dorvex::testing;

// A record as the pump has it at the beginning of a first fill.
class OverflowList : public ::testing::Test {
 protected:
  OverflowList() {
    context_.services = host_.services();
    context_.tokenBufSize = kSize;
    context_.tokenBufStart = context_.tokenCursor = buffer_.data();
  }

  void write(std::size_t bytes) { context_.tokenCursor += bytes; }

  std::vector<int> sizes() const {
    std::vector<int> sizes;
    for (const OverflowNode* node = context_.overflowHead; node != nullptr; node = node->next)
      sizes.push_back(node->size);
    return sizes;
  }

  // Walks the list both ways.
  void expectSoundLinks() const {
    const OverflowNode* previous = nullptr;
    for (const OverflowNode* node = context_.overflowHead; node != nullptr; node = node->next) {
      EXPECT_EQ(node->prev, previous);
      previous = node;
    }
    EXPECT_EQ(context_.overflowTail, previous);
  }

  static constexpr std::uint32_t kSize = 100;
  BareHost host_;
  GuardedBuffer buffer_{kSize + 14};
  TAG_VNDORVEXGlobals context_{};
};

using Sizes = std::vector<int>;

TEST_F(OverflowList, KeepsTheBufferWhileThereIsRoom) {
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 100), 0);
  write(51);
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 49), 0);
  EXPECT_EQ(context_.tokenBufStart, buffer_.data());
  EXPECT_EQ(context_.overflowHead, nullptr);
  EXPECT_EQ(host_.calls(Slot::kAlloc), 0);
}

TEST_F(OverflowList, OpensABufferOfTheDeclaredSizeAndItsSlack) {
  write(51);
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 50), 0);
  ASSERT_NE(context_.overflowHead, nullptr);
  EXPECT_EQ(context_.overflowHead, context_.overflowTail);
  EXPECT_EQ(context_.tokenBufStart, context_.overflowHead->data);
  EXPECT_EQ(context_.tokenCursor, context_.tokenBufStart);
  EXPECT_EQ(context_.firstBufferBytes, 51);
  EXPECT_EQ(context_.overflowTotal, 51);
  EXPECT_EQ(sizes(), Sizes{0});
  std::fill_n(context_.tokenBufStart, kSize + kOverflowSlack, 'x');  // all of it is there
  expectSoundLinks();
}

TEST_F(OverflowList, AsksForTheDeclaredSizeAnd4096BytesThenForItsNode) {
  static std::vector<std::size_t> asked;
  static VNAllocator real;
  asked.clear();
  real = host_.services()->allocator;
  host_.services()->allocator.Alloc = [](VNAllocator*, std::size_t size) {
    asked.push_back(size);
    return real.Alloc(&real, size);
  };
  std::vector<std::size_t> expected;
  for (const std::uint32_t size : {14U, 100U, 4096U, 65536U}) {
    context_.tokenBufSize = size;
    ASSERT_EQ(dorvexCheckOutputBuf(&context_, static_cast<int>(size) + 1), 0);
    expected.insert(expected.end(), {std::size_t{size} + 4096, sizeof(OverflowNode)});
  }
  EXPECT_EQ(asked, expected);
}

TEST_F(OverflowList, OpensABufferThatHoldsAWholeTokenWhateverTheDeclaredSize) {
  for (std::uint32_t size = 0; size < 14; ++size) {
    context_.tokenBufSize = size;
    EXPECT_EQ(dorvexCheckOutputBuf(&context_, 4109), 0);
    EXPECT_GE(malloc_usable_size(context_.tokenBufStart), 4110U) << size;
    std::fill_n(context_.tokenBufStart, 4110, 'x');
  }
}

TEST_F(OverflowList, OpensOneBufferWhateverIsNeeded) {
  write(51);
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 1000000), 0);
  EXPECT_EQ(dorvexOverflow_getSize(&context_), 1);
}

TEST_F(OverflowList, HasNoRoomInAFullOrOverfullBuffer) {
  write(100);
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 0), 0);
  EXPECT_EQ(sizes(), Sizes{0});
  write(114);  // a buffer may hold more than its declared size
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, -5), 0);
  EXPECT_EQ(sizes(), (Sizes{114, 0}));
}

TEST_F(OverflowList, HasNoRoomInABufferOfSizeZero) {
  context_.tokenBufSize = 0;
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 0), 0);
  EXPECT_EQ(sizes(), Sizes{0});
}

TEST_F(OverflowList, ClosesTheTailBeforeTheNextBuffer) {
  write(51);
  dorvexCheckOutputBuf(&context_, 90);
  write(104);
  dorvexCheckOutputBuf(&context_, 90);
  write(7);
  EXPECT_EQ(sizes(), (Sizes{104, 0}));
  EXPECT_EQ(context_.firstBufferBytes, 51);
  EXPECT_EQ(context_.overflowTotal, 155);
  EXPECT_EQ(
      dorvexOverflowUpdateTailTokenBufSize(&context_, context_.tokenCursor, context_.tokenBufStart),
      0);
  EXPECT_EQ(sizes(), (Sizes{104, 7}));
  EXPECT_EQ(context_.overflowTotal, 162);  // what the first buffer and all nodes hold
  expectSoundLinks();
}

TEST_F(OverflowList, LeavesEverythingWhereABufferCannotBeHad) {
  write(100);
  host_.failAt(Slot::kAlloc, 1);
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 1), 2);
  EXPECT_EQ(context_.tokenBufStart, buffer_.data());
  EXPECT_EQ(context_.overflowHead, nullptr);
  EXPECT_EQ(context_.firstBufferBytes, 0);
  EXPECT_EQ(context_.overflowTotal, 0);
}

TEST_F(OverflowList, GivesTheBufferBackWhereItsNodeCannotBeHad) {
  write(100);
  host_.failAt(Slot::kAlloc, 2);
  EXPECT_EQ(dorvexCheckOutputBuf(&context_, 1), 2);
  EXPECT_EQ(host_.liveBlocks(), 0U);
  EXPECT_EQ(context_.tokenBufStart, buffer_.data());
  EXPECT_EQ(context_.overflowHead, nullptr);
  EXPECT_EQ(context_.firstBufferBytes, 100);  // the start of overflow stands
  EXPECT_EQ(context_.overflowTotal, 100);
}

TEST_F(OverflowList, InsertsAFilledBuffer) {
  auto& allocator = host_.services()->allocator;
  auto* data = static_cast<unsigned char*>(allocator.Alloc(&allocator, 10));
  EXPECT_EQ(dorvexOverflow_insert(&context_, data, 10), 0);
  EXPECT_EQ(context_.overflowHead->data, data);
  EXPECT_EQ(sizes(), Sizes{10});
  EXPECT_EQ(context_.overflowTotal, 0);
  expectSoundLinks();
}

TEST_F(OverflowList, ClosesTheTailBeforeAnInsertedBuffer) {
  dorvexOverflow_insert(&context_, nullptr, 0);
  write(33);
  EXPECT_EQ(dorvexOverflow_insert(&context_, nullptr, 5), 0);
  EXPECT_EQ(sizes(), (Sizes{33, 5}));
  EXPECT_EQ(context_.overflowTotal, 33);
  expectSoundLinks();
}

TEST_F(OverflowList, InsertsNothingWithoutANode) {
  host_.failAt(Slot::kAlloc, 1);
  EXPECT_EQ(dorvexOverflow_insert(&context_, nullptr, 5), 2);
  EXPECT_EQ(context_.overflowHead, nullptr);
}

TEST_F(OverflowList, HasNoTailToUpdateWhenEmpty) {
  write(10);
  EXPECT_EQ(
      dorvexOverflowUpdateTailTokenBufSize(&context_, context_.tokenCursor, context_.tokenBufStart),
      1);
  EXPECT_EQ(context_.overflowTotal, 0);
}

TEST_F(OverflowList, DeletesFromTheHeadButLeavesTheData) {
  auto& allocator = host_.services()->allocator;
  auto* data = static_cast<unsigned char*>(allocator.Alloc(&allocator, 10));
  dorvexOverflow_insert(&context_, data, 1);
  dorvexOverflow_insert(&context_, nullptr, 2);
  dorvexOverflow_insert(&context_, nullptr, 3);
  EXPECT_EQ(dorvexOverflow_delete(&context_), 0);
  EXPECT_EQ(sizes().size(), 2U);
  EXPECT_EQ(host_.liveBlocks(), 3U);  // two nodes and the data
  expectSoundLinks();
  dorvexOverflow_delete(&context_);
  dorvexOverflow_delete(&context_);
  EXPECT_EQ(context_.overflowHead, nullptr);
  EXPECT_EQ(context_.overflowTail, nullptr);
  EXPECT_EQ(dorvexOverflow_delete(&context_), 0);  // an empty list stays empty
  EXPECT_EQ(host_.liveBlocks(), 1U);
}

TEST_F(OverflowList, AnswersOneLessThanTheNumberOfNodesFromTwoOn) {
  for (const int expected : {0, 1, 1, 2, 3, 4}) {
    EXPECT_EQ(dorvexOverflow_getSize(&context_), expected);
    dorvexOverflow_insert(&context_, nullptr, 0);
  }
}

}  // namespace
