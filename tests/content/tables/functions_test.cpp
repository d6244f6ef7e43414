#include "tables/functions.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace dorvex::content::functions_test {
namespace {

TEST(FunctionName, IsThatOfItsNumber) {
  EXPECT_EQ(functionName(1), "ABS");
  EXPECT_EQ(functionName(168), "SUM");
  EXPECT_EQ(functionName(280), "INTERSECT.RANGES");
  EXPECT_EQ(functionName(373), "ISNUMBERORDATE");
}

TEST(FunctionName, IsEmptyForNumbersThatAreNotKnown) {
  EXPECT_EQ(functionName(0), "");
  EXPECT_EQ(functionName(169), "");
  EXPECT_EQ(functionName(4'000'000'000), "");
}

// Beside the real documents stands a list of the functions that are known.
TEST(FunctionName, AgreesWithTheListBesideTheDocuments) {
  const auto list = std::filesystem::path(DORVEX_CORPUS).parent_path() / "content/functions.tsv";
  std::ifstream file(list);
  if (!file) GTEST_SKIP() << list << " is not here";
  unsigned count = 0;
  for (std::string line; std::getline(file, line);) {
    const auto tab = line.find('\t');
    if (line.starts_with('#') || tab == std::string::npos) continue;
    const auto number = static_cast<std::uint32_t>(std::stoul(line));
    EXPECT_EQ(functionName(number), line.substr(tab + 1, line.find('\t', tab + 1) - tab - 1));
    ++count;
  }
  EXPECT_GT(count, 300U);
}

}  // namespace
}  // namespace dorvex::content::functions_test
