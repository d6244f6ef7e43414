#include "module/watch.h"

#include <gtest/gtest.h>

#include "content/support/blocks.h"
#include "content/support/recorder.h"

namespace dorvex::content::watch_test {
namespace {

class WatchTest : public ::testing::Test {
 protected:
  bool shows(const Block& block) {
    Watch watch(recorder, {});
    watch.document(Application::kPages, {});
    watch.body(block);
    return watch.showsAnything();
  }
  testing::Recorder recorder;
};

Block blockOf(auto what) {
  Block block;
  block.what = std::move(what);
  return block;
}

TEST_F(WatchTest, SeesTextsPicturesAndFormulas) {
  EXPECT_TRUE(shows(testing::paragraph("a")));
  EXPECT_TRUE(shows(blockOf(Media{})));
  EXPECT_TRUE(shows(blockOf(Equation{"x", Notation::kLatex})));
  EXPECT_TRUE(shows(blockOf(Box{BoxKind::kGroup, {}, {testing::paragraph("a")}})));
}

TEST_F(WatchTest, SeesNothingInWhatIsEmpty) {
  EXPECT_FALSE(shows(testing::paragraph(" \n\t")));
  EXPECT_FALSE(shows(blockOf(Equation{})));
  EXPECT_FALSE(shows(blockOf(Break::kPage)));
  EXPECT_FALSE(shows(blockOf(Box{BoxKind::kTextBox, {}, {testing::paragraph("")}})));
}

TEST_F(WatchTest, SeesTheNameOfASheetAndNotesOfASlide) {
  Watch sheets(recorder, {});
  sheets.sheet({"", false, {}});
  EXPECT_FALSE(sheets.showsAnything());
  sheets.sheet({"Sheet 1", false, {}});
  EXPECT_TRUE(sheets.showsAnything());
  Watch slides(recorder, {});
  Slide slide;
  slide.notes = {testing::paragraph("a")};
  slides.slide(slide);
  EXPECT_TRUE(slides.showsAnything());
}

TEST_F(WatchTest, SeesTheHeadersOfPages) {
  Watch watch(recorder, {});
  watch.beginSection({});
  EXPECT_FALSE(watch.showsAnything());
  Section section;
  section.headers[PageClass::kDefault] = {"a", "", ""};
  watch.beginSection(section);
  EXPECT_TRUE(watch.showsAnything());
}

TEST_F(WatchTest, AddsWhatWasDamagedBeforeToTheEnd) {
  Watch watch(recorder, {{"Index.zip", "cannot be read"}});
  watch.document(Application::kNumbers, {});
  Summary summary;
  summary.leftOut.damaged = {{"Index/A.iwa", "is damaged"}};
  watch.end(summary);
  EXPECT_EQ(recorder.summary.leftOut.problems,
            std::vector<std::string>{"Index.zip cannot be read"});
  ASSERT_EQ(watch.damaged().size(), 2U);
  EXPECT_EQ(watch.damaged().back().name, "Index/A.iwa");
  EXPECT_EQ(watch.application(), Application::kNumbers);
}

}  // namespace
}  // namespace dorvex::content::watch_test
