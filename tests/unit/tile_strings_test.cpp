#include "Tools/formats/vniwork13/tile_strings.h"

#include <gtest/gtest.h>

#include <bit>
#include <list>
#include <string>
#include <vector>

#include "TSTArchives.pb.h"
#include "Tools/formats/vniwork13/iwa_utils.h"
#include "support/wire_writer.h"

namespace vn::iwork13 {
namespace {

using dorvex::testing::encodeLittleEndian;
using std::string_literals::operator""s;

using Row = std::list<std::string>;
using Rows = std::list<Row>;

// A cell record: type and flags, filled up to the value's position, then the value.
std::string cell(unsigned char type, std::uint32_t flags, std::size_t position = 0,
                 const std::string& value = "") {
  std::string record = "\4\0"s + static_cast<char>(type) + '\0' + encodeLittleEndian(flags, 4);
  if (!value.empty()) record.resize(position, '\xEE');
  return record + value;
}

std::string key(std::uint32_t number) { return encodeLittleEndian(number, 4); }
std::string number(double value) {
  return encodeLittleEndian(std::bit_cast<std::uint64_t>(value), 8);
}

// A full offset table with some columns set.
std::string offsets(const std::vector<std::pair<std::size_t, int>>& columns) {
  std::string table(510, '\xFF');
  for (const auto& [column, offset] : columns)
    table.replace(2 * column, 2, encodeLittleEndian(static_cast<std::uint64_t>(offset), 2));
  return table;
}

struct TileBuilder {
  explicit TileBuilder(std::uint32_t maxColumn) { tile.set_maxcolumn(maxColumn); }

  TileBuilder& row(const std::string& table, const std::string& storage) {
    TST::TileRowInfo& info = *tile.add_rowinfos();
    info.set_tile_row_index(77);  // places nothing
    info.set_cell_offsets_pre_bnc(table);
    info.set_cell_storage_buffer_pre_bnc(storage);
    info.set_cell_offsets("newer");
    info.set_cell_storage_buffer("newer");
    return *this;
  }

  TST::Tile tile;
};

TST::TableDataList listOf(const std::vector<std::pair<std::uint32_t, std::string>>& strings) {
  TST::TableDataList list;
  for (const auto& [entryKey, text] : strings) {
    auto* entry = list.add_entries();
    entry->set_key(entryKey);
    entry->set_string(text);
  }
  return list;
}

// The text of the only cell of a tile.
std::string textOf(const std::string& record, const TST::TableDataList* list = nullptr) {
  const TileBuilder builder = TileBuilder(0).row(offsets({{0, 0}}), record);
  return getTileStrings(&builder.tile, list).front().front();
}

// ---------------------------------------------------------------------------

TEST(UnescapeListString, CopiesWhatIsNoEscape) {
  for (const std::string text :
       {"", "plain", "\\", "a\\", "\\12", "\\n", "\\t", "\\x41", "\\777", "\\1a2"})
    EXPECT_EQ(unescapeListString(text), text);
}

TEST(UnescapeListString, TurnsTwoBackslashesIntoOne) {
  EXPECT_EQ(unescapeListString("a\\\\b"), "a\\b");
  EXPECT_EQ(unescapeListString("\\\\101"), "\\101");
  EXPECT_EQ(unescapeListString("\\\\\\"), "\\\\");
}

TEST(UnescapeListString, TurnsThreeDigitsIntoTheByte) {
  EXPECT_EQ(unescapeListString("\\101"), "A");
  EXPECT_EQ(unescapeListString("\\342\\200\\246"), "\xE2\x80\xA6");
  EXPECT_EQ(unescapeListString("\\377"), "\xFF");
  EXPECT_EQ(unescapeListString("\\400"), "\\400");
  EXPECT_EQ(unescapeListString("\\1012"), "A2");
}

TEST(UnescapeListString, ParsesDecimalDigitsAsOctalUpToAnEightOrNine) {
  EXPECT_EQ(unescapeListString("\\189x"), "\1x");
  EXPECT_EQ(unescapeListString("\\899"), "\0"s);
}

TEST(ReplaceAllLFsAndTabsOfTiles, TurnsBackslashNIntoALineFeed) {
  std::string value = "a\\nb\\n";
  replaceAllLFsAndTabs(value);
  EXPECT_EQ(value, "a\nb\n");
}

TEST(ReplaceAllLFsAndTabsOfTiles, LeavesTheTOfATabAndDropsTheByteBehindIt) {
  const std::pair<std::string, std::string> cases[] = {
      {"a\\tbc", "atc"}, {"a\\t", "at"}, {"\\t\\n", "tn"}, {"\\t\\\\n", "t\n"}, {"\\tx\\ty", "tt"}};
  for (const auto& [printed, expected] : cases) {
    std::string value = printed;
    replaceAllLFsAndTabs(value);
    EXPECT_EQ(value, expected);
  }
}

TEST(ReplaceAllLFsAndTabsOfTiles, LeavesOtherValuesAlone) {
  for (const std::string text : {"", "\\", "plain", "\\r", "\\\\"}) {
    std::string value = text;
    replaceAllLFsAndTabs(value);
    EXPECT_EQ(value, text);
  }
}

// ---------------------------------------------------------------------------

TEST(GetNumericCellValue, FindsTheNumberByTheWholeFlagsWord) {
  const std::pair<std::uint32_t, std::size_t> positions[] = {
      {0x24, 16}, {0x26, 20}, {0x2C, 20}, {0xA4, 20}, {0xA6, 24}};
  for (const auto& [flags, position] : positions)
    EXPECT_EQ(getNumericCellValue(cell(2, flags, position, number(2.5))), "2.5");
  for (const std::uint32_t flags : {0U, 0x14U, 0x25U, 0x10024U, 0xFFFFFFFFU})
    EXPECT_EQ(getNumericCellValue(cell(2, flags, 16, number(2.5) + number(2.5) + number(2.5))), "");
}

TEST(GetNumericCellValue, PrintsSixSignificantDigits) {
  const std::pair<double, std::string> numbers[] = {{2.5, "2.5"},         {1234567, "1.23457e+06"},
                                                    {100000, "100000"},   {1000000, "1e+06"},
                                                    {-0.0001, "-0.0001"}, {0, "0"}};
  for (const auto& [value, text] : numbers)
    EXPECT_EQ(getNumericCellValue(cell(2, 0x24, 16, number(value))), text);
}

TEST(GetNumericCellValue, NeedsRoomForTheNumber) {
  const std::string record = cell(2, 0x24, 16, number(2.5));
  EXPECT_EQ(record.size(), 24U);
  EXPECT_EQ(getNumericCellValue(record), "2.5");
  EXPECT_EQ(getNumericCellValue(record.substr(0, 23)), "");
  EXPECT_EQ(getNumericCellValue(record.substr(0, 16)), "");
  EXPECT_EQ(getNumericCellValue(""), "");
  EXPECT_EQ(getNumericCellValue("\4\0\2\0\x24"s), "");
}

// ---------------------------------------------------------------------------

TEST(GetTileStrings, GivesNothingForATileWithoutRows) {
  const TST::Tile tile;
  EXPECT_TRUE(getTileStrings(&tile, nullptr).empty());
}

TEST(GetTileStrings, GivesEachRowAsManyStringsAsTheMaxColumnSays) {
  const std::pair<std::uint32_t, std::size_t> sizes[] = {
      {0, 1},     {1, 2},        {253, 254},        {254, 255},
      {255, 255}, {100000, 255}, {0xFFFFFFFE, 255}, {0xFFFFFFFF, 0}};
  for (const auto& [maxColumn, size] : sizes) {
    const TileBuilder builder = TileBuilder(maxColumn).row("", "").row("", "");
    EXPECT_EQ(getTileStrings(&builder.tile, nullptr), (Rows{Row(size), Row(size)}));
  }
}

TEST(GetTileStrings, CutsACellAtTheNextPresentOne) {
  const TST::TableDataList list = listOf({{1, "first"}, {4, "last"}});
  const std::string first = cell(3, 0x14, 16, key(1));
  const std::string last = cell(3, 0x14, 16, key(4));
  const TileBuilder builder =
      TileBuilder(4).row(offsets({{0, 0}, {3, static_cast<int>(first.size())}}), first + last);
  EXPECT_EQ(getTileStrings(&builder.tile, &list), (Rows{{"first", "", "", "last", ""}}));
}

TEST(GetTileStrings, CutsACellAtAColumnBeyondTheMaxColumnToo) {
  const TST::TableDataList list = listOf({{0, "zero"}, {1, "one"}});
  const std::string record = cell(3, 0x14, 16, key(1));
  const auto textBefore = [&](int offset) {
    const TileBuilder builder = TileBuilder(0).row(offsets({{0, 0}, {254, offset}}), record);
    return getTileStrings(&builder.tile, &list);
  };
  EXPECT_EQ(textBefore(20), (Rows{{"one"}}));
  EXPECT_EQ(textBefore(19), (Rows{{"zero"}}));  // no room for the key
  // A negative offset there makes the length huge, and is itself not looked at.
  EXPECT_EQ(textBefore(0x8000), (Rows{{"one"}}));
}

TEST(GetTileStrings, GivesACellOfNoBytesNoText) {
  const TST::TableDataList list = listOf({{0, "under key 0"}});
  const TileBuilder builder = TileBuilder(1).row(offsets({{0, 0}, {1, 0}}), cell(3, 0x24));
  // A missing type reads as 0, missing flags as 0: the key is 0.
  EXPECT_EQ(getTileStrings(&builder.tile, &list), (Rows{{"under key 0", "under key 0"}}));
  EXPECT_EQ(getTileStrings(&builder.tile, nullptr), (Rows{{"", ""}}));
}

TEST(GetTileStrings, RunsACellToTheEndWhereOffsetsFall) {
  const TST::TableDataList list = listOf({{1, "one"}, {2, "two"}});
  const std::string low = cell(3, 0x14, 16, key(2));
  const std::string high = cell(3, 0x14, 16, key(1));
  const TileBuilder builder =
      TileBuilder(1).row(offsets({{0, static_cast<int>(low.size())}, {1, 0}}), low + high);
  EXPECT_EQ(getTileStrings(&builder.tile, &list), (Rows{{"one", "two"}}));
}

TEST(GetTileStrings, RunsTheLastColumnToTheEnd) {
  const TST::TableDataList list = listOf({{9, "far right"}});
  const TileBuilder builder = TileBuilder(254).row(offsets({{254, 0}}), cell(3, 0x14, 16, key(9)));
  EXPECT_EQ(getTileStrings(&builder.tile, &list).front().back(), "far right");
}

TEST(GetTileStrings, RaisesOutOfRangeForACellOutsideTheStorage) {
  for (const int offset : {9, 0x7FFF, 0x8000, 0xFFFE}) {
    const TileBuilder builder = TileBuilder(0).row(offsets({{0, offset}}), "12345678");
    try {
      getTileStrings(&builder.tile, nullptr);
      FAIL() << "offset " << offset;
    } catch (const std::out_of_range& error) {
      EXPECT_STREQ(error.what(), "basic_string::substr");
    }
  }
  const TileBuilder atTheEnd = TileBuilder(0).row(offsets({{0, 8}}), "12345678");
  EXPECT_EQ(getTileStrings(&atTheEnd.tile, nullptr), (Rows{{""}}));
}

TEST(GetTileStrings, DecodesAsManyWordsAsTheTableHasBytes) {
  const TST::TableDataList list = listOf({{1, "x"}});
  const std::string record = cell(3, 0x14, 16, key(1));
  // Two bytes give two words; the second one is missing and reads as 0xFFFF.
  const TileBuilder builder = TileBuilder(2).row("\0\0"s, record);
  EXPECT_EQ(getTileStrings(&builder.tile, &list), (Rows{{"x", "", ""}}));
  // Three bytes: of the second word the low byte is there.
  const TileBuilder odd = TileBuilder(1).row("\0\0\1"s, record);
  EXPECT_THROW(getTileStrings(&odd.tile, &list), std::out_of_range);
  // Bytes beyond 255 words are not looked at.
  const TileBuilder longer = TileBuilder(0).row(offsets({{0, 0}}) + "\0\0"s, record);
  EXPECT_EQ(getTileStrings(&longer.tile, &list), (Rows{{"x"}}));
}

TEST(GetTileStrings, FindsTheKeyByTheWholeFlagsWord) {
  const TST::TableDataList list = listOf({{0, "zero"}, {5, "five"}});
  const std::pair<std::uint32_t, std::size_t> positions[] = {
      {0x14, 16}, {0x16, 20}, {0x94, 20}, {0x96, 24}, {0x282, 20}};
  for (const auto& [flags, position] : positions) {
    EXPECT_EQ(textOf(cell(3, flags, position, key(5)), &list), "five");
    // One byte short of the key: key 0.
    EXPECT_EQ(textOf(cell(3, flags, position, "\5\0\0"s), &list), "zero");
  }
  EXPECT_EQ(textOf(cell(3, 0x15, 16, key(5)), &list), "zero");
}

TEST(GetTileStrings, GivesATextCellNoNumber) {
  EXPECT_EQ(textOf(cell(3, 0x24, 16, number(7))), "");
  const TST::TableDataList list = listOf({{0, "zero"}});
  EXPECT_EQ(textOf(cell(3, 0x24, 16, number(7)), &list), "zero");
}

TEST(GetTileStrings, FallsBackToTheNumberForTypeZero) {
  EXPECT_EQ(textOf(cell(0, 0x24, 16, number(7))), "7");
  const TST::TableDataList empty = listOf({{0, ""}});
  EXPECT_EQ(textOf(cell(0, 0x24, 16, number(7)), &empty), "7");
  const TST::TableDataList zero = listOf({{0, "zero"}});
  EXPECT_EQ(textOf(cell(0, 0x24, 16, number(7)), &zero), "zero");
  EXPECT_EQ(textOf(cell(0, 0x14, 16, key(3)), &zero), "");  // neither string nor number
  const TST::TableDataList blank = listOf({{0, "zero"}, {3, ""}});
  EXPECT_EQ(textOf(cell(0, 0x14, 16, key(3)), &blank), "");
}

TEST(GetTileStrings, GivesANumberCellNoString) {
  const TST::TableDataList list = listOf({{0, "zero"}, {5, "five"}});
  EXPECT_EQ(textOf(cell(2, 0x14, 16, key(5)), &list), "");
  EXPECT_EQ(textOf(cell(2, 0xA6, 24, number(-1.5)), &list), "-1.5");
}

TEST(GetTileStrings, GivesCellsOfOtherTypesNoText) {
  const TST::TableDataList list = listOf({{0, "zero"}});
  for (const int type : {1, 4, 5, 9, 255})
    EXPECT_EQ(textOf(cell(static_cast<unsigned char>(type), 0x24, 16, number(7)), &list), "");
}

TEST(GetTileStrings, UsesTheFirstEntryOfAKey) {
  const TST::TableDataList list = listOf({{5, "first"}, {5, "second"}});
  EXPECT_EQ(textOf(cell(3, 0x14, 16, key(5)), &list), "first");
}

TEST(GetTileStrings, LetsAnEntryWithoutStringTakeItsKey) {
  TST::TableDataList list;
  list.add_entries()->set_key(5);
  auto* second = list.add_entries();
  second->set_key(5);
  second->set_string("too late");
  EXPECT_EQ(textOf(cell(3, 0x14, 16, key(5)), &list), "");
}

TEST(GetTileStrings, TakesKeysForSignedNumbers) {
  const TST::TableDataList list = listOf({{0xFFFFFFFF, "minus one"}});
  EXPECT_EQ(textOf(cell(3, 0x14, 16, key(0xFFFFFFFF)), &list), "minus one");
}

TEST(GetTileStrings, ResolvesTheEscapesOfListStrings) {
  const std::pair<std::string, std::string> cases[] = {{"a\\\\b", "a\\b"}, {"\\101", "A"},
                                                       {"\\777", "\\777"}, {"\\12", "\\12"},
                                                       {"\\n", "\n"},      {"a\\tbc", "atc"}};
  for (const auto& [stored, expected] : cases) {
    const TST::TableDataList list = listOf({{5, stored}});
    EXPECT_EQ(textOf(cell(3, 0x14, 16, key(5)), &list), expected);
  }
}

TEST(GetTileStrings, KeepsTheRowsInTheirOrder) {
  const TileBuilder builder = TileBuilder(0)
                                  .row(offsets({{0, 0}}), cell(2, 0x24, 16, number(1)))
                                  .row("", "")
                                  .row(offsets({{0, 0}}), cell(2, 0x24, 16, number(2)));
  EXPECT_EQ(getTileStrings(&builder.tile, nullptr), (Rows{{"1"}, {""}, {"2"}}));
}

}  // namespace
}  // namespace vn::iwork13
