#include "text/paragraphs.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::paragraphs_test {
namespace {

using testing::Objects;
using testing::Wire;

class ParagraphTextTest : public ::testing::Test {
 protected:
  Paragraph take() {
    Paragraph paragraph;
    text_.take(maker_, {}, paragraph);
    return paragraph;
  }

  void setBold(bool bold) {
    Marks marks;
    marks.characters.bold = bold;
    text_.setMarks(marks);
  }

  void setDeleted() {
    Marks marks;
    marks.deletion = &deletion_;
    text_.setMarks(marks);
  }

  Objects objects_{{}};
  RunMaker maker_{objects_.reading()};
  Object deletion_;
  ParagraphText text_;
};

TEST_F(ParagraphTextTest, HasNoRunsWhereNothingIsMarked) {
  text_.append("plain ");
  text_.append(U'é');
  const Paragraph paragraph = take();
  EXPECT_EQ(paragraph.text, "plain é");
  EXPECT_TRUE(paragraph.runs.empty());
}

TEST_F(ParagraphTextTest, HasARunForEachChangeOfMarks) {
  text_.append("a");
  setBold(true);
  text_.append("b");
  setBold(true);
  text_.append("c");
  setBold(false);
  text_.append("d");
  const Paragraph paragraph = take();
  EXPECT_EQ(paragraph.text, "abcd");
  ASSERT_EQ(paragraph.runs.size(), 3U);
  EXPECT_EQ(paragraph.runs[1].text, "bc");
  EXPECT_TRUE(paragraph.runs[1].bold);
  EXPECT_FALSE(paragraph.runs[2].bold);
}

TEST_F(ParagraphTextTest, KeepsDeletedTextInRunsOnly) {
  text_.append("a");
  setDeleted();
  text_.append("b");
  const Paragraph paragraph = take();
  EXPECT_EQ(paragraph.text, "a");
  ASSERT_EQ(paragraph.runs.size(), 2U);
  EXPECT_EQ(paragraph.runs[1].text, "b");
  EXPECT_TRUE(paragraph.runs[1].deleted);
}

TEST_F(ParagraphTextTest, PartsTextAroundFieldsAndFootnotes) {
  text_.append("a");
  text_.appendField(FieldKind::kPageNumber);
  text_.append("b");
  text_.appendFootnote({"1", "*"});
  text_.append("c");
  const Paragraph paragraph = take();
  EXPECT_EQ(paragraph.text, "abc");
  ASSERT_EQ(paragraph.runs.size(), 5U);
  EXPECT_EQ(paragraph.runs[1].field, FieldKind::kPageNumber);
  EXPECT_EQ(paragraph.runs[3].footnote, "1");
}

TEST_F(ParagraphTextTest, BeginsAnewWhenItIsTaken) {
  text_.append("a");
  EXPECT_FALSE(text_.empty());
  take();
  EXPECT_TRUE(text_.empty());
  text_.append("b");
  EXPECT_EQ(take().text, "b");
}

TEST_F(ParagraphTextTest, KnowsWhetherAnythingIsLeftOfIt) {
  EXPECT_TRUE(text_.nothingLeft());
  setDeleted();
  text_.append("a");
  EXPECT_FALSE(text_.empty());
  EXPECT_TRUE(text_.nothingLeft());
  setBold(false);
  text_.append("b");
  EXPECT_FALSE(text_.nothingLeft());
}

}  // namespace
}  // namespace dorvex::content::paragraphs_test
