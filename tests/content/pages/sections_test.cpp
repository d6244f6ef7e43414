#include "pages/sections.h"

#include <gtest/gtest.h>

#include <string>

#include "TSWPArchives.h"
#include "content/support/objects.h"
#include "drawables/box_text.h"

namespace dorvex::content::sections_test {

void PrintTo(const HeaderText& line, std::ostream* out) {
  *out << '{' << line.left << '|' << line.center << '|' << line.right << '}';
}

namespace {

using SectionArchive = TP::SectionArchive;
using Master = TP::PageMasterArchive;
using Settings = TP::SettingsArchive;
using Texts = std::map<PageClass, HeaderText>;
using testing::Archive;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

constexpr int kSection = 10011;
constexpr int kMaster = 10143;

// With storages that have their identifiers for texts: 2 to 9.
std::vector<Archive> withStorages(std::vector<Archive> archives) {
  for (std::uint64_t i = 2; i <= 9; ++i)
    archives.push_back(testing::storage(i, {std::to_string(i)}));
  return archives;
}

Wire master(const std::vector<std::uint64_t>& headers,
            const std::vector<std::uint64_t>& footers = {}) {
  Wire wire;
  for (const auto storage : headers) wire.message(Master::headers.number, reference(storage));
  for (const auto storage : footers) wire.message(Master::footers.number, reference(storage));
  return wire;
}

Wire section() {
  return Wire()
      .message(SectionArchive::first_page_master.number, reference(20))
      .message(SectionArchive::even_page_master.number, reference(21))
      .message(SectionArchive::odd_page_master.number, reference(22));
}

class SectionsTest : public ::testing::Test {
 protected:
  Section readOne(const Wire& section, const Wire& settings = {}) {
    Objects objects(
        withStorages({object(10, kSection, section), object(20, kMaster, master({2, 99, 99})),
                      object(21, kMaster, master({99, 3, 99})),
                      object(22, kMaster, master({99, 99, 4}, {5, 99, 6}))}));
    Sections sections(objects.reading(), Message<Settings>(settings.str()));
    return sections.read(objects.object(10), 7);
  }
};

TEST_F(SectionsTest, HaveTheLinesOfAllTheirPages) {
  const Section read = readOne(section());
  EXPECT_EQ(read.from, 7U);
  EXPECT_EQ(read.headers, (Texts{{PageClass::kDefault, {"", "", "4"}}}));
  EXPECT_EQ(read.footers, (Texts{{PageClass::kDefault, {"5", "", "6"}}}));
}

TEST_F(SectionsTest, HaveLinesOfTheirOwnForTheFirstPage) {
  const Wire different =
      section().varint(SectionArchive::page_master_first_page_different.number, 1);
  EXPECT_EQ(readOne(different).headers,
            (Texts{{PageClass::kFirst, {"2", "", ""}}, {PageClass::kDefault, {"", "", "4"}}}));
}

TEST_F(SectionsTest, MayHideTheLinesOfTheFirstPage) {
  const Wire hidden =
      section()
          .varint(SectionArchive::page_master_first_page_different.number, 1)
          .varint(SectionArchive::page_master_first_page_hides_header_footer.number, 1);
  EXPECT_EQ(readOne(hidden).headers, (Texts{{PageClass::kDefault, {"", "", "4"}}}));
}

TEST_F(SectionsTest, TellEvenPagesFromOdd) {
  const Wire different =
      section().varint(SectionArchive::page_master_even_odd_pages_different.number, 1);
  EXPECT_EQ(readOne(different).headers,
            (Texts{{PageClass::kEven, {"", "3", ""}}, {PageClass::kDefault, {"", "", "4"}}}));
}

TEST_F(SectionsTest, HaveNoneWhereTheDocumentShowsNone) {
  const Section read = readOne(
      section(), Wire().varint(Settings::headers.number, 0).varint(Settings::footers.number, 0));
  EXPECT_TRUE(read.headers.empty());
  EXPECT_TRUE(read.footers.empty());
}

TEST_F(SectionsTest, NameTheNumbersOfPagesThatStandAmongWords) {
  using Storage = TSWP::StorageArchive;
  const auto text = [](std::uint64_t identifier, const char* text,
                       const std::vector<std::pair<std::uint32_t, std::uint64_t>>& numbers) {
    return object(identifier, 2001,
                  Wire()
                      .bytes(Storage::text.number, text)
                      .message(Storage::table_attachment.number, testing::objectTable(numbers)));
  };
  const auto number = [](std::uint64_t identifier, unsigned kind) {
    return object(identifier, 2043, Wire().message(1, Wire().varint(2, kind)));
  };
  Objects objects({object(10, kSection, section()), object(22, kMaster, master({}, {2, 3, 4})),
                   text(2, "Page \uFFFC of \uFFFC", {{5, 30}, {10, 31}}),
                   text(3, "\uFFFC", {{0, 30}}), text(4, "Tea", {}), number(30, 0), number(31, 1)});
  Sections sections(objects.reading(), Message<Settings>());
  const HeaderText line = sections.read(objects.object(10), 0).footers.at(PageClass::kDefault);
  EXPECT_EQ(line.left, "Page  of ");
  EXPECT_EQ(line.withPages[0], "Page [page number] of [page count]");
  EXPECT_EQ(line.center, "");
  EXPECT_EQ(line.withPages[1], "") << "there is nothing else";
  EXPECT_EQ(line.withPages[2], "");
}

TEST_F(SectionsTest, HaveLinesOfTheirOwnInOlderDocuments) {
  const Wire older = Wire()
                         .message(SectionArchive::OBSOLETE_headers.number, reference(8))
                         .message(SectionArchive::OBSOLETE_footers.number, reference(9));
  // One storage is for the whole width.
  const Section read = readOne(older);
  EXPECT_EQ(read.headers, (Texts{{PageClass::kDefault, {"", "8", ""}}}));
  EXPECT_EQ(read.footers, (Texts{{PageClass::kDefault, {"", "9", ""}}}));
}

TEST_F(SectionsTest, RepeatNothingOfTheSectionBefore) {
  const Wire repeating = section().varint(SectionArchive::inherit_previous_header_footer.number, 1);
  const Wire other = Wire()
                         .message(SectionArchive::odd_page_master.number, reference(21))
                         .varint(SectionArchive::inherit_previous_header_footer.number, 1);
  Objects objects(withStorages({object(10, kSection, repeating), object(11, kSection, repeating),
                                object(12, kSection, section()), object(13, kSection, other),
                                object(21, kMaster, master({99, 3, 99})),
                                object(22, kMaster, master({99, 99, 4}))}));
  Sections sections(objects.reading(), Message<Settings>());
  const Texts line{{PageClass::kDefault, {"", "", "4"}}};
  EXPECT_EQ(sections.read(objects.object(10), 0).headers, line);
  EXPECT_EQ(sections.read(objects.object(11), 1).headers, Texts());
  // One that says it again itself is taken at its word.
  EXPECT_EQ(sections.read(objects.object(12), 2).headers, line);
  // And so is one that says something else, whatever it claims.
  EXPECT_EQ(sections.read(objects.object(13), 3).headers,
            (Texts{{PageClass::kDefault, {"", "3", ""}}}));
}

TEST_F(SectionsTest, HaveWhatIsDrawnOnAllTheirPages) {
  using Shape = TSWP::ShapeInfoArchive;
  const auto shape = [](std::uint64_t identifier, std::uint64_t storage) {
    return object(identifier, 2011,
                  Wire().message(Shape::owned_storage.number, reference(storage)));
  };
  const Wire watermark = Wire().message(Master::master_drawables.number, reference(30));
  const Wire onFirst = Wire().message(Master::master_drawables.number, reference(31));
  const Wire hiding =
      section()
          .varint(SectionArchive::page_master_first_page_different.number, 1)
          .varint(SectionArchive::page_master_first_page_hides_header_footer.number, 1);
  Objects objects(withStorages({object(10, kSection, hiding), object(20, kMaster, onFirst),
                                object(21, kMaster, Wire()), object(22, kMaster, watermark),
                                shape(30, 2), shape(31, 3)}));
  Sections sections(objects.reading(), Message<Settings>());
  const Section read = sections.read(objects.object(10), 0);
  ASSERT_EQ(read.drawables.size(), 2U);
  EXPECT_EQ(textOf(read.drawables.at(PageClass::kFirst)), "3");
  EXPECT_EQ(textOf(read.drawables.at(PageClass::kDefault)), "2");
}

TEST_F(SectionsTest, SayNothingWhereTheObjectIsNone) {
  Objects objects({object(10, 2001, section())});
  Sections sections(objects.reading(), Message<Settings>());
  const Section read = sections.read(objects.object(10), 3);
  EXPECT_EQ(read.from, 3U);
  EXPECT_TRUE(read.headers.empty());
}

}  // namespace
}  // namespace dorvex::content::sections_test
