#include "styles/paragraph_style.h"

#include <gtest/gtest.h>

#include "TSSArchives.h"
#include "TSWPArchives.h"
#include "content/support/objects.h"

namespace dorvex::content::paragraph_style_test {
namespace {

using Characters = TSWP::CharacterStylePropertiesArchive;
using Identity = TSS::StyleArchive;
using Properties = TSWP::ParagraphStylePropertiesArchive;
using Style = TSWP::ParagraphStyleArchive;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

constexpr int kParagraphStyle = 2022;
constexpr int kContentsStyle = 2026;

Wire named(const char* name, const char* identifier) {
  Wire wire;
  if (*name != 0) wire.bytes(Identity::name.number, name);
  return wire.bytes(Identity::style_identifier.number, identifier);
}

Wire derivedFrom(std::uint64_t parent) {
  return Wire().message(Identity::parent.number, reference(parent));
}

Wire bold() {
  return Wire().message(Style::char_properties.number, Wire().varint(Characters::bold.number, 1));
}

Wire style(const Wire& identity, const Wire& properties = {}) {
  return Wire().message(Style::super.number, identity).raw(properties.str());
}

ParagraphStyle readFirst(Objects& objects) {
  return readParagraphStyle(objects.reading(), &objects.object(10));
}

TEST(ReadParagraphStyle, GivesTheShownNameAndTheRoleOfTheIdentifier) {
  Objects objects(
      {object(10, kParagraphStyle, style(named("Judul", "text-0-paragraphstyle-Title")))});
  const ParagraphStyle read = readFirst(objects);
  EXPECT_EQ(read.name, "Judul");
  EXPECT_EQ(read.role.role, Role::kTitle);
}

TEST(ReadParagraphStyle, LooksThroughFormatting) {
  Objects objects(
      {object(10, kParagraphStyle, style(derivedFrom(11))),
       object(11, kParagraphStyle, style(derivedFrom(12))),
       object(12, kParagraphStyle, style(named("Heading 2", "text-4-paragraphstyle-Heading 2")))});
  const ParagraphStyle read = readFirst(objects);
  EXPECT_EQ(read.name, "Heading 2");
  EXPECT_EQ(read.role, (ParagraphRole{Role::kHeading, 2}));
}

TEST(ReadParagraphStyle, TakesTheRoleOfAnAncestorForAStyleOfOnesOwn) {
  Objects objects(
      {object(10, kParagraphStyle,
              style(named("Mine", "text-0-paragraphstyle").raw(derivedFrom(11).str()))),
       object(11, kParagraphStyle, style(named("Heading", "text-4-paragraphstyle-Heading")))});
  const ParagraphStyle read = readFirst(objects);
  EXPECT_EQ(read.name, "Mine");
  EXPECT_EQ(read.role, (ParagraphRole{Role::kHeading, 1}));
}

TEST(ReadParagraphStyle, FallsBackToNameAndOutlineInOlderDocuments) {
  const auto outline = [](unsigned level) {
    return Wire().message(Style::para_properties.number,
                          Wire().varint(Properties::outline_level.number, level));
  };
  Objects byName({object(10, kParagraphStyle, style(named("Heading 2", "paragraph-style-33")))});
  EXPECT_EQ(readFirst(byName).role, (ParagraphRole{Role::kHeading, 2}));
  Objects byOutline(
      {object(10, kParagraphStyle, style(named("Kapitel", "paragraph-style-9"), outline(2)))});
  EXPECT_EQ(readFirst(byOutline).role, (ParagraphRole{Role::kHeading, 3}));
  Objects none({object(10, kParagraphStyle,
                       style(named("Kapitel", "paragraph-style-9"), outline(0xFFFFFFFF)))});
  EXPECT_EQ(readFirst(none).role.role, Role::kOther);
  // Where identifiers state the role, the level of the outline states nothing.
  Objects newer({object(10, kParagraphStyle,
                        style(named("Quote", "text-9-paragraphstyle-Quote"), outline(0)))});
  EXPECT_EQ(readFirst(newer).role.role, Role::kOther);
}

TEST(ReadParagraphStyle, MarksFormattingButNotTheStyleItself) {
  Objects formatted(
      {object(10, kParagraphStyle, style(derivedFrom(11), bold())),
       object(11, kParagraphStyle, style(named("Body", "text-9-paragraphstyle-Body")))});
  EXPECT_EQ(readFirst(formatted).marks.bold, true);
  Objects boldByStyle(
      {object(10, kParagraphStyle, style(named("Title", "text-0-paragraphstyle-Title"), bold()))});
  EXPECT_EQ(readFirst(boldByStyle).marks.bold, std::nullopt);
}

TEST(ReadParagraphStyle, UnwrapsStylesOfTablesOfContents) {
  Objects objects(
      {object(10, kContentsStyle,
              Wire().message(TSWP::TOCEntryStyleArchive::super.number,
                             style(named("TOC 1", "text-3-paragraphstyle-TOC Heading 1"))))});
  const ParagraphStyle read = readFirst(objects);
  EXPECT_EQ(read.name, "TOC 1");
  EXPECT_EQ(read.role.role, Role::kToc);
}

TEST(ReadParagraphStyle, IsOtherWithoutStyle) {
  Objects objects({});
  const ParagraphStyle read = readParagraphStyle(objects.reading(), nullptr);
  EXPECT_EQ(read.name, "");
  EXPECT_EQ(read.role.role, Role::kOther);
}

}  // namespace
}  // namespace dorvex::content::paragraph_style_test
