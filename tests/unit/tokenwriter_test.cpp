// The writers of tokenwriter.cpp.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Readers/dorvexsr/dorvexlistutil.h"
#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "support/bare_host.h"
#include "support/guarded_buffer.h"
#include "support/token_decoder.h"
#include "support/wire_writer.h"

namespace {

using namespace dorvex::testing;
using std::string_literals::operator""s;

class Writer {
 public:
  explicit Writer(std::uint32_t size)
      : buffer_(std::max<std::size_t>(std::size_t{size} + 14, 4110)) {
    context.services = host.services();
    context.tokenBufSize = size;
    context.tokenBufStart = context.tokenCursor = buffer_.data();
  }

  // The tokens of each buffer, the host's own one first.
  std::vector<std::string> buffers() {
    std::vector<std::string> all;
    if (context.overflowHead == nullptr) {
      all.push_back(current());
      return all;
    }
    all.emplace_back(buffer_.chars(), static_cast<std::size_t>(context.firstBufferBytes));
    for (const OverflowNode* node = context.overflowHead; node != context.overflowTail;
         node = node->next)
      all.emplace_back(reinterpret_cast<const char*>(node->data),
                       static_cast<std::size_t>(node->size));
    all.push_back(current());
    return all;
  }

  std::string stream() {
    std::string bytes;
    for (const std::string& buffer : buffers()) bytes += buffer;
    return bytes;
  }

  BareHost host;
  TAG_VNDORVEXGlobals context{};

 private:
  std::string current() const {
    return {reinterpret_cast<const char*>(context.tokenBufStart),
            reinterpret_cast<const char*>(context.tokenCursor)};
  }

  GuardedBuffer buffer_;
};

constexpr std::uint32_t kLarge = 1 << 20;

TEST(WritePrologue, Writes51ConstantBytes) {
  Writer writer(kLarge);
  writePrologue(&writer.context);
  const std::string expected =
      "\x0F\x0D\x00\x00\x00\x00\x00\x00\x00\x0A\x00\x00\x00"
      "\x10\x26\x00\x00\x00\x02\xD0\x2F\x00\x00\xE0\x3D\x00\x00\xA0\x05\x00\x00\xA0\x05\x00\x00"
      "\xA0\x05\x00\x00\xA0\x05\x00\x00\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s;
  EXPECT_EQ(expected.size(), 51U);
  EXPECT_EQ(writer.stream(), expected);
  EXPECT_EQ(prologue(), expected);  // what the other tests compare with
}

TEST(WritePrologue, DoesNotTestTheSizeOfTheBuffer) {
  Writer writer(10);
  writePrologue(&writer.context);
  EXPECT_EQ(writer.buffers(), std::vector<std::string>{prologue()});
}

TEST(WriteToOutput, WritesTheNineteenBytesOfTheExample) {
  Writer writer(kLarge);
  writeToOutput(&writer.context, "Hello");
  EXPECT_EQ(writer.stream(), "\x00\x0E\x00\x00\x00\x05\x00\x00\x00Hello\x0E\x05\x00\x00\x00"s);
}

TEST(WriteToOutput, WritesNothingForAnEmptyText) {
  Writer writer(kLarge);
  writeToOutput(&writer.context, "");
  EXPECT_EQ(writer.stream(), "");
}

TEST(WriteToOutput, RefusesANullContext) {
  try {
    writeToOutput(nullptr, "");
    FAIL() << "nothing thrown";
  } catch (const vn::except::general_error& error) {
    EXPECT_EQ(error.code(), 6);
  }
}

TEST(WriteToOutput, WritesBytesAsTheyArrive) {
  Writer writer(kLarge);
  const std::string text = "\0\x01\xFF\xE2\x80"s;
  writeToOutput(&writer.context, text);
  EXPECT_EQ(writer.stream(), textTokens(text));
}

TEST(WriteToOutput, CutsATextIntoPiecesOf4096Bytes) {
  for (const std::size_t size : {1U, 4083U, 4084U, 4096U, 4097U, 8192U, 8193U, 100000U}) {
    Writer writer(kLarge);
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>('a' + i % 26);
    writeToOutput(&writer.context, text);
    EXPECT_EQ(writer.stream(), textTokens(text)) << size;
  }
}

TEST(WriteToOutput, WritesATextOf4083Or4084BytesAsOneToken) {
  for (const std::size_t size : {4083U, 4084U}) {
    Writer writer(kLarge);
    writeToOutput(&writer.context, std::string(size, 'x'));
    const auto tokens = decodeTokens(writer.stream());
    ASSERT_EQ(tokens->size(), 2U);
    EXPECT_EQ((*tokens)[0].payload.size(), size);
    EXPECT_EQ(writer.stream().size(), size + 14);
  }
}

TEST(WriteToOutput, WritesATextOf4097BytesAsTwoTokens) {
  Writer writer(kLarge);
  writeToOutput(&writer.context, std::string(4097, 'x'));
  const auto tokens = decodeTokens(writer.stream());
  ASSERT_EQ(tokens->size(), 3U);
  EXPECT_EQ((*tokens)[0].payload.size(), 4096U);
  EXPECT_EQ((*tokens)[1].payload.size(), 1U);
  EXPECT_EQ((*tokens)[2].type, kBreakToken);
}

TEST(WriteToOutput, WritesNoEmptyPieceBehindATextThatEndsWithOne) {
  Writer writer(kLarge);
  writeToOutput(&writer.context, std::string(8192, 'x'));
  EXPECT_EQ(decodeTokens(writer.stream())->size(), 3U);
}

TEST(WriteToOutput, CutsInsideACharacter) {
  Writer writer(kLarge);
  writeToOutput(&writer.context, std::string(4095, 'x') + "\xE2\x80\xA6");
  const auto tokens = decodeTokens(writer.stream());
  EXPECT_EQ((*tokens)[0].payload.back(), '\xE2');
  EXPECT_EQ((*tokens)[1].payload, "\x80\xA6");
  EXPECT_EQ(textsOf(*tokens)[0], std::string(4095, 'x') + "\xE2\x80\xA6");
}

TEST(WriteToOutput, OpensAnOverflowBufferBehindThePrologue) {
  Writer writer(100);
  writePrologue(&writer.context);
  writeToOutput(&writer.context, std::string(90, 'x'));
  EXPECT_EQ(writer.context.firstBufferBytes, 51);
  EXPECT_EQ(writer.buffers(),
            (std::vector<std::string>{prologue(), textTokens(std::string(90, 'x'))}));
}

TEST(WriteToOutput, TestsAShortTextForOneByteLessThanItWrites) {
  Writer exact(100);
  writeToOutput(&exact.context, std::string(87, 'x'));  // 87 + 13 fits, 101 bytes are written
  EXPECT_EQ(exact.buffers().size(), 1U);
  EXPECT_EQ(exact.stream().size(), 101U);
  Writer larger(100);
  writeToOutput(&larger.context, std::string(88, 'x'));
  EXPECT_EQ(larger.buffers().size(), 2U);
  EXPECT_EQ(larger.context.firstBufferBytes, 0);
}

TEST(WriteToOutput, TestsTheFirstPieceForTheWholeText) {
  Writer writer(5000);
  writeToOutput(&writer.context, std::string(5000, 'x'));
  // 5013 bytes do not fit, so the first piece opens a buffer, although it alone
  // would fit; the second piece of 904 bytes asks again.
  const auto buffers = writer.buffers();
  ASSERT_EQ(buffers.size(), 3U);
  EXPECT_EQ(buffers[0], "");
  EXPECT_EQ(decodeTokens(buffers[1])->size(), 1U);
  EXPECT_EQ(decodeTokens(buffers[2])->size(), 2U);
}

TEST(WriteToOutput, TestsALaterPieceForItsTextAlone) {
  // The second piece has 10 bytes; exactly 10 are free behind the first one.
  const std::uint32_t size = 4096 + 9 + 10;
  Writer writer(size);
  writeToOutput(&writer.context, std::string(4096 + 10, 'x'));
  const auto buffers = writer.buffers();
  ASSERT_EQ(buffers.size(), 2U);  // the first piece opened one for 4119 bytes
  EXPECT_EQ(buffers[1].size(), size + 9 + 5);
}

TEST(WriteToOutput, NeverFillsABufferBeyondItsBound) {
  for (const std::uint32_t size :
       {51U, 60U, 100U, 1000U, 4095U, 4096U, 4097U, 4110U, 9000U, 65536U}) {
    Writer writer(size);
    writePrologue(&writer.context);
    std::string expected = prologue();
    for (std::size_t length = 1; length < 20000; length = length * 5 / 4 + 1) {
      writeToOutput(&writer.context, std::string(length, 'x'));
      expected += textTokens(std::string(length, 'x'));
    }
    for (const std::string& buffer : writer.buffers()) {
      EXPECT_LE(buffer.size(), std::max(size + 14, 4110U));
      EXPECT_TRUE(decodeTokens(buffer).has_value());
    }
    EXPECT_EQ(writer.stream(), expected);
  }
}

TEST(WriteToOutput, RaisesAGeneralErrorWhereNoBufferCanBeHad) {
  for (const int call : {1, 2}) {
    Writer writer(100);
    writePrologue(&writer.context);
    writer.host.failAt(Slot::kAlloc, call);
    EXPECT_THROW(writeToOutput(&writer.context, std::string(90, 'x')), vn::except::general_error);
    EXPECT_EQ(writer.context.overflowHead, nullptr);
    EXPECT_EQ(writer.host.liveBlocks(), 0U);
  }
}

TEST(WriteToOutput, KeepsThePiecesBeforeAFailure) {
  Writer writer(60);
  writer.host.failAt(Slot::kAlloc, 3);
  EXPECT_THROW(writeToOutput(&writer.context, std::string(5000, 'x')), vn::except::general_error);
  EXPECT_EQ(decodeTokens(writer.stream())->size(), 1U);
}

}  // namespace
