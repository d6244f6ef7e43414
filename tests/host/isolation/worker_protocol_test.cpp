#include "isolation/worker_protocol.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "isolation/fd_channel.h"

namespace dorvex::worker_protocol_test {
namespace {

constexpr std::size_t kLargestTokens = 4110;

Result richResult() {
  Result result;
  result.status = Status::kPartial;
  result.failure = Failure::kDamaged;
  result.message = "partial text";
  result.moduleResult = -6;
  result.skipped = {{"Index/a.iwa", "why"}, {"", ""}};
  result.inputBytes = std::uint64_t{1} << 40;
  return result;
}

std::optional<FrameHeader> decoded(FrameType type, std::uint32_t length) {
  return decodeHeader(encodeHeader({type, length}), kLargestTokens);
}

TEST(FrameHeader, ComesBackAsItWentOut) {
  const auto header = decoded(FrameType::kTokens, 4110);
  ASSERT_TRUE(header.has_value());
  EXPECT_EQ(header->type, FrameType::kTokens);
  EXPECT_EQ(header->length, 4110u);
  EXPECT_TRUE(decoded(FrameType::kResult, kLargestResultFrame).has_value());
  EXPECT_TRUE(decoded(FrameType::kLessConfined, kLongestPhraseFrame).has_value());
  for (const auto bare : {FrameType::kTaken, FrameType::kOutOfMemory, FrameType::kNeedScratch,
                          FrameType::kNeedLibzip}) {
    EXPECT_TRUE(decoded(bare, 0).has_value());
  }
}

TEST(FrameHeader, IsRefusedForALengthThatItsTypeNeverHas) {
  EXPECT_FALSE(decoded(FrameType::kTokens, 4111).has_value());
  EXPECT_FALSE(decoded(FrameType::kTokens, 0).has_value());
  EXPECT_FALSE(decoded(FrameType::kResult, kLargestResultFrame + 1).has_value());
  EXPECT_FALSE(decoded(FrameType::kLessConfined, 0).has_value());
  EXPECT_FALSE(decoded(FrameType::kLessConfined, kLongestPhraseFrame + 1).has_value());
  for (const auto bare : {FrameType::kTaken, FrameType::kOutOfMemory, FrameType::kNeedScratch,
                          FrameType::kNeedLibzip}) {
    EXPECT_FALSE(decoded(bare, 1).has_value());
  }
  EXPECT_FALSE(decoded(static_cast<FrameType>('x'), 1).has_value());
}

TEST(ResultPayload, ComesBackAsItWentOut) {
  EXPECT_EQ(decodeResult(encodeResult(richResult())), richResult());
  EXPECT_EQ(decodeResult(encodeResult(Result{})), Result{});
}

TEST(ResultPayload, IsRefusedWhenItIsCutOrContinued) {
  const auto payload = encodeResult(richResult());
  for (std::size_t length = 0; length < payload.size(); ++length) {
    EXPECT_EQ(decodeResult(std::span(payload).first(length)), std::nullopt) << length;
  }
  auto longer = payload;
  longer.push_back(0);
  EXPECT_EQ(decodeResult(longer), std::nullopt);
}

TEST(ResultPayload, IsRefusedForANumberThatIsNoStatusOrFailure) {
  auto payload = encodeResult(Result{});
  payload[0] = 3;
  EXPECT_EQ(decodeResult(payload), std::nullopt);
  payload[0] = 0;
  payload[1] = static_cast<unsigned char>(Failure::kOther) + 1;
  EXPECT_EQ(decodeResult(payload), std::nullopt);
}

// A worker that a document has taken over could otherwise make the receiver store
// eight times what it was sent.
TEST(ResultPayload, IsRefusedForMoreThanIsEverSent) {
  // Four choices, the message, whether the module answered, its number, the size of
  // the input, a count.
  constexpr std::size_t kMessage = 4;
  constexpr std::size_t kAnswered = 8;
  constexpr std::size_t kSkipped = 21;
  const auto payload = encodeResult(Result{});

  auto members = payload;
  members[kSkipped] = 101;
  members.insert(members.end(), 101 * 8, 0);
  EXPECT_EQ(decodeResult(members), std::nullopt);

  auto message = payload;
  message[kMessage] = 1;
  message[kMessage + 2] = 1;
  message.insert(message.begin() + kMessage + 4, 65537, 'm');
  EXPECT_EQ(decodeResult(message), std::nullopt);

  auto answer = payload;
  answer[kAnswered] = 2;
  EXPECT_EQ(decodeResult(answer), std::nullopt);
  answer[kAnswered] = 0;
  answer[kAnswered + 1] = 6;
  EXPECT_EQ(decodeResult(answer), std::nullopt);
}

TEST(ResultPayload, StaysSmallWhateverTheDocumentHolds) {
  Result result;
  result.message.assign(10 << 20, 'm');
  result.skipped.assign(10000, {std::string(100000, 'n'), std::string(100000, 'r')});
  const auto payload = encodeResult(result);
  EXPECT_LE(payload.size(), kLargestResultFrame);
  EXPECT_EQ(decodeResult(payload)->skipped.size(), 100u);
}

TEST(SendFrame, WritesHeaderAndPayload) {
  const auto [in, out] = makeChannel();
  const std::string text = "payload";
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  EXPECT_TRUE(sendFrame(out.get(), FrameType::kTokens, {bytes, text.size()}));
  char received[100];
  EXPECT_EQ(::read(in.get(), received, sizeof received), 12);
  EXPECT_EQ(received[0], 'T');
  EXPECT_EQ(std::string(received + 5, 7), text);
}

TEST(SendFrame, FailsWhenNobodyListens) {
  auto [in, out] = makeChannel();
  in.reset();
  EXPECT_FALSE(sendFrame(out.get(), FrameType::kOutOfMemory, {}));
}

}  // namespace
}  // namespace dorvex::worker_protocol_test
