#include "writers/file_names.h"

#include <gtest/gtest.h>

namespace dorvex::content::file_names_test {
namespace {

TEST(FileNames, StayWhereTheyAreSafe) {
  EXPECT_EQ(safeFileName("Café 漢字.png"), "Café 漢字.png");
  EXPECT_EQ(safeFileName("a.tar.gz"), "a.tar.gz");
}

TEST(FileNames, LeadToNoOtherFolderAndStartNoOption) {
  for (const char* name : {"../../etc/passwd", "..\\a", "/etc/passwd", "-rf", "~/a", "a/b", ".."}) {
    const std::string safe = safeFileName(name);
    EXPECT_EQ(safe.find_first_of("/\\"), std::string::npos) << safe;
    EXPECT_EQ(std::string(".-").find(safe.front()), std::string::npos) << safe;
  }
  EXPECT_EQ(safeFileName("../../etc/passwd"), "etc-passwd");
}

TEST(FileNames, HaveNothingThatIsNotSeen) {
  EXPECT_EQ(safeFileName(std::string("a\0b\n\xE2\x80\xAEgpj.exe", 14)), "a-b--gpj.exe");
  EXPECT_EQ(safeFileName("a\xFF"), "a-");
  EXPECT_EQ(safeFileName("a. . "), "a");
}

TEST(FileNames, AreNeverEmptyOrTooLong) {
  EXPECT_EQ(safeFileName(""), "unnamed");
  EXPECT_EQ(safeFileName("..."), "unnamed");
  std::string name;
  for (int i = 0; i < 100; ++i) name += "é";
  const std::string safe = safeFileName(name + ".jpeg");
  EXPECT_LE(safe.size(), 120U);
  EXPECT_TRUE(safe.ends_with("é.jpeg"));
}

TEST(FileNames, OfMediaAreNeverTheSame) {
  const MediaFile file{"photo.jpeg", "Data/photo-1.jpeg", 1};
  EXPECT_EQ(mediaFileName(0, file), "1-photo.jpeg");
  EXPECT_NE(mediaFileName(0, file), mediaFileName(1, file));
}

TEST(FileNames, AreEncodedForLinks) {
  EXPECT_EQ(urlEncoded("Data/tea cup #1?.svg"), "Data/tea%20cup%20%231%3F.svg");
  EXPECT_EQ(urlEncoded("é"), "%C3%A9");
}

}  // namespace
}  // namespace dorvex::content::file_names_test
