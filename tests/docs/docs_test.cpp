#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing::docs_test {
namespace {

namespace fs = std::filesystem;

const fs::path kProject = DORVEX_SOURCE_DIR;

// All matches of a pattern's first group.
std::vector<std::string> findAll(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern);
  std::vector<std::string> found;
  for (std::sregex_iterator it(text.begin(), text.end(), regex), end; it != end; ++it)
    found.push_back((*it)[1]);
  return found;
}

// The block that follows a text of the page.
std::string blockBehind(const std::string& page, const std::string& text) {
  const std::size_t fence = page.find("```", page.find(text));
  const std::size_t start = page.find('\n', fence) + 1;
  return page.substr(start, page.find("```", start) - start);
}

// The bytes of the example's block.
std::string hexBlock(const std::string& page) {
  std::istringstream digits(blockBehind(page, "## An example"));
  std::string bytes;
  for (std::string byte; digits >> byte;) bytes += static_cast<char>(std::stoi(byte, nullptr, 16));
  return bytes;
}

// A page without what it shows as code: a link in there is an example.
std::string withoutCode(const std::string& page) {
  static const std::regex kCode("`[^`\n]+`");
  return std::regex_replace(page, kCode, "");
}

// The name of every test in the sources, as "Suite.Name".
std::set<std::string> namesOfAllTests() {
  std::set<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(kProject / "tests")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string source = readFile(entry.path());
    static const std::regex kTest(R"(\bTEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\s*\))");
    for (std::sregex_iterator it(source.begin(), source.end(), kTest), end; it != end; ++it)
      names.insert((*it)[1].str() + "." + (*it)[2].str());
  }
  return names;
}

TEST(Docs, ShowTheTokenStreamThatTheModuleGives) {
  BareHost host;
  Stream& document = host.addDocument(zip({{"Index/Document.iwa", iwa({storage(1, {"Hello"})})}}));
  const std::string page = readFile(kProject / "docs" / "token-stream.md");
  EXPECT_EQ(pump(theReader().interface(), host, &document).stream(), hexBlock(page));
}

TEST(Docs, ShowTheFirstTextsOfTheSample) {
  BareHost host;
  Stream& document = host.addDocument(readFile(kProject / "samples" / "keynote-sample.key"));
  std::string printed;
  for (const std::string& text : textsOf(pump(theReader().interface(), host, &document).stream()))
    printed += text + "\n";
  const std::string shown = blockBehind(readFile(kProject / "README.md"), "They begin so:");
  EXPECT_EQ(printed.substr(0, shown.size()), shown);
}

TEST(Docs, ShowTheExampleThatIsCompiled) {
  const std::string example = readFile(kProject / "host" / "examples" / "texts.cpp");
  std::istringstream lines(blockBehind(readFile(kProject / "README.md"), "## Use the library"));
  for (std::string line; std::getline(lines, line);)
    EXPECT_NE(example.find(line), std::string::npos) << line;
}

TEST(Docs, ShowTheExampleInCThatIsCompiled) {
  const std::string example = readFile(kProject / "host" / "examples" / "texts.c");
  const std::string page = readFile(kProject / "docs" / "c-interface.md");
  std::istringstream lines(blockBehind(page, "# Reading documents from C"));
  for (std::string line; std::getline(lines, line);)
    EXPECT_NE(example.find(line), std::string::npos) << line;
}

TEST(Docs, NameTestsThatExistForEveryOddity) {
  const std::set<std::string> tests = namesOfAllTests();
  const std::string page = readFile(kProject / "docs" / "oddities.md");
  const auto named = findAll(page, R"(`([A-Z]\w+\.[A-Z]\w+)`)");
  EXPECT_GT(named.size(), 40U);
  for (const std::string& name : named) EXPECT_TRUE(tests.contains(name)) << name;
}

TEST(Docs, LinkOnlyToFilesThatExist) {
  std::vector<fs::path> pages = {kProject / "README.md"};
  for (const auto& entry : fs::directory_iterator(kProject / "docs"))
    if (entry.path().extension() == ".md") pages.push_back(entry.path());
  for (const fs::path& page : pages)
    for (const std::string& link : findAll(withoutCode(readFile(page)), R"(\]\(([^)#:]+)\))"))
      EXPECT_TRUE(fs::exists(page.parent_path() / link)) << page.filename() << ": " << link;
}

}  // namespace
}  // namespace dorvex::testing::docs_test
