#include "styles/paragraph_role.h"

#include <gtest/gtest.h>

namespace dorvex::content::paragraph_role_test {

void PrintTo(const ParagraphRole& role, std::ostream* out) {
  *out << static_cast<int>(role.role) << ' ' << role.level;
}

namespace {

constexpr ParagraphRole heading(unsigned level) { return {Role::kHeading, level}; }
constexpr ParagraphRole plain(Role role) { return {role, 0}; }

TEST(RoleOfIdentifier, IsThatOfItsTail) {
  EXPECT_EQ(roleOfIdentifier("text-0-paragraphstyle-Title"), plain(Role::kTitle));
  EXPECT_EQ(roleOfIdentifier("text-2-paragraphstyle-Subtitle"), plain(Role::kSubtitle));
  EXPECT_EQ(roleOfIdentifier("text-9-paragraphstyle-Body 1"), plain(Role::kBody));
  EXPECT_EQ(roleOfIdentifier("text-15-paragraphstyle-Caption 3"), plain(Role::kCaption));
  EXPECT_EQ(roleOfIdentifier("text-6-paragraphstyle-Label"), plain(Role::kLabel));
  EXPECT_EQ(roleOfIdentifier("text-16-paragraphstyle-Header & Footer 1"), plain(Role::kHeader));
  EXPECT_EQ(roleOfIdentifier("text-30-paragraphstyle-Footnote Text"), plain(Role::kFootnote));
  EXPECT_EQ(roleOfIdentifier("text-34-paragraphstyle-Label Dark"), plain(Role::kLabel));
  EXPECT_EQ(roleOfIdentifier("text-8-paragraphstyle-Masthead"), plain(Role::kTitle));
  EXPECT_EQ(roleOfIdentifier("kSFWPFootnoteTextStyleIdentifier"), plain(Role::kFootnote));
}

TEST(RoleOfIdentifier, HasTheLevelsOfHeadings) {
  EXPECT_EQ(roleOfIdentifier("text-11-paragraphstyle-Heading"), heading(1));
  EXPECT_EQ(roleOfIdentifier("text-11-paragraphstyle-Heading 1"), heading(1));
  EXPECT_EQ(roleOfIdentifier("text-4-paragraphstyle-Heading 4"), heading(4));
  EXPECT_EQ(roleOfIdentifier("text-6-paragraphstyle-Subheading 1"), heading(2));
  EXPECT_EQ(roleOfIdentifier("text-6-paragraphstyle-Heading 99999999999"), heading(1));
}

TEST(RoleOfIdentifier, IsNothingWhereItStatesNone) {
  EXPECT_EQ(roleOfIdentifier("paragraph-style-33"), std::nullopt);
  EXPECT_EQ(roleOfIdentifier("text-0-paragraphstyle"), std::nullopt);
  EXPECT_EQ(roleOfIdentifier("text-0-paragraphstyle-"), std::nullopt);
  EXPECT_EQ(roleOfIdentifier("text-7-paragraphstyle-Agenda"), std::nullopt);
  EXPECT_EQ(roleOfIdentifier(""), std::nullopt);
}

TEST(RoleOfName, KnowsNamesOfOlderDocuments) {
  EXPECT_EQ(roleOfName("Heading 2"), heading(2));
  EXPECT_EQ(roleOfName("heading 2"), heading(2));
  EXPECT_EQ(roleOfName("Normal"), plain(Role::kBody));
  EXPECT_EQ(roleOfName("Free Form"), std::nullopt);
}

TEST(RoleOfName, KnowsOtherLanguages) {
  EXPECT_EQ(roleOfName("Überschrift 3"), heading(3));
  EXPECT_EQ(roleOfName("Standard"), plain(Role::kBody));
  EXPECT_EQ(roleOfName("Sous-titre"), plain(Role::kSubtitle));
  EXPECT_EQ(roleOfName("正文"), plain(Role::kBody));
  EXPECT_EQ(roleOfName("Заголовок 2"), heading(2));
  EXPECT_EQ(roleOfName("Nadpis 1"), heading(1));
}

TEST(RoleOfName, TellsHeadingsFromTitlesByTheirNumbers) {
  EXPECT_EQ(roleOfName("Titre"), plain(Role::kTitle));
  EXPECT_EQ(roleOfName("Titre 2"), heading(2));
  EXPECT_EQ(roleOfName("Título 1"), heading(1));
  EXPECT_EQ(roleOfName("제목 3"), heading(3));
  EXPECT_EQ(roleOfName("Title 2"), plain(Role::kTitle));
}

TEST(RoleOfName, OverlooksTheLettersOfCopies) {
  EXPECT_EQ(roleOfName("Heading 2 A A"), heading(2));
  EXPECT_EQ(roleOfName("Title A"), plain(Role::kTitle));
  EXPECT_EQ(roleOfName("A"), std::nullopt);
  EXPECT_EQ(roleOfName(" A"), std::nullopt);
}

}  // namespace
}  // namespace dorvex::content::paragraph_role_test
