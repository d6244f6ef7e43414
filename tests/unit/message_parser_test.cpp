#include "Tools/formats/vniwork13/message_parser.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/io/coded_stream.h>
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>

#include "KNArchives.pb.h"
#include "TSCEArchives.pb.h"
#include "TSDArchives.pb.h"
#include "TSPArchiveMessages.pb.h"
#include "TSPMessages.pb.h"
#include "TSTArchives.pb.h"
#include "TSWPArchives.pb.h"
#include "Tools/formats/vniwork13/field_tree.h"
#include "Tools/formats/vniwork13/layout_index.h"
#include "Tools/formats/vniwork13/printed_form.h"
#include "Tools/formats/vniwork13/registered_class.h"
#include "Tools/formats/vniwork13/registry.h"
#include "support/guarded_buffer.h"
#include "support/wire_writer.h"

namespace vn::iwork13 {
namespace {

using namespace dorvex::testing;
using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::io::CodedInputStream;
using std::string_literals::operator""s;

// What a parse came to.
struct Outcome {
  bool parsed;
  int cursor;           // bytes consumed
  std::string content;  // the message in one line
  int levels;           // what is left of the hundred

  bool operator==(const Outcome&) const = default;
};

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << (outcome.parsed ? "parsed" : "failed") << " at " << outcome.cursor << ", "
       << outcome.levels << " levels left: " << outcome.content;
}

// Parses bytes under a limit that ends with them, or limit bytes on.
template <typename Parse>
Outcome outcomeOf(Parse parse, const std::string& bytes, int limit, int lostLevels) {
  GuardedBuffer buffer(bytes);
  CodedInputStream input(buffer.data(), static_cast<int>(buffer.size()));
  input.SetRecursionLimit(kRecursionLimit);
  for (int i = 0; i < lostLevels; ++i) input.IncrementRecursionDepth();
  const auto outer = input.PushLimit(limit);
  Outcome outcome{};
  outcome.parsed = parse(input, outcome.content);
  input.PopLimit(outer);
  outcome.cursor = input.CurrentPosition();
  outcome.levels = input.RecursionBudget();
  return outcome;
}

// Every way of reading a message by the rules must come to the same. What a failed
// one has read so far counts as well.
Outcome parseEveryWay(Message& message, MessageLayout layout, const std::string& bytes, int limit,
                      int lostLevels) {
  const auto intoInstance = [&](CodedInputStream& input, std::string& content) {
    const bool parsed = parseMessage(message, input);
    content = printMessage(message);
    return parsed;
  };
  const auto intoTree = [layout](CodedInputStream& input, std::string& content) {
    FieldTree tree(layout);
    const bool parsed = tree.parse(input);
    content = printMessage(tree);
    return parsed;
  };
  const auto skipping = [layout](CodedInputStream& input, std::string&) {
    return skipMessage(layout, input);
  };
  Outcome outcome = outcomeOf(intoInstance, bytes, limit, lostLevels);
  EXPECT_EQ(outcomeOf(intoTree, bytes, limit, lostLevels), outcome);
  Outcome skipped = outcomeOf(skipping, bytes, limit, lostLevels);
  skipped.content = outcome.content;
  EXPECT_EQ(skipped, outcome);
  return outcome;
}

template <typename MessageClass>
Outcome parseBoth(const std::string& bytes, int limit, int lostLevels = 0) {
  MessageClass message;
  Outcome outcome =
      parseEveryWay(message, layoutAt(kLayoutIndex<MessageClass>), bytes, limit, lostLevels);
  outcome.content = message.ShortDebugString();
  return outcome;
}

template <typename MessageClass>
Outcome parse(const std::string& bytes) {
  return parseBoth<MessageClass>(bytes, static_cast<int>(bytes.size()));
}

Outcome success(int cursor, const std::string& content, int levels = 100) {
  return {true, cursor, content, levels};
}
Outcome failure(int cursor, const std::string& content, int levels = 100) {
  return {false, cursor, content, levels};
}

const std::string kEndless(10, '\x80');  // ten bytes with the continuation bit

// ---------------------------------------------------------------------------
// Varints

TEST(MessageParser, ReadsFieldsToTheLimit) {
  EXPECT_EQ(parse<TSP::Reference>(Wire().varint(1, 12).varint(3, 1).str()),
            success(4, "identifier: 12 deprecated_is_external: true"));
  EXPECT_EQ(parseBoth<TSP::Reference>(Wire().varint(1, 12).varint(2, 3).str(), 2),
            success(2, "identifier: 12"));
  EXPECT_EQ(parse<TSP::Reference>(""), success(0, ""));
}

TEST(MessageParser, UsesTheLow32BitsOfATag) {
  const std::string tag = encodeVarint(std::uint64_t{1} << 40 | 8);
  EXPECT_EQ(parse<TSP::Reference>(tag + "\x05"),
            success(static_cast<int>(tag.size()) + 1, "identifier: 5"));
  EXPECT_EQ(parse<TSP::Reference>(encodeWideVarint(8, 10) + "\x05"), success(11, "identifier: 5"));
}

TEST(MessageParser, UsesTheLow32BitsOfALength) {
  const std::string length = encodeVarint(std::uint64_t{1} << 40 | 2);
  EXPECT_EQ(parse<TSWP::StorageArchive>("\x1A" + length + "hi"),
            success(3 + static_cast<int>(length.size()), "text: \"hi\""));
}

TEST(MessageParser, ReadsAWholeVarintOfTenBytesAsAValue) {
  EXPECT_EQ(parse<TSP::Reference>("\x08" + encodeVarint(UINT64_MAX)),
            success(11, "identifier: 18446744073709551615"));
  EXPECT_EQ(parse<TSP::Reference>("\x08" + encodeWideVarint(5, 10)), success(11, "identifier: 5"));
}

TEST(MessageParser, FailsWithoutMovingAtAValueThatDoesNotEndWithinTenBytes) {
  EXPECT_EQ(parse<TSP::Reference>("\x08" + kEndless + "\x01"), failure(1, ""));
  EXPECT_EQ(parse<TSP::Reference>("\x08" + kEndless), failure(1, ""));
}

TEST(MessageParser, FailsWithoutMovingAtALengthThatDoesNotEndWithinTenBytes) {
  EXPECT_EQ(parse<TSWP::StorageArchive>("\x1A" + kEndless + "\x01"), failure(1, ""));
}

TEST(MessageParser, EndsWithoutMovingAtATagThatDoesNotEndWithinTenBytes) {
  EXPECT_EQ(parse<TSP::Reference>("\x08\x05" + kEndless + "\x01"), success(2, "identifier: 5"));
}

TEST(MessageParser, ConsumesAVarintThatTheLimitCutsOff) {
  EXPECT_EQ(parse<TSP::Reference>("\x08\x80\x80"), failure(3, ""));
  EXPECT_EQ(parseBoth<TSP::Reference>("\x08\x80\x80\x01\x10\x07", 3), failure(3, ""));
  EXPECT_EQ(parse<TSWP::StorageArchive>("\x1A\x80"), failure(2, ""));
}

TEST(MessageParser, EndsBehindATagThatTheLimitCutsOff) {
  EXPECT_EQ(parse<TSP::Reference>("\x08\x05\x80\x80"), success(4, "identifier: 5"));
}

// ---------------------------------------------------------------------------
// The end of a message

TEST(MessageParser, EndsBehindAZeroByte) {
  EXPECT_EQ(parse<TSP::Reference>("\x08\x05\x00\x08\x06"s), success(3, "identifier: 5"));
  EXPECT_EQ(parse<TSP::Reference>("\x00"s), success(1, ""));
  EXPECT_EQ(parse<TSP::Reference>("\x80\x00\x08\x06"s), success(2, ""));  // a zero tag of two bytes
}

TEST(MessageParser, EndsBehindAnEndGroupTag) {
  EXPECT_EQ(parse<TSP::Reference>("\x08\x05\x0C\x08\x06"), success(3, "identifier: 5"));
  EXPECT_EQ(parse<TSP::Reference>("\x04\x08\x06"), success(1, ""));  // of field number 0
}

TEST(MessageParser, FailsAtAnEmbeddedMessageThatEndsBeforeItsLimit) {
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x05\x08\x01\x00\x10\x02"s),
            failure(5, "entries { key: 1 }", 99));
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x05\x08\x01\x0C\x10\x02"s),
            failure(5, "entries { key: 1 }", 99));
}

TEST(MessageParser, FailsAtAnEmbeddedMessageThatEndsByATagAtItsLimit) {
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x03\x08\x01\x00"s),
            failure(5, "entries { key: 1 }", 99));
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x03\x08\x01\x0C"s),
            failure(5, "entries { key: 1 }", 99));
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x03\x08\x01\x80"s),
            failure(5, "entries { key: 1 }", 99));
}

TEST(MessageParser, StandsWhereTheInnermostFailureStoodAndKeepsWhatItRead) {
  const std::string bytes = Wire()
                                .varint(2, 9)
                                .message(3, Wire().varint(1, 1).message(4, Wire().raw("\x08")))
                                .varint(2, 8)
                                .str();
  EXPECT_EQ(parse<TST::TableDataList>(bytes),
            failure(9, "nextListID: 9 entries { key: 1 reference { } }", 98));
}

// ---------------------------------------------------------------------------
// Lengths of embedded messages and packed fields

TEST(MessageParser, ClampsTheLengthOfAnEmbeddedMessageToTheEnclosingLimit) {
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x64\x08\x01\x10\x02"),
            success(6, "entries { key: 1 refcount: 2 }"));
  EXPECT_EQ(parseBoth<TST::TableDataList>("\x1A\x64\x08\x01\x10\x02\x10\x03", 4),
            success(4, "entries { key: 1 }"));
}

TEST(MessageParser, ClampsTheLengthOfAnEmbeddedMessageInsideAnother) {
  // The reference states 5 bytes, but the entry around it ends after 2.
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x06\x08\x01\x22\x05\x08\x07\x10\x05"),
            success(10, "nextListID: 5 entries { key: 1 reference { identifier: 7 } }"));
}

TEST(MessageParser, FailsWhereTheEnclosingLimitCutsAnEmbeddedMessageInsideAField) {
  EXPECT_EQ(parse<TST::TableDataList>("\x1A\x64\x08\x01\x10"),
            failure(5, "entries { key: 1 }", 99));
}

TEST(MessageParser, TakesANegativeLengthOfAnEmbeddedMessageForNoLimitOfItsOwn) {
  EXPECT_EQ(parse<TST::TableDataList>("\x1A" + encodeVarint(0xFFFFFFFF) + "\x08\x01"),
            success(8, "entries { key: 1 }"));
  EXPECT_EQ(parse<TST::TableDataList>("\x1A" + encodeVarint(0x80000000) + "\x08\x01"),
            success(8, "entries { key: 1 }"));
}

TEST(MessageParser, ClampsTheLengthOfAPackedField) {
  EXPECT_EQ(parse<TSP::MessageInfo>("\x12\x64\x01\x02\x03"),
            success(5, "version: 1 version: 2 version: 3"));
  EXPECT_EQ(parse<TSP::MessageInfo>("\x12" + encodeVarint(0xFFFFFFFF) + "\x01\x02"),
            success(8, "version: 1 version: 2"));
}

TEST(MessageParser, FailsAtAPackedValueThatTheLimitCutsOff) {
  EXPECT_EQ(parse<TSP::MessageInfo>("\x12\x02\x01\x80\x08\x05"), failure(4, "version: 1"));
  EXPECT_EQ(parse<TSP::MessageInfo>("\x12\x0C\x01" + kEndless + "\x01"), failure(3, "version: 1"));
}

// ---------------------------------------------------------------------------
// Values

TEST(MessageParser, ConsumesAStringThatRunsPastTheLimit) {
  EXPECT_EQ(parse<TSWP::StorageArchive>("\x1A\x05"
                                        "abc"),
            failure(5, ""));
  EXPECT_EQ(parseBoth<TSWP::StorageArchive>("\x1A\x05"
                                            "abcde",
                                            4),
            failure(4, ""));
  EXPECT_EQ(parse<TST::TileRowInfo>("\x1A\x05"
                                    "abc"),
            failure(5, ""));  // bytes
}

TEST(MessageParser, FailsBehindANegativeLengthOfAString) {
  EXPECT_EQ(parse<TSWP::StorageArchive>("\x1A" + encodeVarint(0xFFFFFFFF) + "abc"), failure(6, ""));
}

TEST(MessageParser, ConsumesAnUnknownValueThatRunsPastTheLimit) {
  const std::string tag = encodeTag(100, kLengthDelimited);
  EXPECT_EQ(parse<TSP::Reference>(tag + "\x05"
                                        "abc")
                .cursor,
            6);
  EXPECT_FALSE(parse<TSP::Reference>(tag + "\x05"
                                           "abc")
                   .parsed);
  EXPECT_EQ(parse<TSP::Reference>(tag + encodeVarint(0xFFFFFFFF) + "abc").cursor, 7);
  EXPECT_FALSE(parse<TSP::Reference>(tag + encodeVarint(0xFFFFFFFF) + "abc").parsed);
}

TEST(MessageParser, ConsumesAFixedWidthValueThatTheLimitCutsOff) {
  EXPECT_EQ(parse<TSP::Point>("\x0D\x01\x02"), failure(3, ""));
  EXPECT_EQ(parseBoth<TSP::Point>("\x0D\x01\x02\x03\x04", 4), failure(4, ""));
  EXPECT_EQ(parse<TSP::Date>("\x09\x01\x02\x03\x04\x05\x06\x07"), failure(8, ""));
  EXPECT_EQ(parse<TSP::Reference>(encodeTag(100, kFixed32) + "\x01"), failure(3, ""));
  EXPECT_EQ(parse<TSP::Reference>(encodeTag(100, kFixed64) + "\x01\x02\x03\x04"), failure(6, ""));
}

TEST(MessageParser, KeepsAKnownFieldOfAnUnexpectedWireTypeAsUnknown) {
  EXPECT_EQ(parse<TSP::Reference>(Wire().fixed32(1, 5).varint(2, 1).str()),
            success(7, "deprecated_type: 1 1: 0x00000005"));
  EXPECT_EQ(parse<TSP::Reference>(Wire().bytes(1, "\xFFx").str()), success(4, "1: \"\\377x\""));
  EXPECT_EQ(parse<TSWP::StorageArchive>(Wire().varint(3, 7).str()), success(2, "3: 7"));
  EXPECT_EQ(parse<TST::TableDataList>(Wire().varint(3, 7).str()), success(2, "3: 7"));
  EXPECT_EQ(parse<TSP::Point>(Wire().fixed64(1, 7).str()), success(9, "1: 0x0000000000000007"));
  EXPECT_EQ(parse<TST::TableDataList>(Wire().group(3, Wire().varint(1, 7)).str()),
            success(4, "3 { 1: 7 }"));
}

TEST(MessageParser, ReadsRepeatedScalarsPackedAndUnpacked) {
  // Declared packed.
  EXPECT_EQ(parse<TSP::MessageInfo>(Wire().varint(2, 1).bytes(2, "\2\3").varint(2, 4).str()),
            success(8, "version: 1 version: 2 version: 3 version: 4"));
  // Declared unpacked.
  EXPECT_EQ(parse<KN::CanvasSelectionArchive>(Wire().varint(2, 1).bytes(2, "\2\3").str()),
            success(6,
                    "database_action_ghost_indexes: 1 database_action_ghost_indexes: 2 "
                    "database_action_ghost_indexes: 3"));
}

TEST(MessageParser, ReadsAPackedFieldOfNoValues) {
  EXPECT_EQ(parse<TSP::MessageInfo>(Wire().bytes(2, "").str()), success(2, ""));
}

TEST(MessageParser, KeepsUnknownEnumValuesAsUnknownFields) {
  EXPECT_EQ(parse<TST::TableDataList>(Wire().varint(1, 77).varint(2, 5).str()),
            success(4, "nextListID: 5 1: 77"));
  EXPECT_EQ(parse<TST::TableDataList>(Wire().varint(1, UINT64_MAX).str()),
            success(11, "1: 18446744073709551615"));
  EXPECT_EQ(
      parse<TSWP::ListStyleArchive>(Wire().varint(11, 1).varint(11, 99).bytes(11, "\2\x62").str())
          .content,
      "label_types: kImage label_types: kString 11: 99 11: 98");
}

TEST(MessageParser, KeepsFieldsOfNumberZeroAsUnknown) {
  EXPECT_EQ(parse<TSP::Reference>("\x02\x01x\x08\x05"), success(5, "identifier: 5 0: \"x\""));
  EXPECT_EQ(parse<TSP::Reference>("\x05\x01\x02\x03\x04"), success(5, "0: 0x04030201"));
  EXPECT_EQ(parse<TSP::Reference>("\x01" + std::string(8, '\1')),
            success(9, "0: 0x0101010101010101"));
  EXPECT_EQ(parse<TSP::Reference>("\x03\x08\x01\x04"), success(4, "0 { 1: 1 }"));
}

TEST(MessageParser, FailsAtWireTypesSixAndSeven) {
  EXPECT_EQ(parse<TSP::Reference>("\x08\x05\x0E\x01"), failure(3, "identifier: 5"));
  EXPECT_EQ(parse<TSP::Reference>("\x08\x05\x0F\x01"), failure(3, "identifier: 5"));
  EXPECT_EQ(parse<TSP::Reference>(encodeTag(100, 6) + "\x01"), failure(2, ""));
}

TEST(MessageParser, ReadsKnownExtensions) {
  const std::string bytes = Wire().message(100, Wire()).str();
  EXPECT_EQ(parse<TSD::FillArchive>(bytes), success(3, "[TSCH.fill3d] { }"));
}

// ---------------------------------------------------------------------------
// Unknown groups

TEST(MessageParser, KeepsAGroupThatClosesWithItsOwnNumber) {
  EXPECT_EQ(parse<TSP::Reference>(
                Wire().group(100, Wire().varint(1, 5).bytes(2, "\xFF")).varint(1, 9).str()),
            success(11, "identifier: 9 100 { 1: 5 2: \"\\377\" }"));
}

TEST(MessageParser, FailsAtAGroupThatClosesWithAnotherNumberButReturnsItsLevel) {
  EXPECT_EQ(parse<TSP::Reference>("\xA3\x06\x08\x05\x0C\x08\x07"), failure(5, "100 { 1: 5 }", 100));
}

TEST(MessageParser, FailsAtAGroupThatTheLimitOrAZeroByteEnds) {
  EXPECT_EQ(parse<TSP::Reference>("\xA3\x06\x08\x05"), failure(4, "100 { 1: 5 }", 100));
  EXPECT_EQ(parse<TSP::Reference>("\xA3\x06\x08\x05\x00\xA4\x06"s),
            failure(5, "100 { 1: 5 }", 100));
}

TEST(MessageParser, LosesTheLevelOfAGroupWhoseFieldFails) {
  EXPECT_EQ(parse<TSP::Reference>("\xA3\x06\x0E"), failure(3, "100 { }", 99));
}

// ---------------------------------------------------------------------------
// Recursion

// Embedded messages, one in the other: the two classes alternate.
std::string nestedMessages(int levels, const std::string& innermost = "") {
  std::string bytes = innermost;
  for (int level = levels; level > 0; --level)
    bytes = Wire().bytes(level % 2 != 0 ? 1 : 14, bytes).str();
  return bytes;
}

std::string nestedGroups(int levels) {
  std::string bytes;
  for (int level = 0; level < levels; ++level) bytes = Wire().group(100, Wire().raw(bytes)).str();
  return bytes;
}

using Recursive = TSCE::ASTNodeArrayArchive;

TEST(MessageParser, AllowsAHundredLevelsOfEmbeddedMessages) {
  EXPECT_TRUE(parse<Recursive>(nestedMessages(100)).parsed);
  const Outcome tooDeep = parse<Recursive>(nestedMessages(101));
  EXPECT_FALSE(tooDeep.parsed);
  EXPECT_EQ(tooDeep.levels, -1);  // the failed one is not given back either
}

TEST(MessageParser, AllowsAHundredLevelsOfGroups) {
  EXPECT_TRUE(parse<TSP::Reference>(nestedGroups(100)).parsed);
  EXPECT_FALSE(parse<TSP::Reference>(nestedGroups(101)).parsed);
}

TEST(MessageParser, CountsEmbeddedMessagesAndGroupsTogether) {
  EXPECT_TRUE(parse<Recursive>(nestedMessages(60, nestedGroups(40))).parsed);
  EXPECT_FALSE(parse<Recursive>(nestedMessages(60, nestedGroups(41))).parsed);
}

TEST(MessageParser, GivesLevelsBackAfterASuccess) {
  const std::string deep = nestedMessages(100);
  EXPECT_EQ(parse<Recursive>(deep + deep).levels, 100);
}

TEST(MessageParser, HasOnlyTheLevelsThatEarlierFailuresHaveLeft) {
  const auto parseWith = [](int levels, int lost) {
    const std::string bytes = nestedMessages(levels);
    return parseBoth<Recursive>(bytes, static_cast<int>(bytes.size()), lost).parsed;
  };
  EXPECT_TRUE(parseWith(90, 10));
  EXPECT_FALSE(parseWith(91, 10));
  EXPECT_TRUE(parseWith(0, 100));
  EXPECT_FALSE(parseWith(1, 100));
}

TEST(MessageParser, AddsUpTheLevelsThatFailuresLoseOnOneStream) {
  const std::string broken = Wire().message(3, Wire().message(4, Wire().raw("\x08"))).str();
  std::string stream;
  for (int i = 0; i < 3; ++i) stream += broken;
  CodedInputStream input(reinterpret_cast<const std::uint8_t*>(stream.data()),
                         static_cast<int>(stream.size()));
  input.SetRecursionLimit(kRecursionLimit);
  for (int i = 1; i <= 3; ++i) {
    TST::TableDataList list;
    const auto outer = input.PushLimit(static_cast<int>(broken.size()));
    EXPECT_FALSE(parseMessage(list, input));
    input.PopLimit(outer);
    EXPECT_EQ(input.RecursionBudget(), 100 - 2 * i);
  }
}

// ---------------------------------------------------------------------------

TEST(MessageParser, ClearsTheMessageFirst) {
  TSP::Reference reference;
  reference.set_identifier(5);
  reference.set_deprecated_type(6);
  const std::string bytes = Wire().varint(1, 7).str();
  CodedInputStream input(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                         static_cast<int>(bytes.size()));
  EXPECT_TRUE(parseMessage(reference, input));
  EXPECT_EQ(reference.ShortDebugString(), "identifier: 7");
}

TEST(MessageParser, CountsTheLow32BitsOfABool) {
  for (const std::uint64_t value : {std::uint64_t{1} << 32, std::uint64_t{1} << 63}) {
    const std::string bytes = Wire().varint(3, value).str();
    EXPECT_EQ(parse<TSP::Reference>(bytes),
              success(static_cast<int>(bytes.size()), "deprecated_is_external: false"));
  }
  EXPECT_EQ(parse<TSP::Reference>(Wire().varint(3, std::uint64_t{1} << 31).str()),
            success(6, "deprecated_is_external: true"));
}

TEST(MessageParser, MergesASingularEmbeddedMessageThatOccursTwice) {
  const std::string bytes =
      Wire().message(4, Wire().varint(1, 1)).message(4, Wire().varint(2, 2)).str();
  EXPECT_EQ(parse<TST::TableDataList_ListEntry>(bytes),
            success(8, "reference { identifier: 1 deprecated_type: 2 }"));
}

// Random payloads: sound ones from a message's descriptor, then damaged.
class PayloadGenerator {
 public:
  explicit PayloadGenerator(unsigned seed) : random_(seed) {}

  std::string payload(const google::protobuf::Descriptor& descriptor, int depth = 0) {
    Wire wire;
    const int count = pick(depth == 0 ? 8 : 4);
    for (int i = 0; i < count; ++i) addField(descriptor, depth, wire);
    return wire.str();
  }

  std::string damage(std::string bytes) {
    for (int i = pick(3); i >= 0; --i) {
      const auto position = static_cast<std::size_t>(pick(static_cast<int>(bytes.size()) + 1));
      switch (pick(4)) {
        case 0:
          bytes.resize(position);
          break;
        case 1:
          bytes.insert(position, 1, randomByte());
          break;
        default:
          if (position < bytes.size()) bytes[position] = randomByte();
      }
    }
    return bytes;
  }

  int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(random_); }

 private:
  char randomByte() {
    constexpr char kTelling[] = {0, 1, 4, 0x0C, 0x7F, '\x80', '\xFF', 6};
    return pick(2) == 0 ? kTelling[pick(sizeof kTelling)] : static_cast<char>(pick(256));
  }

  void addField(const google::protobuf::Descriptor& descriptor, int depth, Wire& wire) {
    if (descriptor.field_count() == 0 || pick(12) == 0) {
      addUnknown(depth, wire);
      return;
    }
    const FieldDescriptor& field = *descriptor.field(pick(descriptor.field_count()));
    const auto number = static_cast<unsigned>(field.number());
    if (field.message_type() != nullptr) {
      if (depth < 6) wire.bytes(number, payload(*field.message_type(), depth + 1));
    } else if (field.cpp_type() == FieldDescriptor::CPPTYPE_STRING) {
      wire.bytes(number, std::string(static_cast<std::size_t>(pick(20)), randomByte()));
    } else if (field.is_packable() && pick(2) == 0) {
      std::string run;
      for (int i = pick(5); i > 0; --i) run += encodeVarint(static_cast<std::uint64_t>(pick(1000)));
      wire.bytes(number, run);
    } else {
      addScalar(field, wire);
    }
  }

  void addScalar(const FieldDescriptor& field, Wire& wire) {
    const auto number = static_cast<unsigned>(field.number());
    const auto value = static_cast<std::uint64_t>(pick(300)) << pick(56);
    switch (field.type()) {
      case FieldDescriptor::TYPE_FLOAT:
      case FieldDescriptor::TYPE_FIXED32:
      case FieldDescriptor::TYPE_SFIXED32:
        wire.fixed32(number, static_cast<std::uint32_t>(value));
        break;
      case FieldDescriptor::TYPE_DOUBLE:
      case FieldDescriptor::TYPE_FIXED64:
      case FieldDescriptor::TYPE_SFIXED64:
        wire.fixed64(number, value);
        break;
      default:
        wire.varint(number, pick(3) == 0 ? value : static_cast<std::uint64_t>(pick(5)));
    }
  }

  void addUnknown(int depth, Wire& wire) {
    const auto number = static_cast<unsigned>(1000 + pick(5));
    if (pick(3) == 0 && depth < 6) {
      Wire inner;
      addUnknown(depth + 1, inner);
      wire.group(number, inner);
    } else {
      wire.varint(number, static_cast<std::uint64_t>(pick(1000)));
    }
  }

  std::mt19937 random_;
};

TEST(MessageParser, ComesToTheSameEveryWayForRandomPayloads) {
  const RegistryView registry(getPagesMessage);
  std::vector<const RegisteredClass*> classes;
  for (int type = 0; type <= 12100; ++type)
    if (const RegisteredClass* found = registry.find(type)) classes.push_back(found);
  ASSERT_GT(classes.size(), 250U);
  PayloadGenerator generator(20131022);
  int failures = 0;
  constexpr int kRounds = 40000;
  for (int round = 0; round < kRounds; ++round) {
    const RegisteredClass& messageClass =
        *classes[static_cast<std::size_t>(generator.pick(static_cast<int>(classes.size())))];
    const std::unique_ptr<Message> message(messageClass.create());
    std::string payload = generator.payload(*message->GetDescriptor());
    if (round % 4 != 0) payload = generator.damage(std::move(payload));
    const int limit =
        static_cast<int>(payload.size()) + (generator.pick(4) == 0 ? generator.pick(8) - 4 : 0);
    // The payload stands in the middle of a stream.
    const std::string stream = payload +
                               "\x08\x01\x12\x00\x1A\x03"
                               "abc\x00"s;
    const Outcome outcome =
        parseEveryWay(*message, messageClass.layout(), stream, std::max(limit, 0), 0);
    ASSERT_FALSE(HasFailure()) << "round " << round << ", " << message->GetTypeName();
    if (!outcome.parsed) ++failures;
  }
  // The comparison is worth something only if both outcomes are frequent.
  EXPECT_GT(failures, kRounds / 10);
  EXPECT_LT(failures, kRounds * 9 / 10);
}

}  // namespace
}  // namespace vn::iwork13
