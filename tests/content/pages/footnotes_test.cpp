#include "pages/footnotes.h"

#include <gtest/gtest.h>

#include <string>

#include "TSWPArchives.h"
#include "content/support/objects.h"
#include "content/support/recorder.h"

namespace dorvex::content::footnotes_test {
namespace {

using Attachment = TSWP::FootnoteReferenceAttachmentArchive;
using Settings = TP::SettingsArchive;
using testing::Archive;
using testing::object;
using testing::Objects;
using testing::Recorder;
using testing::reference;
using testing::Wire;

constexpr int kFootnote = 2008;

Archive footnote(std::uint64_t identifier, const char* mark = "") {
  Wire wire;
  wire.message(Attachment::contained_storage.number, reference(20));
  if (*mark != 0) wire.bytes(Attachment::custom_mark_string.number, mark);
  return object(identifier, kFootnote, wire);
}

class FootnotesTest : public ::testing::Test {
 protected:
  Footnotes withSettings(unsigned field, unsigned value) {
    settings_ = Wire().varint(field, value);
    return {objects_.reading(), Message<Settings>(settings_.str())};
  }

  // Adds the footnotes of those objects, and gives their marks.
  std::string marks(Footnotes&& footnotes) {
    for (const std::uint64_t identifier : {10, 11, 12})
      footnotes.add(objects_.object(identifier), false);
    return written(footnotes);
  }

  static std::string written(Footnotes& footnotes) {
    Recorder recorder;
    footnotes.write(recorder);
    std::string marks;
    for (const Footnote& note : recorder.footnotes) marks += note.mark + ' ';
    return marks;
  }

  Objects objects_{
      {footnote(10), footnote(11, "†"), footnote(12), testing::storage(20, {" A note."})}};
  Wire settings_;
};

TEST_F(FootnotesTest, CountThoseWithoutMarksOfTheirOwn) {
  EXPECT_EQ(marks(withSettings(Settings::footnote_format.number, 0)), "1 † 2 ");
}

TEST_F(FootnotesTest, AreNumberedInTheFormatOfTheDocument) {
  EXPECT_EQ(marks(withSettings(Settings::footnote_format.number, 1)), "i † ii ");
}

TEST_F(FootnotesTest, MayHaveSymbols) {
  EXPECT_EQ(marks(withSettings(Settings::footnote_format.number, 2)), "* † † ");
}

TEST_F(FootnotesTest, MayHaveIdeographs) {
  EXPECT_EQ(marks(withSettings(Settings::footnote_format.number, 4)), "一 † 二 ");
}

TEST_F(FootnotesTest, MayBeginAnewWithEachSection) {
  for (const unsigned numbering : {0U, 2U}) {
    Objects objects({footnote(10), footnote(12)});
    const Wire settings = Wire().varint(Settings::footnote_numbering.number, numbering);
    Footnotes footnotes(objects.reading(), Message<Settings>(settings.str()));
    footnotes.beginSection();
    footnotes.add(objects.object(10), false);
    footnotes.beginSection();
    footnotes.add(objects.object(12), false);
    EXPECT_EQ(written(footnotes), numbering == 0 ? "1 2 " : "1 1 ");
  }
}

TEST_F(FootnotesTest, AreNotCountedWhereTheyAreDeleted) {
  Footnotes footnotes = withSettings(Settings::footnote_format.number, 0);
  EXPECT_EQ(footnotes.add(objects_.object(10), true).id, "1");
  EXPECT_EQ(footnotes.add(objects_.object(12), false).id, "2");
  EXPECT_EQ(written(footnotes), " 1 ");
}

TEST_F(FootnotesTest, AreEndnotesWhereTheDocumentSaysSo) {
  for (const unsigned kind : {0U, 1U, 2U}) {
    Objects objects({footnote(10), testing::storage(20, {"A note."})});
    const Wire settings = Wire().varint(Settings::footnote_kind.number, kind);
    Footnotes footnotes(objects.reading(), Message<Settings>(settings.str()));
    footnotes.add(objects.object(10), false);
    Recorder recorder;
    footnotes.write(recorder);
    ASSERT_EQ(recorder.footnotes.size(), 1U);
    EXPECT_EQ(recorder.footnotes[0].endnote, kind != 0);
    ASSERT_EQ(recorder.footnotes[0].blocks.size(), 1U);
    EXPECT_EQ(std::get<Paragraph>(recorder.footnotes[0].blocks[0].what).text, "A note.");
  }
}

TEST_F(FootnotesTest, StandInOnePlaceOnly) {
  Footnotes footnotes = withSettings(Settings::footnote_format.number, 0);
  EXPECT_EQ(footnotes.add(objects_.object(10), false).id, "1");
  EXPECT_EQ(footnotes.add(objects_.object(10), false).id, "");
}

}  // namespace
}  // namespace dorvex::content::footnotes_test
