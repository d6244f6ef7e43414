#include "dorvex/token_stream.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace dorvex::token_stream_test {
namespace {

using namespace std::string_literals;

const std::string kHeader = "\x0F\x0D\0\0\0\0\0\0\0\x0A\0\0\0"s;
const std::string kPage =
    "\x10\x26\0\0\0\x02\xD0\x2F\0\0\xE0\x3D\0\0\xA0\x05\0\0\xA0\x05\0\0\xA0\x05\0\0\xA0\x05\0\0"s +
    "\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s;
const std::string kHello = "\0\x0E\0\0\0\x05\0\0\0Hello"s;
const std::string kBreak = "\x0E\x05\0\0\0"s;

std::span<const unsigned char> bytesOf(const std::string& text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

std::vector<Token> readAll(const std::string& stream) {
  TokenStreamReader reader;
  reader.start(bytesOf(stream));
  std::vector<Token> tokens;
  while (const auto token = reader.next()) tokens.push_back(*token);
  reader.finish();
  return tokens;
}

std::string errorOf(const std::string& stream) {
  try {
    readAll(stream);
  } catch (const TokenStreamError& error) {
    return error.what();
  }
  return "none";
}

TEST(TokenStreamReader, ReadsEveryKindOfToken) {
  const auto tokens = readAll(kHeader + kPage + kHello + kBreak);
  ASSERT_EQ(tokens.size(), 4u);
  EXPECT_EQ(std::get<DocHeaderToken>(tokens[0]).values, (std::array<std::uint32_t, 2>{0, 10}));
  EXPECT_EQ(std::get<PageSetupToken>(tokens[1]).kind, 2);
  EXPECT_EQ(
      std::get<PageSetupToken>(tokens[1]).values,
      (std::array<std::uint32_t, 8>{12240, 15840, 1440, 1440, 1440, 1440, 0xFFFFFFFF, 0xFFFFFFFF}));
  EXPECT_TRUE(std::holds_alternative<TextToken>(tokens[2]));
  EXPECT_TRUE(std::holds_alternative<BreakToken>(tokens[3]));
}

TEST(TokenStreamReader, TakesAStreamWithoutTexts) {
  EXPECT_EQ(readAll(kHeader + kPage).size(), 2u);
}

TEST(TokenStreamReader, GoesOnFromBufferToBuffer) {
  TokenStreamReader reader;
  for (const std::string& buffer : {kHeader + kPage, kHello, kHello + kBreak}) {
    reader.start(bytesOf(buffer));
    while (reader.next()) {
    }
  }
  EXPECT_NO_THROW(reader.finish());
}

TEST(TokenStreamReader, RefusesABufferBeforeTheLastIsUsedUp) {
  TokenStreamReader reader;
  reader.start(bytesOf(kHeader));
  EXPECT_THROW(reader.start(bytesOf(kPage)), TokenStreamError);
  EXPECT_THROW(reader.finish(), TokenStreamError);
}

struct BadStream {
  std::string name;
  std::string stream;
  std::string error;
  friend void PrintTo(const BadStream& row, std::ostream* out) { *out << row.name; }
};

class TokenStreamReaderRefuses : public ::testing::TestWithParam<BadStream> {};

TEST_P(TokenStreamReaderRefuses, AndNamesThePlace) {
  EXPECT_EQ(errorOf(GetParam().stream), GetParam().error);
}

const std::string kStart = kHeader + kPage;
constexpr char kTextFault[] = "token at byte 51: TOKEN_TEXT is malformed or out of place";
constexpr char kLengthFault[] = "token at byte 51: its length is wrong";

INSTANTIATE_TEST_SUITE_P(
    Streams, TokenStreamReaderRefuses,
    ::testing::Values(
        BadStream{"NothingAtAll", "", "token at byte 0: the stream ends too early"},
        BadStream{"OnlyTheHeader", kHeader, "token at byte 13: the stream ends too early"},
        BadStream{"NoHeader", kPage,
                  "token at byte 0: TOKEN_PAGE_SETUP is malformed or out of place"},
        BadStream{"TextFirst", kHello, "token at byte 0: TOKEN_TEXT is malformed or out of place"},
        BadStream{"SecondHeader", kStart + kHeader,
                  "token at byte 51: TOKEN_DOC_HEADER is malformed or out of place"},
        BadStream{"SecondPage", kStart + kPage,
                  "token at byte 51: TOKEN_PAGE_SETUP is malformed or out of place"},
        BadStream{"UnknownType", kStart + "\x07\x05\0\0\0"s,
                  "token at byte 51: its type is unknown: 7"},
        BadStream{"CutInFrame", kStart + "\0\x0E"s, "token at byte 51: cut off"},
        BadStream{"CutInPayload", kStart + kHello.substr(0, 12), kLengthFault},
        BadStream{"LengthBelowFrame", kStart + "\0\x04\0\0\0"s, kLengthFault},
        BadStream{"TextWithoutLength", kStart + "\0\x05\0\0\0"s, kTextFault},
        BadStream{"TextLengthsDisagree", kStart + "\0\x0E\0\0\0\x04\0\0\0Hello"s, kTextFault},
        BadStream{"BreakWithoutText", kStart + kBreak,
                  "token at byte 51: TOKEN_BREAK is malformed or out of place"},
        BadStream{"BreakWithPayload", kStart + kHello + "\x0E\x06\0\0\0x"s,
                  "token at byte 65: TOKEN_BREAK is malformed or out of place"},
        BadStream{"HeaderTooLong", "\x0F\x0E\0\0\0\0\0\0\0\x0A\0\0\0x"s,
                  "token at byte 0: TOKEN_DOC_HEADER is malformed or out of place"},
        BadStream{"TextWithoutBreak", kStart + kHello,
                  "token at byte 65: the stream ends too early"}),
    [](const auto& info) { return info.param.name; });

TEST(TextJoiner, JoinsPiecesUpToTheBreak) {
  TextJoiner joiner;
  EXPECT_FALSE(joiner.take(TextToken{"caf\xC3"}));
  EXPECT_FALSE(joiner.take(TextToken{"\xA9"}));
  EXPECT_TRUE(joiner.take(BreakToken{}));
  EXPECT_EQ(joiner.text(), "caf\xC3\xA9");
  EXPECT_FALSE(joiner.take(TextToken{"next"}));
  EXPECT_TRUE(joiner.take(BreakToken{}));
  EXPECT_EQ(joiner.text(), "next");
}

TEST(TextJoiner, IgnoresTheStreamsBeginning) {
  TextJoiner joiner;
  EXPECT_FALSE(joiner.take(DocHeaderToken{}));
  EXPECT_FALSE(joiner.take(PageSetupToken{}));
  joiner.take(TextToken{"x"});
  EXPECT_TRUE(joiner.take(BreakToken{}));
  EXPECT_EQ(joiner.text(), "x");
}

}  // namespace
}  // namespace dorvex::token_stream_test
