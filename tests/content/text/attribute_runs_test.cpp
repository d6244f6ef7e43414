#include "text/attribute_runs.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::attribute_runs_test {
namespace {

using testing::numberTable;
using testing::object;
using testing::Objects;
using testing::objectTable;
using testing::Wire;

NumberRuns numbers(const Wire& table) {
  return numberRuns(Message<TSWP::ParaDataAttributeTable>(table.str()));
}

TEST(AttributeRuns, HoldAValueUpToTheNextEntry) {
  const Wire table = numberTable({{2, 20}, {5, 50}});
  NumberRuns runs = numbers(table);
  runs.moveTo(1);
  EXPECT_EQ(runs.value(), 0U);
  EXPECT_EQ(runs.nextChange(), 2U);
  runs.moveTo(4);
  EXPECT_EQ(runs.value(), 20U);
  EXPECT_EQ(runs.nextChange(), 5U);
  runs.moveTo(1000);
  EXPECT_EQ(runs.value(), 50U);
  EXPECT_EQ(runs.nextChange(), kBehindAll);
}

TEST(AttributeRuns, TellAnEntryFromItsRun) {
  const Wire table = numberTable({{2, 20}});
  NumberRuns runs = numbers(table);
  runs.moveTo(2);
  EXPECT_EQ(runs.valueOnlyAt(2), 20U);
  runs.moveTo(3);
  EXPECT_EQ(runs.valueOnlyAt(3), 0U);
  EXPECT_EQ(runs.value(), 20U);
}

TEST(AttributeRuns, AreSortedWhereTheTableIsNot) {
  const Wire table = numberTable({{5, 50}, {2, 20}});
  NumberRuns runs = numbers(table);
  runs.moveTo(2);
  EXPECT_EQ(runs.value(), 20U);
}

TEST(AttributeRuns, TakeTheLastOfSeveralEntriesAtAPlace) {
  const Wire table = numberTable({{2, 20}, {2, 21}});
  NumberRuns runs = numbers(table);
  runs.moveTo(2);
  EXPECT_EQ(runs.value(), 21U);
}

class ObjectRunsTest : public ::testing::Test {
 protected:
  ObjectRuns runs(WithoutObject meaning) {
    table_ = objectTable({{0, 10}, {4, 0}, {6, 99}});
    return objectRuns(objects_.reading(), Message<TSWP::ObjectAttributeTable>(table_.str()),
                      meaning);
  }

  Objects objects_{{object(10, 2022, Wire())}};
  Wire table_;
};

TEST_F(ObjectRunsTest, EndWhereAnEntryHasNoObject) {
  ObjectRuns ends = runs(WithoutObject::kEnds);
  ends.moveTo(3);
  EXPECT_EQ(ends.value(), &objects_.object(10));
  ends.moveTo(4);
  EXPECT_EQ(ends.value(), nullptr);
}

TEST_F(ObjectRunsTest, GoOnWhereThatIsWhatItMeans) {
  ObjectRuns goesOn = runs(WithoutObject::kGoesOn);
  goesOn.moveTo(1000);
  EXPECT_EQ(goesOn.value(), &objects_.object(10));
  EXPECT_EQ(goesOn.nextChange(), kBehindAll);
}

TEST_F(ObjectRunsTest, CountReferencesToNothing) {
  runs(WithoutObject::kEnds);
  EXPECT_EQ(objects_.leftOut().dangling, 1U);
}

}  // namespace
}  // namespace dorvex::content::attribute_runs_test
