#include "drawables/box_text.h"

#include <gtest/gtest.h>

#include "content/support/blocks.h"
#include "content/support/objects.h"

namespace dorvex::content::box_text_test {
namespace {

using testing::object;
using testing::Objects;
using testing::paragraph;
using testing::reference;
using testing::storage;
using testing::textsIn;
using testing::Wire;

enum Type : int { kFlow = 2410 };
// Where a box has its text.
enum Place : unsigned { kDeprecated = 2, kFlowing = 3, kOwned = 4 };

using Texts = std::vector<std::string>;

Texts read(Objects& objects, const Wire& box) {
  return textsIn(readBoxText(objects.reading(), Message<TSWP::ShapeInfoArchive>(box.str())));
}

TEST(BoxText, ComesFromTheBoxsOwnStorage) {
  Objects objects({storage(10, {"Tea\nfor two"}), storage(11, {"an old copy"})});
  const Wire box = Wire().message(kOwned, reference(10)).message(kDeprecated, reference(11));
  EXPECT_EQ(read(objects, box), (Texts{"Tea", "for two"}));
}

TEST(BoxText, ComesFromTheOldPlaceInOldDocuments) {
  Objects objects({storage(10, {"Tea"})});
  EXPECT_EQ(read(objects, Wire().message(kDeprecated, reference(10))), Texts{"Tea"});
}

TEST(BoxText, ComesFromAnotherPlaceWhereOneRefersToNothing) {
  Objects objects({storage(10, {"Tea"}), object(12, 999, Wire())});
  const Wire box = Wire()
                       .message(kOwned, reference(99))
                       .message(kFlowing, reference(12))
                       .message(kDeprecated, reference(10));
  EXPECT_EQ(read(objects, box), Texts{"Tea"});
}

TEST(BoxText, ThatFlowsThroughSeveralBoxesStandsInTheFirst) {
  Objects objects(
      {object(20, kFlow, Wire().message(1, reference(10))), storage(10, {"A long letter"})});
  const Wire box = Wire().message(kFlowing, reference(20));
  EXPECT_EQ(read(objects, box), Texts{"A long letter"});
  EXPECT_EQ(read(objects, box), Texts{});
}

TEST(BoxText, FlowsThroughABoxWhoseOwnTextIsEmpty) {
  Objects objects({object(20, kFlow, Wire().message(1, reference(10))),
                   storage(10, {"A long letter"}), storage(11, {})});
  const Wire box = Wire().message(kOwned, reference(11)).message(kFlowing, reference(20));
  EXPECT_EQ(read(objects, box), Texts{"A long letter"});
}

TEST(BoxText, IsNoneWhereAllParagraphsAreEmpty) {
  Objects objects({storage(10, {"\n\n"}), storage(11, {})});
  EXPECT_EQ(read(objects, Wire().message(kOwned, reference(10))), Texts{});
  EXPECT_EQ(read(objects, Wire().message(kOwned, reference(11))), Texts{});
}

TEST(BoxText, KeepsEmptyParagraphsBetweenOthers) {
  Objects objects({storage(10, {"Milk\n\nSugar"})});
  EXPECT_EQ(read(objects, Wire().message(kOwned, reference(10))), (Texts{"Milk", "", "Sugar"}));
}

TEST(TextOf, JoinsParagraphsAlsoOfBoxesWithin) {
  std::vector<Block> blocks = {paragraph("Milk"), {}, {}};
  blocks[1].what = Box{BoxKind::kGroup, PlaceholderKind::kOther, {paragraph("Sugar")}};
  blocks[2].what = Break::kPage;
  EXPECT_EQ(textOf(blocks), "Milk\nSugar");
  EXPECT_EQ(textOf({}), "");
}

TEST(ShowNothing, IsTrueOfEmptyParagraphsOnly) {
  EXPECT_TRUE(showNothing({}));
  EXPECT_TRUE(showNothing({paragraph(""), paragraph("")}));
  EXPECT_FALSE(showNothing({paragraph(""), paragraph("Tea")}));
  std::vector<Block> blocks = {paragraph("")};
  std::get<Paragraph>(blocks[0].what).runs.emplace_back().field = FieldKind::kPageNumber;
  EXPECT_FALSE(showNothing(blocks));
  blocks[0].what = Media{};
  EXPECT_FALSE(showNothing(blocks));
}

}  // namespace
}  // namespace dorvex::content::box_text_test
