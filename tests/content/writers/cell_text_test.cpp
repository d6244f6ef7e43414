#include "writers/cell_text.h"

#include <gtest/gtest.h>

namespace dorvex::content::cell_text_test {
namespace {

TEST(CellText, IsThatOfTheParagraphsWhereTheCellHasNone) {
  Cell cell;
  cell.type = CellType::kRich;
  cell.paragraphs.resize(2);
  cell.paragraphs[0].text = "a";
  cell.paragraphs[1].text = "b";
  EXPECT_EQ(richValue(cell), "a\nb");
  cell.value = "own";
  EXPECT_EQ(richValue(cell), "own");
}

}  // namespace
}  // namespace dorvex::content::cell_text_test
