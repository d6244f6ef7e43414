#include "child_protocol.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <string>

#include "unique_fd.h"

namespace dorvex {
namespace {

constexpr std::size_t kLargestTokens = 4110;

Result richResult() {
  Result result;
  result.status = Status::kPartial;
  result.failure = Failure::kDamaged;
  result.message = "partial text";
  result.moduleResult = -6;
  result.skipped = {{"Index/a.iwa", "why"}, {"", ""}};
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
  EXPECT_TRUE(decoded(FrameType::kOutOfMemory, 0).has_value());
}

TEST(FrameHeader, IsRefusedForALengthThatItsTypeNeverHas) {
  EXPECT_FALSE(decoded(FrameType::kTokens, 4111).has_value());
  EXPECT_FALSE(decoded(FrameType::kTokens, 0).has_value());
  EXPECT_FALSE(decoded(FrameType::kResult, kLargestResultFrame + 1).has_value());
  EXPECT_FALSE(decoded(FrameType::kOutOfMemory, 1).has_value());
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

TEST(ResultPayload, StaysSmallWhateverTheDocumentHolds) {
  Result result;
  result.message.assign(10 << 20, 'm');
  result.skipped.assign(10000, {std::string(100000, 'n'), std::string(100000, 'r')});
  const auto payload = encodeResult(result);
  EXPECT_LE(payload.size(), kLargestResultFrame);
  EXPECT_EQ(decodeResult(payload)->skipped.size(), 100u);
}

TEST(SendFrame, WritesHeaderAndPayload) {
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const UniqueFd in(ends[0]);
  const UniqueFd out(ends[1]);
  const std::string text = "payload";
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  EXPECT_TRUE(sendFrame(out.get(), FrameType::kTokens, {bytes, text.size()}));
  char received[100];
  EXPECT_EQ(::read(in.get(), received, sizeof received), 12);
  EXPECT_EQ(received[0], 'T');
  EXPECT_EQ(std::string(received + 5, 7), text);
}

TEST(SendFrame, FailsWhenNobodyListens) {
  ::signal(SIGPIPE, SIG_IGN);
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const UniqueFd out(ends[1]);
  ::close(ends[0]);
  EXPECT_FALSE(sendFrame(out.get(), FrameType::kOutOfMemory, {}));
}

}  // namespace
}  // namespace dorvex
