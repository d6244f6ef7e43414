#include "styles/character_marks.h"

#include <gtest/gtest.h>

#include "TSSArchives.h"
#include "TSWPArchives.h"
#include "content/support/objects.h"

namespace dorvex::content::character_marks_test {
namespace {

using Properties = TSWP::CharacterStylePropertiesArchive;
using Style = TSWP::CharacterStyleArchive;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

constexpr int kCharacterStyle = 2021;

Wire style(const Wire& properties, std::uint64_t parent = 0) {
  Wire super;
  if (parent != 0) super.message(TSS::StyleArchive::parent.number, reference(parent));
  return Wire()
      .message(Style::super.number, super)
      .message(Style::char_properties.number, properties);
}

TEST(MarksOf, TellsWhatIsSaidFromWhatIsNot) {
  const Wire wire = Wire().varint(Properties::bold.number, 1).varint(Properties::italic.number, 0);
  const CharacterMarks marks = marksOf(Message<Properties>(wire.str()));
  EXPECT_EQ(marks.bold, true);
  EXPECT_EQ(marks.italic, false);
  EXPECT_EQ(marks.underline, std::nullopt);
  EXPECT_EQ(marks.baseline, std::nullopt);
}

TEST(MarksOf, TakesEveryKindOfLine) {
  const Wire wire =
      Wire().varint(Properties::underline.number, 3).varint(Properties::strikethru.number, 2);
  const CharacterMarks marks = marksOf(Message<Properties>(wire.str()));
  EXPECT_EQ(marks.underline, true);
  EXPECT_EQ(marks.strike, true);
}

TEST(MarksOf, TellsSuperscriptFromSubscript) {
  const auto baseline = [](unsigned value) {
    const Wire wire = Wire().varint(Properties::superscript.number, value);
    return marksOf(Message<Properties>(wire.str())).baseline;
  };
  EXPECT_EQ(baseline(0), Baseline::kNormal);
  EXPECT_EQ(baseline(1), Baseline::kSuperscript);
  EXPECT_EQ(baseline(2), Baseline::kSubscript);
  EXPECT_EQ(baseline(77), Baseline::kNormal);
}

TEST(ReadCharacterMarks, InheritsWhatAStyleLeavesOpen) {
  Objects objects(
      {object(10, kCharacterStyle, style(Wire().varint(Properties::italic.number, 0), 11)),
       object(
           11, kCharacterStyle,
           style(Wire().varint(Properties::bold.number, 1).varint(Properties::italic.number, 1)))});
  const CharacterMarks marks = readCharacterMarks(objects.reading(), &objects.object(10));
  EXPECT_EQ(marks.bold, true);
  EXPECT_EQ(marks.italic, false);
}

TEST(ReadCharacterMarks, EndsWhereStylesDeriveFromEachOther) {
  Objects objects({object(10, kCharacterStyle, style(Wire(), 11)),
                   object(11, kCharacterStyle, style(Wire(), 10))});
  EXPECT_EQ(readCharacterMarks(objects.reading(), &objects.object(10)), CharacterMarks());
}

TEST(ReadCharacterMarks, SaysNothingWithoutStyle) {
  Objects objects({});
  EXPECT_EQ(readCharacterMarks(objects.reading(), nullptr), CharacterMarks());
}

}  // namespace
}  // namespace dorvex::content::character_marks_test
