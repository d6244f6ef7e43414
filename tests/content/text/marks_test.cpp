#include "text/marks.h"

#include <gtest/gtest.h>

#include <string>

#include "TSDArchives.h"
#include "TSKArchives.h"
#include "TSPMessages.h"
#include "TSWPArchives.h"
#include "content/support/objects.h"

namespace dorvex::content::marks_test {
namespace {

using Storage = TSWP::StorageArchive;
using testing::Archive;
using testing::bitsOf;
using testing::object;
using testing::Objects;
using testing::objectTable;
using testing::reference;
using testing::Wire;

Archive comment(std::uint64_t identifier, const std::string& text) {
  return object(identifier, testing::kCommentStorageType,
                Wire().bytes(TSD::CommentStorageArchive::text.number, text));
}

Archive highlight(std::uint64_t identifier, std::uint64_t storage) {
  return object(identifier, 2013,
                Wire().message(TSWP::HighlightArchive::commentStorage.number, reference(storage)));
}

Wire overlapping(std::uint32_t from, std::uint32_t length, std::uint64_t field) {
  using Attribute = TSWP::OverlappingFieldAttributeTable_OverlappingFieldAttribute;
  return Wire().message(
      TSWP::OverlappingFieldAttributeTable::entries.number,
      Wire()
          .message(Attribute::range.number, Wire().varint(1, from).varint(2, length))
          .message(Attribute::field.number, reference(field)));
}

// The run of a text that has one mark, an object of a table.
class OneMark {
 public:
  OneMark(unsigned table, std::vector<Archive> archives)
      : objects_(archives), wire_(Wire().message(table, objectTable({{0, 10}}))) {}

  Run run() {
    MarkTables tables(objects_.reading(), Message<Storage>(wire_.str()));
    tables.moveTo(0);
    return RunMaker(objects_.reading()).make(tables.marks(), {});
  }

 private:
  Objects objects_;
  Wire wire_;
};

Run fieldRun(int type, const Wire& field) {
  return OneMark(Storage::table_smartfield.number, {object(10, type, field)}).run();
}

TEST(RunMaker, ReadsHyperlinks) {
  EXPECT_EQ(fieldRun(2032, Wire().bytes(2, "https://a.example/")).link, "https://a.example/");
  EXPECT_EQ(fieldRun(2039, Wire().bytes(2, "old:link")).link, "old:link");
}

TEST(RunMaker, KnowsTheFieldsThatTheApplicationFills) {
  EXPECT_EQ(fieldRun(2033, Wire()).field, FieldKind::kFileName);
  EXPECT_EQ(fieldRun(2034, Wire()).field, FieldKind::kDate);
  EXPECT_EQ(fieldRun(2036, Wire()).field, FieldKind::kMerge);
  EXPECT_EQ(fieldRun(2037, Wire()).field, FieldKind::kCitation);
  EXPECT_EQ(fieldRun(2038, Wire()).field, FieldKind::kCitation);
  // Text to click on and replace is text.
  EXPECT_FALSE(isMarked(fieldRun(2031, Wire())));
}

TEST(RunMaker, NamesABookmarkWithoutANameAsLinksDo) {
  const Wire field =
      Wire().bytes(TSWP::SmartFieldArchive::text_attribute_uuid_string.number, "C4EE-FAFB");
  const Wire bookmark = Wire().message(TSWP::BookmarkFieldArchive::super.number, field);
  EXPECT_EQ(fieldRun(2035, bookmark).bookmark, "C4EE-FAFB");
}

TEST(RunMaker, ReadsBookmarksOfBothTables) {
  const Wire bookmark = Wire().bytes(TSWP::BookmarkFieldArchive::name.number, "here");
  EXPECT_EQ(fieldRun(2035, bookmark).bookmark, "here");
  OneMark own(Storage::table_bookmark.number, {object(10, 2035, bookmark)});
  EXPECT_EQ(own.run().bookmark, "here");
}

TEST(RunMaker, ReadsRuby) {
  OneMark ruby(Storage::table_rubyfield.number,
               {object(10, 2042, Wire().bytes(TSWP::RubyFieldArchive::ruby_text.number, "かな"))});
  EXPECT_EQ(ruby.run().ruby, "かな");
}

TEST(RunMaker, NamesWhoChangedATextAndWhen) {
  const std::vector<Archive> archives = {
      object(10, 2060,
             Wire()
                 .message(TSWP::ChangeArchive::session.number, reference(11))
                 .message(TSWP::ChangeArchive::date.number, Wire().fixed64(1, bitsOf(1)))),
      object(11, 2062, Wire().message(TSWP::ChangeSessionArchive::author.number, reference(12))),
      object(12, 212, Wire().bytes(TSK::AnnotationAuthorArchive::name.number, "Ada"))};
  const Change change{"Ada", "2001-01-01T00:00:01Z"};
  EXPECT_EQ(OneMark(Storage::table_insertion.number, archives).run().inserted, change);
  EXPECT_EQ(OneMark(Storage::table_deletion.number, archives).run().deleted, change);
}

TEST(RunMaker, ReadsCommentsButNotMarkings) {
  OneMark said(Storage::table_highlight.number, {highlight(10, 11), comment(11, "why?")});
  ASSERT_EQ(said.run().comments.size(), 1U);
  EXPECT_EQ(said.run().comments[0].text, "why?");
  OneMark marking(Storage::table_highlight.number, {highlight(10, 11), comment(11, "")});
  EXPECT_FALSE(isMarked(marking.run()));
}

TEST(RunMaker, FillsMarksOfCharactersFromTheParagraph) {
  Objects objects({});
  Marks marks;
  marks.characters.italic = false;
  CharacterMarks ofParagraph;
  ofParagraph.bold = true;
  ofParagraph.italic = true;
  const auto run = RunMaker(objects.reading()).make(marks, ofParagraph);
  EXPECT_TRUE(run.bold);
  EXPECT_FALSE(run.italic);
}

TEST(RunMaker, RepeatsALongCommentOnlySoOften) {
  Objects objects({highlight(10, 11), comment(11, std::string(1 << 18, 'x'))});
  RunMaker maker(objects.reading());
  Marks marks;
  marks.highlights.push_back(&objects.object(10));
  std::size_t repeated = 0;
  for (int i = 0; i < 1000; ++i) repeated += maker.make(marks, {}).comments.size();
  EXPECT_GT(repeated, 1U);
  EXPECT_LT(repeated, 10U);
}

class MarkTablesTest : public ::testing::Test {
 protected:
  // How many comments each of so many positions has.
  std::string depths(const Wire& storage, Position count) {
    MarkTables tables(objects_.reading(), Message<Storage>(storage.str()));
    std::string depths;
    for (Position position = 0; position < count; ++position) {
      if (position >= tables.nextChange()) tables.moveTo(position);
      depths += static_cast<char>('0' + tables.marks().highlights.size());
    }
    return depths;
  }

  Objects objects_{{highlight(10, 12), highlight(11, 12), comment(12, "x")}};
};

TEST_F(MarkTablesTest, EndCommentsWhereTheirTableSays) {
  EXPECT_EQ(depths(Wire().message(Storage::table_highlight.number,
                                  objectTable({{1, 10}, {3, 0}, {4, 11}})),
                   6),
            "011011");
}

TEST_F(MarkTablesTest, OverlapCommentsByTheirRanges) {
  EXPECT_EQ(depths(Wire().message(
                       Storage::table_overlapping_highlight.number,
                       Wire().raw(overlapping(3, 2, 11).str()).raw(overlapping(1, 3, 10).str())),
                   6),
            "011210");
}

TEST_F(MarkTablesTest, HoldACommentOfBothTablesOnce) {
  EXPECT_EQ(depths(Wire()
                       .message(Storage::table_highlight.number, objectTable({{0, 10}, {2, 0}}))
                       .message(Storage::table_overlapping_highlight.number, overlapping(1, 2, 10)),
                   4),
            "1110");
}

TEST_F(MarkTablesTest, OutlastRangesThatReachBeyondAllTexts) {
  EXPECT_EQ(depths(Wire().message(Storage::table_overlapping_highlight.number,
                                  overlapping(1, 0xFFFFFFFF, 10)),
                   3),
            "011");
  EXPECT_EQ(
      depths(Wire().message(Storage::table_overlapping_highlight.number, overlapping(1, 0, 10)), 3),
      "000");
}

TEST_F(MarkTablesTest, BoundHowManyCommentsOverlap) {
  Wire table;
  for (int i = 0; i < 1000; ++i) table.raw(overlapping(0, 10, 10).str());
  const Wire storage = Wire().message(Storage::table_overlapping_highlight.number, table);
  EXPECT_EQ(depths(storage, 1), "1");
}

}  // namespace
}  // namespace dorvex::content::marks_test
