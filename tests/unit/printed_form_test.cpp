#include "Tools/formats/vniwork13/printed_form.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "TSCHArchives.Common.pb.h"
#include "TSPArchiveMessages.pb.h"
#include "TSPMessages.pb.h"
#include "TSSArchives.pb.h"
#include "TSTArchives.pb.h"
#include "TSWPArchives.pb.h"
#include "support/wire_writer.h"

namespace vn::iwork13 {
namespace {

using dorvex::testing::Wire;
using std::string_literals::operator""s;

std::string print(const google::protobuf::Message& message) { return printMessage(message); }

std::string escaped(std::string_view value) {
  std::string printed = "before|";
  appendEscaped(value, printed);
  EXPECT_TRUE(printed.starts_with("before|"));
  return printed.substr(7);
}

template <typename Message>
Message parsed(const Wire& wire) {
  Message message;
  EXPECT_TRUE(message.ParsePartialFromString(wire.str()));
  return message;
}

std::string printText(const std::string& value) {
  TSWP::StorageArchive storage;
  storage.add_text(value);
  return print(storage);
}

std::string printBytes(const std::string& value) {
  TST::TileRowInfo row;
  row.set_cell_offsets(value);
  return print(row);
}

// The five properties.

TEST(PrintedForm, PutsEachFieldOnALineOfItsOwn) {
  TSP::Reference reference;
  reference.set_identifier(12);
  reference.set_deprecated_type(-3);
  reference.set_deprecated_is_external(true);
  EXPECT_EQ(print(reference),
            "identifier: 12\ndeprecated_type: -3\ndeprecated_is_external: true\n");
}

TEST(PrintedForm, PrintsNothingForAnEmptyMessage) { EXPECT_EQ(print(TSP::Reference()), ""); }

TEST(PrintedForm, IndentsByTwoBlanksForEachLevel) {
  TST::TableDataList list;
  auto* entry = list.add_entries();
  entry->set_key(1);
  entry->set_string("two levels");
  entry->mutable_reference()->set_identifier(3);
  EXPECT_EQ(
      print(list),
      "entries {\n  key: 1\n  string: \"two levels\"\n  reference {\n    identifier: 3\n  }\n}\n");
}

TEST(PrintedForm, PrintsANestedMessageInlineAndAnEmptyOneToo) {
  TST::TableDataList list;
  list.add_entries();
  EXPECT_EQ(print(list), "entries {\n}\n");
}

TEST(PrintedForm, PrintsARepeatedFieldAsOneLineForEachElementInOrder) {
  TSWP::StorageArchive storage;
  for (const char* text : {"b", "a", "c"}) storage.add_text(text);
  EXPECT_EQ(print(storage), "text: \"b\"\ntext: \"a\"\ntext: \"c\"\n");
  TSP::MessageInfo info;
  for (const unsigned version : {1U, 0U, 5U}) info.add_version(version);
  EXPECT_EQ(print(info), "version: 1\nversion: 0\nversion: 5\n");
}

TEST(PrintedForm, PrintsFieldsInAscendingNumberWhateverTheirOrderInTheBytes) {
  const auto entry =
      parsed<TST::TableDataList_ListEntry>(Wire().bytes(3, "text").varint(2, 9).varint(1, 5));
  EXPECT_EQ(print(entry), "key: 5\nrefcount: 9\nstring: \"text\"\n");
}

TEST(PrintedForm, PutsTheNameOfAnExtensionInBrackets) {
  std::vector<const google::protobuf::FieldDescriptor*> extensions;
  google::protobuf::DescriptorPool::generated_pool()->FindAllExtensions(
      TSS::ThemeArchive::descriptor(), &extensions);
  ASSERT_FALSE(extensions.empty());
  TSS::ThemeArchive theme;
  theme.GetReflection()->MutableMessage(&theme, extensions[0]);
  EXPECT_EQ(print(theme), "[" + extensions[0]->full_name() + "] {\n}\n");
}

TEST(PrintedForm, PrintsAnUnknownFieldByItsNumber) {
  const auto reference = parsed<TSP::Reference>(Wire()
                                                    .varint(1, 12)
                                                    .varint(100, 7)
                                                    .fixed32(101, 8)
                                                    .fixed64(102, 9)
                                                    .bytes(103, "\xFFstring")
                                                    .group(104, Wire().varint(1, 1)));
  EXPECT_EQ(print(reference),
            "identifier: 12\n100: 7\n101: 0x00000008\n102: 0x0000000000000009\n103: "
            "\"\\377string\"\n104 {\n  1: 1\n}\n");
}

TEST(PrintedForm, KeepsTheOctalEscapesOfUnknownFields) {
  const auto reference =
      parsed<TSP::Reference>(Wire().bytes(100, "\xE2\x80\x99 it's\n\"q\"\\\x7F\x01"));
  EXPECT_EQ(print(reference), "100: \"\\342\\200\\231 it\\'s\\n\\\"q\\\"\\\\\\177\\001\"\n");
}

TEST(PrintedForm, PrintsAnUnknownFieldThatLooksLikeAMessageAsOne) {
  const auto reference =
      parsed<TSP::Reference>(Wire().message(100, Wire().varint(1, 5).bytes(2, "\xFFx")));
  EXPECT_EQ(print(reference), "100 {\n  1: 5\n  2: \"\\377x\"\n}\n");
}

TEST(PrintedForm, PrintsAnUnknownValueAsAMessageAtAnyDepth) {
  constexpr std::size_t kLevels = 3000;
  std::string value = Wire().varint(1, 5).str();
  for (std::size_t level = 1; level < kLevels; ++level) value = Wire().bytes(1, value).str();
  std::string expected;
  const auto indent = [](std::size_t level) { return std::string(2 * level, ' '); };
  expected += "100 {\n";
  for (std::size_t level = 1; level < kLevels; ++level) expected += indent(level) + "1 {\n";
  expected += indent(kLevels) + "1: 5\n";
  for (std::size_t level = kLevels; level-- > 0;) expected += indent(level) + "}\n";
  EXPECT_TRUE(print(parsed<TSP::Reference>(Wire().bytes(100, value))) == expected);
}

TEST(PrintedForm, TakesOnlyWhatIsAMessageToItsExactEndForOne) {
  const auto printed = [](const std::string& value) {
    return print(parsed<TSP::Reference>(Wire().bytes(100, value)));
  };
  EXPECT_EQ(printed("\x02\x01"
                    "a"),
            "100 {\n  0: \"a\"\n}\n");
  EXPECT_EQ(printed("\x03\x08\x05\x04"), "100 {\n  0 {\n    1: 5\n  }\n}\n");
  EXPECT_EQ(printed(""), "100: \"\"\n");
  EXPECT_EQ(printed("\x08\x05\x00"s), "100: \"\\010\\005\\000\"\n");  // a zero tag
  EXPECT_EQ(printed("\x08\x05\x0C"), "100: \"\\010\\005\\014\"\n");   // the end of no group
  EXPECT_EQ(printed("\x0B\x14"), "100: \"\\013\\024\"\n");            // of another one
  EXPECT_EQ(printed("\x0B\x08\x05"), "100: \"\\013\\010\\005\"\n");   // no end of a group
  EXPECT_EQ(printed("\x0E\x05"), "100: \"\\016\\005\"\n");            // no wire type
  EXPECT_EQ(printed("\x0A\x05"
                    "abc"),
            "100: \"\\n\\005abc\"\n");  // cut off
  EXPECT_EQ(printed("\x0D"
                    "abcd\x11"
                    "efghijkl"),
            "100 {\n  1: 0x64636261\n  2: 0x6c6b6a6968676665\n}\n");
  const std::string groups = std::string(100, '\x0B') + std::string(100, '\x0C');
  EXPECT_TRUE(printed(groups).starts_with("100 {\n  1 {\n"));
  EXPECT_TRUE(printed("\x0B" + groups + "\x0C").starts_with("100: \"\\013"));
}

TEST(PrintedForm, GivesAFloatSixDigitsOrEight) {
  const auto printed = [](float value) {
    TSP::Point point;
    point.set_x(value);
    return print(point);
  };
  EXPECT_EQ(printed(0.1F), "x: 0.1\n");
  EXPECT_EQ(printed(1342450.25F), "x: 1342450.2\n");
  EXPECT_EQ(printed(16777216.0F), "x: 16777216\n");
  EXPECT_EQ(printed(1e20F), "x: 1e+20\n");
  EXPECT_EQ(printed(-0.0F), "x: -0\n");
  EXPECT_EQ(printed(1e-45F), "x: 1.4012985e-45\n");
  EXPECT_EQ(printed(std::numeric_limits<float>::infinity()), "x: inf\n");
  EXPECT_EQ(printed(-std::numeric_limits<float>::infinity()), "x: -inf\n");
  EXPECT_EQ(printed(-std::numeric_limits<float>::quiet_NaN()), "x: nan\n");
}

TEST(PrintedForm, GivesADoubleFifteenDigitsOrSeventeen) {
  const auto printed = [](double value) {
    TSP::Date date;
    date.set_seconds(value);
    return print(date);
  };
  EXPECT_TRUE(printed(0.1).ends_with(": 0.1\n"));
  EXPECT_TRUE(printed(1.0 / 3).ends_with(": 0.33333333333333331\n"));
  EXPECT_TRUE(printed(5e-324).ends_with(": 4.94065645841247e-324\n"));
}

TEST(PrintedForm, KeepsEveryQuotedValueOnOneLineWithNoBareQuoteInside) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  for (const std::string& printed : {printText(all), printBytes(all)}) {
    EXPECT_EQ(printed.find('\n'), printed.size() - 1);
    const std::size_t opening = printed.find('"');
    EXPECT_EQ(printed.substr(printed.size() - 2), "\"\n");
    for (std::size_t i = opening + 1; i < printed.size() - 2; ++i) {
      if (printed[i] == '"') {
        EXPECT_EQ(printed[i - 1], '\\');
      }
    }
  }
}

// The rows of the escape table.

TEST(EscapeTable, PrintsALineFeedAsBackslashN) { EXPECT_EQ(escaped("\n"), "\\n"); }
TEST(EscapeTable, PrintsACarriageReturnAsBackslashR) { EXPECT_EQ(escaped("\r"), "\\r"); }
TEST(EscapeTable, PrintsATabAsBackslashT) { EXPECT_EQ(escaped("\t"), "\\t"); }
TEST(EscapeTable, PrintsADoubleQuoteBehindABackslash) { EXPECT_EQ(escaped("\""), "\\\""); }
TEST(EscapeTable, PrintsAnApostropheBehindABackslash) { EXPECT_EQ(escaped("'"), "\\'"); }
TEST(EscapeTable, PrintsABackslashAsTwo) { EXPECT_EQ(escaped("\\"), "\\\\"); }

TEST(EscapeTable, PrintsOtherControlBytesAsThreeOctalDigits) {
  EXPECT_EQ(escaped("\0"s), "\\000");
  EXPECT_EQ(escaped("\x01"), "\\001");
  EXPECT_EQ(escaped("\x08"), "\\010");
  EXPECT_EQ(escaped("\x0B"), "\\013");
  EXPECT_EQ(escaped("\x0C"), "\\014");
  EXPECT_EQ(escaped("\x0E"), "\\016");
  EXPECT_EQ(escaped("\x1F"), "\\037");
  EXPECT_EQ(escaped("\x7F"), "\\177");
  EXPECT_EQ(escaped("\x01"
                    "23"),
            "\\00123");  // digits behind do not run in
}

TEST(EscapeTable, LeavesBytesFrom0x80OnAsTheyAre) {
  for (int byte = 0x80; byte < 0x100; ++byte) {
    const std::string value(1, static_cast<char>(byte));
    EXPECT_EQ(escaped(value), value);
  }
  EXPECT_EQ(escaped("\xE2\x80\x9Cquoted\xE2\x80\x9D \xF0\x9F\x8D\xB5 \xEF\xBF\xBC"),
            "\xE2\x80\x9Cquoted\xE2\x80\x9D \xF0\x9F\x8D\xB5 \xEF\xBF\xBC");
}

TEST(EscapeTable, LeavesAllOtherBytesAsTheyAre) {
  for (int byte = 0x20; byte < 0x7F; ++byte) {
    const std::string value(1, static_cast<char>(byte));
    if (std::string("\"'\\").find(value) != std::string::npos) continue;
    EXPECT_EQ(escaped(value), value);
  }
  EXPECT_EQ(escaped(""), "");
}

TEST(EscapeTable, HoldsForStringAndBytesFieldsAlike) {
  const std::string value = "\xE2\x80\x99 it's\n\"q\"\\\x7F\x01\xFF\xFE";
  EXPECT_EQ(printText(value), "text: \"" + escaped(value) + "\"\n");
  EXPECT_EQ(printBytes(value), "cell_offsets: \"" + escaped(value) + "\"\n");
}

TEST(PrintedForm, PrintsWhatIsSetOfAMessageWithoutItsRequiredFields) {
  TSP::Reference reference;
  reference.set_deprecated_type(1);
  EXPECT_EQ(print(reference), "deprecated_type: 1\n");
}

TEST(PrintedForm, PrintsAnEnumByName) {
  TST::TableDataList list;
  list.set_listtype(TST::TableDataList_ListType_STRING);
  EXPECT_EQ(print(list), "listType: STRING\n");
}

TEST(PrintedForm, DoesNotFoldLongStrings) {
  const std::string longText(100000, 'x');
  EXPECT_EQ(printText(longText), "text: \"" + longText + "\"\n");
}

}  // namespace
}  // namespace vn::iwork13
