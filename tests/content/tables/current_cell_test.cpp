#include <gtest/gtest.h>

#include "cells.h"
#include "tables/cell_record.h"

namespace dorvex::content::current_cell_test {
namespace {

using testing::currentCell;
using testing::decimal128;
using testing::little32;
using testing::little64;

TEST(CurrentCell, ReadsTheFieldsInTheOrderOfTheirBits) {
  std::string fields;
  fields += decimal128(7, 0) + little64(1.5) + little64(60);
  for (std::uint32_t bit = 3; bit <= 20; ++bit) fields += little32(100 + bit);
  const std::string bytes = currentCell(2, 0x1FFFFF, fields);
  const auto cell = readCurrentCell(bytes);
  ASSERT_TRUE(cell);
  EXPECT_EQ(cell->type, StoredType::kNumber);
  EXPECT_EQ(cell->decimal, decimal128(7, 0));
  EXPECT_EQ(cell->number, 1.5);
  EXPECT_EQ(cell->seconds, 60);
  EXPECT_EQ(cell->find(CellKey::kString), 103U);
  EXPECT_EQ(cell->find(CellKey::kRichText), 104U);
  EXPECT_EQ(cell->find(CellKey::kFormula), 109U);
  EXPECT_EQ(cell->find(CellKey::kControl), 110U);
  EXPECT_EQ(cell->find(CellKey::kFormatKind), 112U);
  EXPECT_EQ(cell->find(CellKey::kNumberFormat), 113U);
  EXPECT_EQ(cell->find(CellKey::kBooleanFormat), 118U);
  EXPECT_EQ(cell->find(CellKey::kComment), 119U);
}

TEST(CurrentCell, HasOnlyTheKeysOfItsMask) {
  const auto cell = readCurrentCell(currentCell(3, 0x8, little32(42)));
  ASSERT_TRUE(cell);
  EXPECT_EQ(cell->find(CellKey::kString), 42U);
  EXPECT_FALSE(cell->find(CellKey::kFormula));
}

TEST(CurrentCell, KeepsWhatItKnowsBeforeFieldsOfUnknownBits) {
  const auto cell = readCurrentCell(currentCell(3, 0x80000008, little32(42) + little32(1)));
  ASSERT_TRUE(cell);
  EXPECT_EQ(cell->find(CellKey::kString), 42U);
}

TEST(CurrentCell, IsNothingForWhatIsNone) {
  EXPECT_FALSE(readCurrentCell(""));
  EXPECT_FALSE(readCurrentCell(std::string(11, '\5')));
  EXPECT_FALSE(readCurrentCell(currentCell(3, 0x8, "abc"))) << "a field is cut off";
  EXPECT_FALSE(readCurrentCell(currentCell(4, 0, ""))) << "no such type";
  EXPECT_FALSE(readCurrentCell(currentCell(200, 0, ""))) << "no such type";
  std::string version4 = currentCell(3, 0, "");
  version4[0] = 4;
  EXPECT_FALSE(readCurrentCell(version4));
}

}  // namespace
}  // namespace dorvex::content::current_cell_test
