#include "styles/ancestry.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::ancestry_test {
namespace {

using Style = TSWP::CharacterStyleArchive;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

constexpr int kCharacterStyle = 2021;

Wire derivedFrom(std::uint64_t parent) {
  return Wire().message(Style::super.number,
                        Wire().message(TSS::StyleArchive::parent.number, reference(parent)));
}

TEST(Ancestry, BeginsWithTheStyleItself) {
  Objects objects(
      {object(10, kCharacterStyle, derivedFrom(11)), object(11, kCharacterStyle, Wire())});
  const auto styles = ancestry<Style>(objects.reading(), &objects.object(10));
  ASSERT_EQ(styles.size(), 2U);
  EXPECT_EQ(styles[0].bytes().data(), objects.object(10).payload.data());
}

TEST(Ancestry, EndsWhereAStyleDerivesFromItself) {
  Objects objects({object(10, kCharacterStyle, derivedFrom(10))});
  EXPECT_LT(ancestry<Style>(objects.reading(), &objects.object(10)).size(), 100U);
}

TEST(Ancestry, TakesObjectsOfOtherTypesForStylesThatSayNothing) {
  Objects objects({object(10, 2001, derivedFrom(11)), object(11, kCharacterStyle, Wire())});
  const auto styles = ancestry<Style>(objects.reading(), &objects.object(10));
  ASSERT_EQ(styles.size(), 1U);
  EXPECT_TRUE(styles[0].bytes().empty());
}

TEST(IsNamed, IsFalseForFormatting) {
  const Wire named = Wire().bytes(TSS::StyleArchive::style_identifier.number, "a");
  EXPECT_TRUE(isNamed(Message<TSS::StyleArchive>(named.str())));
  EXPECT_FALSE(isNamed(Message<TSS::StyleArchive>()));
}

}  // namespace
}  // namespace dorvex::content::ancestry_test
