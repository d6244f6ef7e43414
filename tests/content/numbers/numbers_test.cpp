#include "numbers/numbers.h"

#include <gtest/gtest.h>

#include "content/support/blocks.h"
#include "content/support/objects.h"
#include "content/support/recorder.h"

namespace dorvex::content::numbers_test {
namespace {

using testing::as;
using testing::object;
using testing::Objects;
using testing::Recorder;
using testing::reference;
using testing::storage;
using testing::Wire;

enum Type : int {
  kDocument = 1,
  kSheet = 2,
  kForm = 3,
  kShapeInfo = 2011,
  kImage = 3005,
  kTable = 6000
};
enum SheetField : unsigned {
  kName = 1,
  kDrawables = 2,
  kHeaders = 18,
  kFooters = 19,
  kHidden = 25
};

std::vector<Sheet> read(Objects& objects) {
  Recorder recorder;
  readNumbers(objects.reading(), recorder);
  return recorder.sheets;
}

Wire document(const std::vector<std::uint64_t>& sheets) {
  Wire document;
  for (const std::uint64_t sheet : sheets) document.message(1, reference(sheet));
  return document;
}

TEST(Numbers, HandsOutItsSheetsInTheOrderOfTheirTabs) {
  Objects objects({object(1, kDocument, document({12, 10, 11})),
                   object(10, kSheet, Wire().bytes(kName, "Prices")),
                   object(11, kForm, Wire().message(1, Wire().bytes(kName, "Order"))),
                   object(12, kSheet, Wire().bytes(kName, "Stock").varint(kHidden, 1))},
                  Application::kNumbers);
  const auto sheets = read(objects);
  ASSERT_EQ(sheets.size(), 3U);
  EXPECT_EQ(sheets[0].name, "Stock");
  EXPECT_TRUE(sheets[0].hidden);
  EXPECT_EQ(sheets[1].name, "Prices");
  EXPECT_FALSE(sheets[1].hidden);
  EXPECT_EQ(sheets[2].name, "Order");
}

TEST(Numbers, HasTheDrawablesOfASheetInTheirOrder) {
  const Wire sheet = Wire()
                         .message(kDrawables, reference(20))
                         .message(kDrawables, reference(21))
                         .message(kDrawables, reference(99))
                         .message(kDrawables, reference(22));
  Objects objects({object(1, kDocument, document({10})), object(10, kSheet, sheet),
                   object(20, kImage, Wire()), object(21, kTable, Wire()),
                   object(22, kShapeInfo, Wire().message(4, reference(30))), storage(30, {"Tea"})},
                  Application::kNumbers);
  const auto sheets = read(objects);
  const auto& blocks = sheets.at(0).blocks;
  ASSERT_EQ(blocks.size(), 3U);
  EXPECT_TRUE(std::holds_alternative<Media>(blocks[0].what));
  EXPECT_TRUE(std::holds_alternative<Table>(blocks[1].what));
  EXPECT_EQ(as<Box>(blocks[2]).kind, BoxKind::kShape);
  EXPECT_EQ(objects.leftOut().dangling, 1U);
}

TEST(Numbers, HasTheHeadersAndFootersOfASheetThatSaySomething) {
  Wire sheet;
  for (const std::uint64_t header : {20U, 21U, 22U}) sheet.message(kHeaders, reference(header));
  for (const std::uint64_t footer : {23U, 24U, 25U}) sheet.message(kFooters, reference(footer));
  sheet.message(kDrawables, reference(30));
  Objects objects({object(1, kDocument, document({10})), object(10, kSheet, sheet), storage(20, {}),
                   storage(21, {"Tea shop"}), storage(24, {"\uFFFC"}), storage(25, {"Prices"}),
                   storage(22, {}), storage(23, {}), object(30, kImage, Wire())},
                  Application::kNumbers);
  const auto sheets = read(objects);
  const auto& blocks = sheets.at(0).blocks;
  ASSERT_EQ(blocks.size(), 3U);
  EXPECT_EQ(as<Paragraph>(blocks[0]).text, "Tea shop");
  EXPECT_EQ(as<Paragraph>(blocks[0]).role, Role::kHeader);
  EXPECT_TRUE(std::holds_alternative<Media>(blocks[1].what));
  EXPECT_EQ(as<Paragraph>(blocks[2]).text, "Prices");
  EXPECT_EQ(as<Paragraph>(blocks[2]).role, Role::kFooter);
}

TEST(Numbers, TakesEachSheetOnceAndCountsWhatIsNone) {
  Objects objects({object(1, kDocument, document({10, 10, 11})), object(10, kSheet, Wire()),
                   object(11, 999, Wire())},
                  Application::kNumbers);
  EXPECT_EQ(read(objects).size(), 1U);
  EXPECT_EQ(objects.leftOut().unknownTypes.at(999), 1U);
}

}  // namespace
}  // namespace dorvex::content::numbers_test
