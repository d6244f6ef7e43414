#include "text/storage.h"

#include <gtest/gtest.h>

#include <string>

#include "TSDArchives.h"
#include "TSSArchives.h"
#include "TSWPArchives.h"
#include "content/support/objects.h"

namespace dorvex::content::storage_test {
namespace {

using Storage = TSWP::StorageArchive;
using testing::Archive;
using testing::numberTable;
using testing::object;
using testing::Objects;
using testing::objectTable;
using testing::reference;
using testing::Wire;

constexpr int kParagraphStyle = 2022;
constexpr int kListStyle = 2023;
constexpr int kCharacterStyle = 2021;

Wire textOnly(const std::string& text) { return Wire().bytes(Storage::text.number, text); }

// What a reader sees of a block, in short.
std::string outlineOf(const Block& block) {
  if (const auto* paragraph = std::get_if<Paragraph>(&block.what)) return paragraph->text;
  if (const auto* broken = std::get_if<Break>(&block.what))
    return *broken == Break::kPage     ? "<page>"
           : *broken == Break::kColumn ? "<column>"
                                       : "<section>";
  if (std::holds_alternative<Box>(block.what)) return "<box>";
  return "<other>";
}

using Outline = std::vector<std::string>;

Outline outlineOf(const std::vector<Block>& blocks) {
  Outline outline;
  for (const Block& block : blocks) outline.push_back(outlineOf(block));
  return outline;
}

Outline outline(const Wire& storage, Objects& objects) {
  return outlineOf(readStorage(objects.reading(), Message<Storage>(storage.str())));
}

Outline outline(const Wire& storage) {
  Objects objects({});
  return outline(storage, objects);
}

std::vector<Paragraph> paragraphs(const Wire& storage, Objects& objects) {
  std::vector<Paragraph> paragraphs;
  for (Block& block : readStorage(objects.reading(), Message<Storage>(storage.str())))
    if (auto* paragraph = std::get_if<Paragraph>(&block.what))
      paragraphs.push_back(std::move(*paragraph));
  return paragraphs;
}

Archive paragraphStyle(std::uint64_t identifier, const std::string& name) {
  return object(identifier, kParagraphStyle,
                Wire().message(1, Wire()
                                      .bytes(TSS::StyleArchive::name.number, name)
                                      .bytes(TSS::StyleArchive::style_identifier.number,
                                             "text-0-paragraphstyle-" + name)));
}

Archive boldStyle(std::uint64_t identifier) {
  return object(
      identifier, kCharacterStyle,
      Wire().message(TSWP::CharacterStyleArchive::char_properties.number, Wire().varint(1, 1)));
}

TEST(ReadStorage, CutsParagraphs) {
  EXPECT_EQ(outline(textOnly("one\ntwo\xE2\x80\xA9three\rfour")),
            (Outline{"one", "two", "three", "four"}));
}

TEST(ReadStorage, KeepsEmptyParagraphs) {
  EXPECT_EQ(outline(textOnly("one\n\ntwo\n")), (Outline{"one", "", "two", ""}));
}

TEST(ReadStorage, ShowsNothingOfAnEmptyText) {
  EXPECT_TRUE(outline(textOnly("")).empty());
  EXPECT_TRUE(
      outline(Wire().message(Storage::table_para_style.number, objectTable({{0, 0}}))).empty());
}

TEST(ReadStorage, JoinsThePiecesOfAText) {
  EXPECT_EQ(outline(Wire()
                        .bytes(Storage::text.number, "")
                        .bytes(Storage::text.number, "on")
                        .bytes(Storage::text.number, "e\nt")
                        .bytes(Storage::text.number, "wo")),
            (Outline{"one", "two"}));
}

TEST(ReadStorage, GivesBreaksBehindTheParagraphsThatTheyEnd) {
  EXPECT_EQ(outline(textOnly("a\x05"
                             "b\x0C"
                             "c\x04"
                             "d")),
            (Outline{"a", "<page>", "b", "<column>", "c", "<section>", "d"}));
}

TEST(ReadStorage, GivesNoLineForABreakAlone) {
  EXPECT_EQ(outline(textOnly("a\n\x05"
                             "b")),
            (Outline{"a", "<page>", "b"}));
}

TEST(ReadStorage, BreaksLinesWithinParagraphs) {
  EXPECT_EQ(outline(textOnly("a\xE2\x80\xA8"
                             "b\x0B"
                             "c")),
            Outline{"a\nb\nc"});
}

TEST(ReadStorage, NeverPrintsControlCharactersOrInvalidUtf8) {
  EXPECT_EQ(outline(textOnly(std::string("a\0b\x0E\x1F\x7F\xC2\x85\xEF\xBF\xBC\xFFz", 14))),
            Outline{"ab\n\xEF\xBF\xBDz"});
}

TEST(ReadStorage, CountsPositionsInUtf16Units) {
  Objects objects({boldStyle(10)});
  // A flag is two characters of two units each.
  const Wire storage =
      textOnly("é🇩🇰bold").message(Storage::table_char_style.number, objectTable({{5, 10}}));
  const auto read = paragraphs(storage, objects);
  ASSERT_EQ(read.size(), 1U);
  ASSERT_EQ(read[0].runs.size(), 2U);
  EXPECT_EQ(read[0].runs[0].text, "é🇩🇰");
  EXPECT_EQ(read[0].runs[1].text, "bold");
  EXPECT_TRUE(read[0].runs[1].bold);
}

TEST(ReadStorage, CutsNoCharacterInTwo) {
  Objects objects({boldStyle(10)});
  const Wire storage =
      textOnly("🇩🇰").message(Storage::table_char_style.number, objectTable({{1, 10}}));
  const auto read = paragraphs(storage, objects);
  ASSERT_EQ(read.size(), 1U);
  EXPECT_EQ(read[0].text, "🇩🇰");
  ASSERT_EQ(read[0].runs.size(), 2U);
  EXPECT_EQ(read[0].runs[1].text, "🇰");
}

TEST(ReadStorage, GoesOnWithAStyleUntilAnotherIsNamed) {
  Objects objects({paragraphStyle(10, "Title"), paragraphStyle(11, "Heading 2")});
  const Wire storage = textOnly("a\nb\nc").message(Storage::table_para_style.number,
                                                   objectTable({{0, 10}, {2, 0}, {4, 11}}));
  const auto read = paragraphs(storage, objects);
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(read[0].role, Role::kTitle);
  EXPECT_EQ(read[1].role, Role::kTitle);
  EXPECT_EQ(read[1].style, "Title");
  EXPECT_EQ(read[2].role, Role::kHeading);
  EXPECT_EQ(read[2].level, 2U);
}

TEST(ReadStorage, GivesTheRoleOfItsPlaceWhereTheStyleStatesNone) {
  Objects objects({paragraphStyle(10, "Title")});
  const auto roleIn = [&](unsigned kind, std::uint64_t style) {
    const Wire storage = textOnly("a")
                             .varint(Storage::kind.number, kind)
                             .message(Storage::table_para_style.number, objectTable({{0, style}}));
    return paragraphs(storage, objects).at(0).role;
  };
  EXPECT_EQ(roleIn(0, 0), Role::kOther);
  EXPECT_EQ(roleIn(1, 0), Role::kHeader);
  EXPECT_EQ(roleIn(2, 0), Role::kFootnote);
  EXPECT_EQ(roleIn(2, 10), Role::kTitle);
  EXPECT_EQ(roleIn(7, 10), Role::kToc);
}

class Lists : public ::testing::Test {
 protected:
  using Style = TSWP::ListStyleArchive;

  static Wire numbers() {
    Wire style;
    for (int level = 0; level < 2; ++level) style.varint(Style::label_types.number, 3);
    return style;
  }

  // The labels of the paragraphs, a blank for those of no list.
  std::string labels(const Wire& storage) {
    std::string labels;
    for (const Paragraph& paragraph : paragraphs(storage, objects_))
      labels += paragraph.list ? paragraph.list->label : " ";
    return labels;
  }

  // A variation of the numbers, and bullets.
  static Wire romanNumbers() {
    return Wire()
        .message(1, Wire().message(TSS::StyleArchive::parent.number, reference(10)))
        .varint(Style::number_types.number, 3);
  }
  static Wire bullets() {
    return Wire().varint(Style::label_types.number, 2).bytes(Style::strings.number, "-");
  }

  Objects objects_{{object(10, kListStyle, numbers()),
                    object(11, kListStyle, Wire().varint(Style::label_types.number, 0)),
                    object(12, kListStyle, romanNumbers()), object(13, kListStyle, bullets())}};
};

TEST_F(Lists, NumberTheirItemsByLevel) {
  const Wire storage =
      textOnly("a\nb\nc\nd")
          .message(Storage::table_list_style.number, objectTable({{0, 10}}))
          .message(Storage::table_para_data.number, numberTable({{0, 0}, {2, 1}, {6, 0}}));
  EXPECT_EQ(labels(storage), "1.1.2.2.");
}

TEST_F(Lists, StartWhereTheTableSays) {
  const Wire storage =
      textOnly("a\nb\nc\nd")
          .message(Storage::table_list_style.number, objectTable({{0, 10}}))
          .message(Storage::table_para_starts.number, numberTable({{2, 7}, {6, 0}}));
  EXPECT_EQ(labels(storage), "1.7.8.9.");
}

TEST_F(Lists, GoOnBehindParagraphsOfNoList) {
  const Wire storage = textOnly("a\nb\nc").message(Storage::table_list_style.number,
                                                   objectTable({{0, 10}, {2, 11}, {4, 10}}));
  EXPECT_EQ(labels(storage), "1. 2.");
}

TEST_F(Lists, CountOnWhereTheStyleIsVaried) {
  const Wire storage = textOnly("a\nb\nc").message(Storage::table_list_style.number,
                                                   objectTable({{0, 10}, {2, 12}, {4, 10}}));
  EXPECT_EQ(labels(storage), "1.II.3.");
}

TEST_F(Lists, CountOnlyItemsWithNumbers) {
  const Wire storage = textOnly("a\nb\nc\nd")
                           .message(Storage::table_list_style.number,
                                    objectTable({{0, 13}, {2, 10}, {4, 13}, {6, 10}}));
  EXPECT_EQ(labels(storage), "-1.-2.");
}

TEST_F(Lists, MakeListItemsOfPlainParagraphs) {
  const Wire storage =
      textOnly("a").message(Storage::table_list_style.number, objectTable({{0, 10}}));
  EXPECT_EQ(paragraphs(storage, objects_).at(0).role, Role::kList);
}

TEST_F(Lists, HaveNoItemsBelowTheirLevels) {
  const Wire storage = textOnly("a")
                           .message(Storage::table_list_style.number, objectTable({{0, 10}}))
                           .message(Storage::table_para_data.number, numberTable({{0, 5000}}));
  EXPECT_EQ(labels(storage), " ");
}

class Changes : public ::testing::Test {
 protected:
  static Wire deleting(const std::string& text, std::uint32_t from, std::uint32_t behind) {
    return textOnly(text)
        .message(Storage::table_deletion.number, objectTable({{from, 10}, {behind, 0}}))
        .message(Storage::table_para_style.number, objectTable({{0, 11}, {2, 12}}));
  }

  Objects objects_{
      {object(10, 2060, Wire()), paragraphStyle(11, "Title"), paragraphStyle(12, "Body")}};
};

TEST_F(Changes, JoinParagraphsWhoseSeparatorIsDeleted) {
  const auto read = paragraphs(deleting("a\nb\nc", 1, 2), objects_);
  ASSERT_EQ(read.size(), 2U);
  EXPECT_EQ(read[0].text, "ab");
  EXPECT_EQ(read[0].role, Role::kTitle);
  ASSERT_EQ(read[0].runs.size(), 3U);
  EXPECT_EQ(read[0].runs[1].text, "\n");
  EXPECT_TRUE(read[0].runs[1].deleted);
  EXPECT_EQ(read[1].text, "c");
}

TEST_F(Changes, TellWhatAParagraphWasBeforeEndsInItWereDeleted) {
  const auto read = paragraphs(deleting("a\nb", 1, 2), objects_);
  ASSERT_EQ(read.size(), 1U);
  EXPECT_TRUE(read[0].runs.at(1).endsParagraph);
  ASSERT_EQ(read[0].original.size(), 2U);
  EXPECT_EQ(read[0].original[0].role, Role::kTitle);
  EXPECT_EQ(read[0].original[1].role, Role::kBody);
  EXPECT_TRUE(paragraphs(textOnly("a\nb"), objects_).at(0).original.empty());
}

TEST_F(Changes, TellWhatAParagraphWasOfWhichNothingIsLeft) {
  const auto read = paragraphs(deleting("a\nb", 0, 2), objects_);
  ASSERT_EQ(read.size(), 1U);
  ASSERT_EQ(read[0].original.size(), 2U);
  EXPECT_EQ(read[0].original[0].role, Role::kTitle);
  EXPECT_EQ(read[0].original[1].role, Role::kBody);
}

// Items at levels 0 and 1, the second of which loses what parts it from the first.
TEST_F(Changes, CountItemsByWhatIsLeftOfThem) {
  using List = TSWP::ListStyleArchive;
  constexpr auto kNumbers = 3;
  Objects objects({object(10, 2060, Wire()), object(13, 2023,
                                                    Wire()
                                                        .varint(List::label_types.number, kNumbers)
                                                        .varint(List::label_types.number, kNumbers)
                                                        .varint(List::number_types.number, 0)
                                                        .varint(List::number_types.number, 0))});
  const Wire storage =
      textOnly("a\nb\nc")
          .message(Storage::table_deletion.number, objectTable({{1, 10}, {2, 0}}))
          .message(Storage::table_list_style.number, objectTable({{0, 13}}))
          .message(Storage::table_para_data.number, numberTable({{0, 0}, {2, 1}, {4, 0}}));
  const auto read = paragraphs(storage, objects);
  ASSERT_EQ(read.size(), 2U);
  ASSERT_TRUE(read[0].list && read[1].list);
  EXPECT_EQ(read[0].list->level, 0U);
  EXPECT_EQ(read[0].list->label.front(), '1');
  EXPECT_EQ(read[1].list->label.front(), '2');
  ASSERT_EQ(read[0].original.size(), 2U);
  ASSERT_TRUE(read[0].original[1].list);
  EXPECT_EQ(read[0].original[1].list->level, 1U);
}

TEST_F(Changes, TellWhichEndsWereInserted) {
  const Wire storage =
      textOnly("a\nb\nc").message(Storage::table_insertion.number, objectTable({{1, 10}, {2, 0}}));
  const auto read = paragraphs(storage, objects_);
  ASSERT_EQ(read.size(), 3U);
  EXPECT_TRUE(read[0].endInserted);
  EXPECT_FALSE(read[1].endInserted);
  EXPECT_FALSE(read[2].endInserted);
}

TEST_F(Changes, TakeTheStyleOfWhatIsLeft) {
  const auto read = paragraphs(deleting("a\nb", 0, 2), objects_);
  ASSERT_EQ(read.size(), 1U);
  EXPECT_EQ(read[0].text, "b");
  EXPECT_EQ(read[0].role, Role::kBody);
}

TEST_F(Changes, ShowNoDeletedBreaks) {
  EXPECT_EQ(outline(deleting("a\x05"
                             "b",
                             1, 2),
                    objects_),
            Outline{"ab"});
}

class Attachments : public ::testing::Test {
 protected:
  static constexpr char kMark[] = "\xEF\xBF\xBC";

  static std::vector<Archive> archives() {
    using Attachment = TSWP::DrawableAttachmentArchive;
    using Info = TSWP::ShapeInfoArchive;
    return {object(10, 2003, Wire().message(Attachment::drawable.number, reference(11))),
            object(11, 2011, Wire().message(Info::owned_storage.number, reference(12))),
            object(12, testing::kStorageType, textOnly("in the box")),
            object(13, 2043, Wire().message(1, Wire().varint(2, 1))),
            object(14, 2003, Wire().message(Attachment::drawable.number, reference(99))),
            object(15, 2003, Wire().message(Attachment::drawable.number, reference(16))),
            object(16, 2011, Wire().message(Info::owned_storage.number, reference(17))),
            object(17, testing::kStorageType,
                   textOnly(std::string("round") + kMark)
                       .message(Storage::table_attachment.number, objectTable({{5, 15}})))};
  }

  Outline outlineWith(const std::string& text, std::uint32_t at, std::uint64_t attachment) {
    return outline(
        textOnly(text).message(Storage::table_attachment.number, objectTable({{at, attachment}})),
        objects_);
  }

  Objects objects_{archives()};
};

TEST_F(Attachments, AreDrawnBehindTheirParagraph) {
  EXPECT_EQ(outlineWith(std::string("a") + kMark + "b\nc", 1, 10), (Outline{"ab", "<box>", "c"}));
}

TEST_F(Attachments, AreDrawnBeforeAParagraphThatTheyBegin) {
  EXPECT_EQ(outlineWith(std::string(kMark) + "a", 0, 10), (Outline{"<box>", "a"}));
}

TEST_F(Attachments, ShowNoLineWhereTheyAreAlone) {
  EXPECT_EQ(outlineWith(std::string(kMark) + "\na", 0, 10), (Outline{"<box>", "a"}));
}

TEST_F(Attachments, StandOnlyAtTheirPosition) {
  EXPECT_EQ(outlineWith(std::string("a") + kMark, 0, 10), Outline{"a"});
}

TEST_F(Attachments, MayReferToNothing) {
  EXPECT_EQ(outlineWith(std::string("a") + kMark, 1, 14), Outline{"a"});
  EXPECT_EQ(objects_.leftOut().dangling, 1U);
}

TEST_F(Attachments, EndWhereBoxesStandInEachOther) {
  EXPECT_EQ(outlineWith(kMark, 0, 15), Outline{"<box>"});
}

TEST_F(Attachments, CountThePages) {
  const auto read =
      paragraphs(textOnly(std::string("of ") + kMark)
                     .message(Storage::table_attachment.number, objectTable({{3, 13}})),
                 objects_);
  ASSERT_EQ(read.at(0).runs.size(), 2U);
  EXPECT_EQ(read[0].text, "of ");
  EXPECT_EQ(read[0].runs[1].field, FieldKind::kPageCount);
}

TEST(ReadStorage, ShowsThePageNumbersOfATableOfContents) {
  using Page = TSWP::TSWPTOCPageNumberAttachmentArchive;
  const Wire text =
      textOnly("Water\t\uFFFC\nLeaf\t\uFFFC")
          .message(Storage::table_attachment.number, objectTable({{6, 20}, {13, 21}}));
  Objects objects({object(20, 2010, Wire().bytes(Page::page_number.number, "iv")),
                   object(21, 2010, Wire().bytes(Page::page_number.number, "12"))});
  EXPECT_EQ(outline(text, objects), (Outline{"Water\tiv", "Leaf\t12"}));
}

TEST(SlideNumbers, AreFieldsOfPresentations) {
  const std::string mark = "\xEF\xBF\xBC";
  for (const int type : {14, 22, 2043}) {
    Objects objects({object(10, type, Wire())}, Application::kKeynote);
    const auto read = paragraphs(
        textOnly(mark).message(Storage::table_attachment.number, objectTable({{0, 10}})), objects);
    ASSERT_EQ(read.at(0).runs.size(), 1U) << type;
    EXPECT_EQ(read[0].runs[0].field, FieldKind::kPageNumber) << type;
  }
}

TEST_F(Attachments, LeadWhereTheTextAboutThemLeads) {
  Objects objects({object(10, 2003, Wire().message(1, reference(11))), object(11, 3005, Wire()),
                   object(20, 2032, Wire().bytes(2, "tea:"))});
  const auto blocks =
      readStorage(objects.reading(),
                  Message<Storage>(
                      textOnly(kMark)
                          .message(Storage::table_attachment.number, objectTable({{0, 10}}))
                          .message(Storage::table_smartfield.number, objectTable({{0, 20}, {1, 0}}))
                          .str()));
  ASSERT_EQ(blocks.size(), 1U);
  EXPECT_EQ(blocks[0].link, "tea:");
}

class Targets : public ::testing::Test {
 protected:
  // The texts and links of the runs, by paragraphs.
  std::string read(const std::string& text, std::uint32_t from, std::uint32_t behind) {
    const Wire storage = textOnly(text).message(Storage::table_smartfield.number,
                                                objectTable({{from, 20}, {behind, 0}}));
    std::string all;
    for (const Paragraph& paragraph : paragraphs(storage, objects_)) {
      for (const auto& run : paragraph.runs) all += run.text + "(" + run.link + ")";
      all += '|';
    }
    return all;
  }

  Objects objects_{{object(20, 2032, Wire().bytes(2, "tea:"))}};
};

TEST_F(Targets, AreKeptOnTheEndOfAParagraph) {
  EXPECT_EQ(read("a\nb", 1, 2), "a()(tea:)||");
  EXPECT_EQ(read("a\n\nb", 2, 3), "|(tea:)||");
}

TEST_F(Targets, AreNotRepeatedBehindTheirText) {
  EXPECT_EQ(read("a\nb", 0, 2), "a(tea:)||");
  EXPECT_EQ(read("a\n\nb", 0, 3), "a(tea:)|||");
}

TEST_F(Attachments, AreNotShownWhereTheyAreDeleted) {
  EXPECT_EQ(outline(textOnly(std::string("a") + kMark)
                        .message(Storage::table_attachment.number, objectTable({{1, 10}}))
                        .message(Storage::table_deletion.number, objectTable({{1, 13}})),
                    objects_),
            Outline{"a"});
}

// Notes down what a storage hands over.
class Notes : public StorageSink {
 public:
  void block(Block&& block) override { notes.push_back(outlineOf(block)); }
  void section(const Object& object) override {
    notes.push_back("section " + std::to_string(object.identifier));
  }
  std::optional<NoteMark> footnote(const Object& object, bool deleted) override {
    notes.push_back((deleted ? "deleted " : "note ") + std::to_string(object.identifier));
    return NoteMark{"id", "*"};
  }

  Outline notes;
};

TEST(ReadStorage, AnnouncesSectionsBeforeTheirFirstBlock) {
  Objects objects({object(10, 10011, Wire()), object(11, 10011, Wire())});
  const Wire storage = textOnly(
                           "a\x04"
                           "b")
                           .message(Storage::table_section.number, objectTable({{0, 10}, {2, 11}}));
  Notes notes;
  readStorage(objects.reading(), Message<Storage>(storage.str()), notes);
  EXPECT_EQ(notes.notes, (Outline{"section 10", "a", "<section>", "section 11", "b"}));
}

TEST(ReadStorage, AnnouncesTheSectionOfAnEmptyText) {
  Objects objects({object(10, 10011, Wire())});
  const Wire storage = Wire().message(Storage::table_section.number, objectTable({{0, 10}}));
  Notes notes;
  readStorage(objects.reading(), Message<Storage>(storage.str()), notes);
  EXPECT_EQ(notes.notes, Outline{"section 10"});
}

// As in a text box, where the applications make none.
TEST(ReadStorage, ShowsWhatAFootnoteSaysWhereThereIsNoPlaceForOne) {
  using Attachment = TSWP::FootnoteReferenceAttachmentArchive;
  const Wire note = Wire().message(Attachment::contained_storage.number, reference(11));
  Objects objects({object(10, 2008, note), testing::storage(11, {"the note"})});
  const Wire storage =
      textOnly("a\x0E\nb").message(Storage::table_footnote.number, objectTable({{1, 10}}));
  EXPECT_EQ(outline(storage, objects), (Outline{"a", "the note", "b"}));
}

// A note that is referred to within itself, as in a damaged document.
TEST(ReadStorage, ShowsANoteOnce) {
  using Attachment = TSWP::FootnoteReferenceAttachmentArchive;
  const Wire note = Wire().message(Attachment::contained_storage.number, reference(11));
  const Wire storage =
      textOnly("a\x0E").message(Storage::table_footnote.number, objectTable({{1, 10}}));
  Objects objects({object(10, 2008, note), object(11, testing::kStorageType, storage)});
  EXPECT_EQ(outline(storage, objects), (Outline{"a", "a"}));
}

TEST(ReadStorage, FindsFootnotesByTheirTableOrTheirAttachment) {
  Objects objects({object(10, 2008, Wire()), object(11, 2008, Wire()), object(12, 2060, Wire())});
  const Wire storage = textOnly(
                           "a\x0E"
                           "b\xEF\xBF\xBC"
                           "c\x0E")
                           .message(Storage::table_footnote.number, objectTable({{1, 10}}))
                           .message(Storage::table_attachment.number, objectTable({{3, 11}}))
                           .message(Storage::table_deletion.number, objectTable({{3, 12}}));
  Notes notes;
  readStorage(objects.reading(), Message<Storage>(storage.str()), notes);
  EXPECT_EQ(notes.notes, (Outline{"note 10", "deleted 11", "ab"}));
}

TEST(ReadStorage, HasNoFootnotesOutsideOfBodies) {
  Objects objects({object(10, 2008, Wire())});
  const Wire storage =
      textOnly("a\x0E").message(Storage::table_footnote.number, objectTable({{1, 10}}));
  EXPECT_TRUE(paragraphs(storage, objects).at(0).runs.empty());
}

}  // namespace
}  // namespace dorvex::content::storage_test
