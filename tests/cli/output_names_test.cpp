#include "output_names.h"

#include <gtest/gtest.h>

#include "document_id.h"
#include "exit_status.h"

namespace dorvex::cli::output_names_test {
namespace {

using Names = std::vector<std::string>;

Names names(const Names& paths, Naming naming = Naming::kFile) {
  std::vector<ListedPath> documents;
  for (const std::string& path : paths) documents.push_back({path, path == "-"});
  return outputNames(documents, naming, ".txt");
}

TEST(OutputNames, AreThoseOfTheFiles) {
  EXPECT_EQ(names({"a.pages", "x/b.key", "y/c.numbers/", "-"}),
            (Names{"a.pages.txt", "b.key.txt", "c.numbers.txt", "standard-input.txt"}));
}

TEST(OutputNames, AreWholePathsOrIdsOnRequest) {
  EXPECT_EQ(names({"x/a.key", "/y/./a.key/", "../a.key"}, Naming::kPath),
            (Names{"x_a.key.txt", "y_a.key.txt", ".._a.key.txt"}));
  EXPECT_EQ(names({"a", "b"}, Naming::kHash),
            (Names{documentId("a") + ".txt", documentId("b") + ".txt"}));
}

TEST(OutputNames, ThatWouldBeTheSameAreRefused) {
  EXPECT_THROW(names({"x/a.key", "y/a.key"}), UsageError);
  EXPECT_THROW(names({"x/a.key", "x_a.key"}, Naming::kPath), UsageError);
  EXPECT_THROW(names({"a.key", "./a.key"}, Naming::kPath), UsageError);
  for (const Naming naming : {Naming::kFile, Naming::kPath, Naming::kHash}) {
    EXPECT_THROW(names({"a.key", "a.key"}, naming), UsageError);
  }
}

TEST(OutputNames, AreNeverTooLongAndStayApart) {
  const std::string start(240, 'n');
  const Names fitted = names({start + "01234567890.pag", start + "01234567891.pag"});
  for (const std::string& name : fitted) {
    EXPECT_EQ(name.size(), 255u);
    EXPECT_TRUE(name.ends_with(".txt"));
  }
  EXPECT_NE(fitted[0], fitted[1]);
  EXPECT_EQ(names({std::string(251, 'n')}).front().size(), 255u);
}

TEST(OutputNames, AreNotCutWithinACharacter) {
  std::string name = "n";
  while (name.size() < 254) name += "\xC3\xA9";
  const std::string fitted = names({name}).front();
  EXPECT_LE(fitted.size(), 255u);
  EXPECT_EQ(static_cast<unsigned char>(fitted[fitted.find('~') - 1]), 0xA9);
}

}  // namespace
}  // namespace dorvex::cli::output_names_test
