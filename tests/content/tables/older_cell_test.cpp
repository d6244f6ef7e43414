#include <gtest/gtest.h>

#include "cells.h"
#include "tables/cell_record.h"

namespace dorvex::content::older_cell_test {
namespace {

using testing::little32;
using testing::little64;
using testing::olderCell;

TEST(OlderCell, ReadsTheFieldsInTheirOwnOrder) {
  // Styles, conditional style and rule, format, formula, error, rich text, comment,
  // warning, string, number, date.
  std::string fields;
  for (std::uint32_t key = 1; key <= 11; ++key) fields += little32(key);
  fields += little64(2.5) + little64(60);
  const auto cell = readOlderCell(olderCell(9, 0x3FFE, fields));
  ASSERT_TRUE(cell);
  EXPECT_TRUE(cell->older);
  EXPECT_EQ(cell->type, StoredType::kRich);
  EXPECT_EQ(cell->find(CellKey::kCurrentFormat), 5U);
  EXPECT_EQ(cell->find(CellKey::kFormula), 6U);
  EXPECT_EQ(cell->find(CellKey::kRichText), 8U);
  EXPECT_EQ(cell->find(CellKey::kComment), 9U);
  EXPECT_EQ(cell->find(CellKey::kString), 11U);
  EXPECT_EQ(cell->number, 2.5);
  EXPECT_EQ(cell->seconds, 60);
}

TEST(OlderCell, HasItsTypeWhereItsVersionPutsIt) {
  for (int version = 0; version <= 4; ++version) {
    std::string bytes{static_cast<char>(version), 0, 0, 0};
    bytes[version == 4 ? 1 : 2] = 3;
    bytes += little32(0x10);
    if (version >= 2) bytes += little32(0);
    bytes += little32(17);
    const auto cell = readOlderCell(bytes);
    ASSERT_TRUE(cell) << version;
    EXPECT_EQ(cell->type, StoredType::kText) << version;
    EXPECT_EQ(cell->find(CellKey::kString), 17U) << version;
  }
}

TEST(OlderCell, IsNothingForWhatIsNone) {
  EXPECT_FALSE(readOlderCell(""));
  EXPECT_FALSE(readOlderCell("\xF0\x9F\xA4\xA0")) << "what newer documents put there";
  EXPECT_FALSE(readOlderCell(olderCell(3, 0x10, "abc"))) << "a field is cut off";
  EXPECT_FALSE(readOlderCell(olderCell(10, 0, ""))) << "a type of newer cells";
}

}  // namespace
}  // namespace dorvex::content::older_cell_test
