#include "keynote/keynote.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"
#include "content/support/recorder.h"

namespace dorvex::content::keynote_test {
namespace {

using testing::object;
using testing::Objects;
using testing::Recorder;
using testing::reference;
using testing::Wire;

enum Type : int { kDocument = 1, kShow = 2, kNode = 4, kSlide = 5 };

TEST(Keynote, HandsOutItsSlidesNumbered) {
  const Wire tree = Wire().message(2, reference(21)).message(2, reference(20));
  Objects objects({object(1, kDocument, Wire().message(2, reference(10))),
                   object(10, kShow, Wire().message(3, tree)),
                   object(20, kNode, Wire().message(2, reference(30)).varint(4, 1).varint(21, 2)),
                   object(21, kNode, Wire().message(2, reference(31)).varint(4, 0)),
                   object(30, kSlide, Wire()), object(31, kSlide, Wire())},
                  Application::kKeynote);
  Recorder recorder;
  readKeynote(objects.reading(), recorder);
  ASSERT_EQ(recorder.slides.size(), 2U);
  EXPECT_EQ(recorder.slides[0].number, 1U);
  EXPECT_FALSE(recorder.slides[0].skipped);
  EXPECT_EQ(recorder.slides[1].number, 2U);
  EXPECT_TRUE(recorder.slides[1].skipped);
  EXPECT_EQ(recorder.slides[1].depth, 2U);
}

TEST(Keynote, HasNoSlidesWithoutAShow) {
  Objects objects({object(1, kDocument, Wire().message(2, reference(10)))}, Application::kKeynote);
  Recorder recorder;
  readKeynote(objects.reading(), recorder);
  EXPECT_TRUE(recorder.slides.empty());
  EXPECT_EQ(objects.leftOut().dangling, 1U);
}

}  // namespace
}  // namespace dorvex::content::keynote_test
