#include "isolation/frame_reader.h"

#include <gtest/gtest.h>

#include <string>

#include "isolation/fd_channel.h"

namespace dorvex::frame_reader_test {
namespace {

using Outcome = FrameReader::Outcome;

constexpr std::size_t kLargestTokens = 100;

std::span<const unsigned char> bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::string textOf(std::span<const unsigned char> bytes) { return {bytes.begin(), bytes.end()}; }

std::string frame(FrameType type, const std::string& payload) {
  const auto header = encodeHeader({type, static_cast<std::uint32_t>(payload.size())});
  return textOf(header) + payload;
}

class FrameReaderTest : public ::testing::Test {
 protected:
  void send(const std::string& bytes) { ASSERT_TRUE(sendBytes(ends.second.get(), bytesOf(bytes))); }

  std::pair<UniqueFd, UniqueFd> ends = makeChannel();
  FrameReader frames{ends.first.get(), kLargestTokens};
};

TEST_F(FrameReaderTest, PutsAFrameTogetherFromSingleBytes) {
  const std::string sent = frame(FrameType::kTokens, "tokens");
  for (const char byte : sent.substr(0, sent.size() - 1)) {
    send({byte});
    EXPECT_EQ(frames.read(), Outcome::kMore);
  }
  send(sent.substr(sent.size() - 1));
  ASSERT_EQ(frames.read(), Outcome::kFrame);
  EXPECT_EQ(frames.type(), FrameType::kTokens);
  EXPECT_EQ(textOf(frames.payload()), "tokens");
}

TEST_F(FrameReaderTest, TakesOneFrameAtATime) {
  send(frame(FrameType::kTokens, "longer tokens") + frame(FrameType::kTokens, "short") +
       frame(FrameType::kTaken, ""));
  ASSERT_EQ(frames.read(), Outcome::kFrame);
  EXPECT_EQ(textOf(frames.payload()), "longer tokens");
  ASSERT_EQ(frames.read(), Outcome::kFrame);
  EXPECT_EQ(textOf(frames.payload()), "short");
  ASSERT_EQ(frames.read(), Outcome::kFrame);
  EXPECT_EQ(frames.type(), FrameType::kTaken);
  EXPECT_TRUE(frames.payload().empty());
  EXPECT_EQ(frames.read(), Outcome::kMore);
}

TEST_F(FrameReaderTest, ReportsTheEndEvenWithinAFrame) {
  send(frame(FrameType::kTokens, "tokens").substr(0, 7));
  ends.second.reset();
  EXPECT_EQ(frames.read(), Outcome::kEnded);
}

TEST_F(FrameReaderTest, RefusesALengthBeforeItMakesRoomForIt) {
  send(textOf(encodeHeader({FrameType::kTokens, kLargestTokens + 1})));
  EXPECT_EQ(frames.read(), Outcome::kNonsense);
}

}  // namespace
}  // namespace dorvex::frame_reader_test
