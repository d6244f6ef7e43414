// Headers of archives that are read in one pass against the same read by the rules.
#include "Tools/formats/vniwork13/archive_header.h"

#include <google/protobuf/io/coded_stream.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "TSPArchiveMessages.pb.h"
#include "Tools/formats/vniwork13/message_parser.h"
#include "Tools/formats/vniwork13/message_scanner.h"
#include "random_message.h"
#include "support/wire_writer.h"

namespace dorvex::testing {
namespace {

using google::protobuf::io::CodedInputStream;
using vn::iwork13::ArchiveHeader;

struct Outcome {
  bool isRead = false;
  std::uint64_t identifier = 0;
  std::vector<std::pair<int, int>> payloads;
  int position = 0;

  bool operator==(const Outcome&) const = default;
};

enum class Way { kOnePass, kByRules };

Outcome read(const std::string& header, Way way) {
  const std::string stream = header + "what follows it";
  CodedInputStream input(reinterpret_cast<const unsigned char*>(stream.data()),
                         static_cast<int>(stream.size()));
  input.SetRecursionLimit(vn::iwork13::kRecursionLimit);
  // The one pass is for headers with all levels before them.
  if (way == Way::kByRules) input.IncrementRecursionDepth();
  input.PushLimit(static_cast<int>(header.size()));
  ArchiveHeader read{7, {{8, 9}}};  // of the archive before
  vn::iwork13::MessageScanner scanner;
  Outcome outcome;
  outcome.isRead = readArchiveHeader(read, input, scanner);
  outcome.identifier = read.identifier;
  for (const auto& payload : read.payloads)
    outcome.payloads.emplace_back(payload.type, payload.length);
  outcome.position = input.CurrentPosition();
  return outcome;
}

// Where the header cannot be read, nothing of it counts but the position. Whether it can.
bool compare(const std::string& header) {
  const Outcome expected = read(header, Way::kByRules);
  const Outcome outcome = read(header, Way::kOnePass);
  EXPECT_EQ(outcome.isRead, expected.isRead) << ::testing::PrintToString(header);
  EXPECT_EQ(outcome.position, expected.position) << ::testing::PrintToString(header);
  if (expected.isRead) {
    EXPECT_EQ(outcome, expected) << ::testing::PrintToString(header);
  }
  return expected.isRead;
}

Wire info(std::uint64_t type, std::uint64_t length) {
  return Wire().varint(1, type).bytes(2, std::string_view("\1\0\5", 3)).varint(3, length);
}

TEST(ArchiveHeader, IsTheSameInOnePass) {
  RandomMessages random(11);
  const TSP::ArchiveInfo prototype;
  int sound = 0;
  int damaged = 0;
  constexpr int kRounds = 20'000;
  for (int round = 0; round < kRounds; ++round) {
    sound += compare(random.payload(prototype)) ? 1 : 0;
    damaged += compare(random.damagedPayload(prototype)) ? 0 : 1;
  }
  // The comparison means something only if there are many of both.
  EXPECT_GT(sound, kRounds / 2);
  EXPECT_GT(damaged, kRounds / 8);
}

TEST(ArchiveHeader, TakesTheLastValueOfAField) {
  const std::string header = Wire()
                                 .varint(1, 5)
                                 .message(2, info(2001, 3).varint(1, 2022).varint(3, 1U << 31U))
                                 .message(2, info(6005, 77))
                                 .varint(1, 600)
                                 .str();
  const Outcome expected{
      true, 600, {{2022, -2147483647 - 1}, {6005, 77}}, static_cast<int>(header.size())};
  EXPECT_EQ(read(header, Way::kOnePass), expected);
  EXPECT_EQ(read(header, Way::kByRules), expected);
}

TEST(ArchiveHeader, IsTheSameInOnePassWhereItIsOdd) {
  const Wire sound = Wire().varint(1, 5).message(2, info(2001, 3));
  const std::string longVarint = encodeTag(1, kVarint) + std::string(9, '\x80') + '\1';
  const std::string tooLong = encodeTag(1, kVarint) + std::string(10, '\x80') + '\1';
  const std::string continued(10, '\xFF');
  for (const std::string& odd : {
           std::string(),
           std::string(1, '\0'),
           encodeTag(3, kEndGroup),
           std::string("\x01\x00", 2),  // a field of number 0
           longVarint,
           tooLong,
           encodeTag(1, kVarint),
           encodeWideVarint(1U << 3U, 10) + '\7',                               // a wide tag
           encodeTag(2, kLengthDelimited) + encodeWideVarint(2, 9) + "\x08\7",  // a wide length
           encodeTag(2, kLengthDelimited) + "\x7F",
           Wire().group(9, Wire().varint(1, 1)).str(),
           Wire().bytes(1, "an identifier of another type").str(),
           Wire().varint(2, 3).str(),
           Wire().fixed32(1, 3).fixed64(3, 4).str(),
           Wire().bytes(9, "unknown text: ").str(),
           Wire().message(2, Wire().bytes(5, continued)).str(),         // an endless reference
           Wire().message(2, Wire().bytes(5, continued + "\1")).str(),  // one of eleven bytes
           Wire().message(2, Wire().bytes(5, std::string(9, '\xFF') + "\1\1")).str(),
           Wire().message(2, Wire().bytes(6, "\1\2\3\4\5\6\7\x88\1\1")).str(),
           Wire().message(2, Wire().message(4, Wire().message(1, Wire().bytes(1, "\1\2")))).str(),
           Wire().message(2, Wire().message(4, Wire().raw("\x0A\x7F"))).str(),
           Wire().message(2, Wire().raw(std::string(1, '\0'))).str(),
       }) {
    compare(odd);
    compare(sound.str() + odd);
    compare(odd + sound.str());
    compare(Wire().message(2, info(1, 2).raw(odd)).str());
  }
}

}  // namespace
}  // namespace dorvex::testing
