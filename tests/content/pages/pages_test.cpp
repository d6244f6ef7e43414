#include "pages/pages.h"

#include <gtest/gtest.h>

#include <string>

#include "TPArchives.h"
#include "TSWPArchives.h"
#include "content/support/objects.h"
#include "content/support/recorder.h"
#include "drawables/box_text.h"

namespace dorvex::content::pages_test {
namespace {

using Document = TP::DocumentArchive;
using Storage = TSWP::StorageArchive;
using testing::Archive;
using testing::object;
using testing::Objects;
using testing::objectTable;
using testing::Recorder;
using testing::reference;
using testing::Wire;

Archive document() {
  return object(1, 10000,
                Wire()
                    .message(Document::body_storage.number, reference(2))
                    .message(Document::settings.number, reference(3))
                    .message(Document::floating_drawables.number, reference(4)));
}

Archive settings(bool body) {
  return object(3, 10012, Wire().varint(TP::SettingsArchive::body.number, body ? 1 : 0));
}

Archive body() {
  return object(2, testing::kStorageType,
                Wire()
                    .bytes(Storage::text.number,
                           "one\x0E\x04"
                           "two")
                    .message(Storage::table_footnote.number, objectTable({{3, 10}}))
                    .message(Storage::table_section.number, objectTable({{0, 12}, {5, 13}})));
}

std::vector<Archive> archives(bool showsBody) {
  using Attachment = TSWP::FootnoteReferenceAttachmentArchive;
  return {document(),
          settings(showsBody),
          body(),
          object(10, 2008, Wire().message(Attachment::contained_storage.number, reference(11))),
          testing::storage(11, {"a note"}),
          object(12, 10011, Wire()),
          object(13, 10011, Wire())};
}

TEST(ReadPages, GivesBodySectionsAndFootnotes) {
  Objects objects(archives(true));
  Recorder recorder;
  readPages(objects.reading(), recorder);
  EXPECT_EQ(textOf(recorder.bodyBlocks), "one\ntwo");
  ASSERT_EQ(recorder.bodyBlocks.size(), 3U);
  EXPECT_EQ(std::get<Paragraph>(recorder.bodyBlocks[0].what).runs.at(1).footnote, "1");
  ASSERT_EQ(recorder.sections.size(), 2U);
  EXPECT_EQ(recorder.sections[0].from, 0U);
  EXPECT_EQ(recorder.sections[1].from, 2U);
  ASSERT_EQ(recorder.footnotes.size(), 1U);
  EXPECT_EQ(recorder.footnotes[0].id, "1");
  EXPECT_EQ(textOf(recorder.footnotes[0].blocks), "a note");
}

TEST(ReadPages, HidesTheBodyOfPageLayouts) {
  Objects objects(archives(false));
  Recorder recorder;
  readPages(objects.reading(), recorder);
  EXPECT_TRUE(recorder.bodyBlocks.empty());
  EXPECT_TRUE(recorder.footnotes.empty());
  EXPECT_EQ(objects.leftOut().hiddenTexts, 1U);
}

TEST(ReadPages, GivesPageLayoutsTheHeadersOfTheirSections) {
  using Section = TP::SectionArchive;
  using Master = TP::PageMasterArchive;
  Objects objects(
      {document(), settings(false),
       object(2, testing::kStorageType,
              Wire().message(Storage::table_section.number, objectTable({{0, 12}}))),
       object(12, 10011, Wire().message(Section::odd_page_master.number, reference(13))),
       object(13, 10143, Wire().message(Master::headers.number, reference(14))),
       testing::storage(14, {"at the head"})});
  Recorder recorder;
  readPages(objects.reading(), recorder);
  ASSERT_EQ(recorder.sections.size(), 1U);
  EXPECT_EQ(recorder.sections[0].headers.at(PageClass::kDefault).center, "at the head");
  EXPECT_EQ(objects.leftOut().hiddenTexts, 0U);
}

TEST(ReadPages, ReadsADocumentWithoutAnything) {
  Objects objects({object(1, 10000, Wire())});
  Recorder recorder;
  readPages(objects.reading(), recorder);
  EXPECT_TRUE(recorder.bodyBlocks.empty());
  EXPECT_TRUE(recorder.sections.empty());
}

}  // namespace
}  // namespace dorvex::content::pages_test
