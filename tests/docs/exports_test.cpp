// The page of the exported functions says what is so.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/package_writer.h"

namespace dorvex::testing::exports_test {
namespace {

namespace fs = std::filesystem;

const fs::path kProject = DORVEX_SOURCE_DIR;
const fs::path kSources = kProject / "Core" / "src";

struct Row {
  std::string name;
  std::string header;
  std::string caller;
  std::string test;
};

std::vector<Row> rowsOfThePage() {
  static const std::regex kRow(R"(^\| `([^`]+)` \| `([^`]+)` \| ([^|]+) \| `([^`]+)` \|$)");
  std::istringstream page(readFile(kProject / "docs" / "exports.md"));
  std::vector<Row> rows;
  std::smatch cells;
  for (std::string line; std::getline(page, line);)
    if (std::regex_match(line, cells, kRow))
      rows.push_back({cells[1], cells[2], cells[3], cells[4]});
  return rows;
}

// A demangled name as people write it.
std::string readable(std::string name) {
  static const std::vector<std::pair<std::regex, std::string>> kRules = {
      {std::regex(R"(, std::char_traits<[\w ]+>, std::allocator<[\w ]+> >)"), ">"},
      {std::regex(R"(, std::allocator<[\w ]+> >)"), ">"},
      {std::regex(R"(std::__cxx11::)"), "std::"},
      {std::regex(R"(std::basic_string<char>)"), "std::string"},
      {std::regex(R"(std::basic_string<wchar_t>)"), "std::wstring"},
      {std::regex(R"(\[abi:cxx11\])"), ""}};
  for (const auto& [pattern, text] : kRules) name = std::regex_replace(name, pattern, text);
  return name;
}

// The functions and tables of the list that is compared with the built module.
std::multiset<std::string> namesOfTheList() {
  std::istringstream list(readFile(kProject / "tests" / "module" / "exports.txt"));
  std::multiset<std::string> names;
  for (std::string line; std::getline(list, line);)
    if (!line.empty() && line[0] != '#' && !line.starts_with("class "))
      names.insert(readable(line));
  return names;
}

// "startsWith" of "vn::string::startsWith(std::string const&, std::string const&)".
std::string identifier(const std::string& name) {
  const std::string qualified = name.substr(0, name.find('('));
  return qualified.substr(qualified.find_last_of(":~") + 1);
}

bool mentions(const std::string& text, const std::string& word) {
  return std::regex_search(text, std::regex("\\b" + word + "\\b"));
}

// The error classes are declared, and tested, through one macro over their list.
std::string withErrorClasses(const std::string& text) {
  static const std::string kClasses = readFile(kSources / "Tools/vennik/vnexcept/vnerrorcode.h");
  return mentions(text, "VN_ERROR_CODES") ? text + kClasses : text;
}

// The sources of the tests by the tests in them, "Suite.Name".
std::map<std::string, fs::path> filesOfTests() {
  static const std::regex kTest(R"(\bTEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\s*\))");
  std::map<std::string, fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(kProject / "tests")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string source = readFile(entry.path());
    for (std::sregex_iterator it(source.begin(), source.end(), kTest), end; it != end; ++it)
      files[(*it)[1].str() + "." + (*it)[2].str()] = entry.path();
  }
  return files;
}

// All sources of the reader and of the format library, one behind the other.
std::string sourcesOfTheReader() {
  std::string sources;
  for (const char* folder : {"Readers/dorvexsr", "Tools/formats/vniwork13"})
    for (const auto& entry : fs::directory_iterator(kSources / folder))
      if (entry.path().extension() == ".cpp") sources += readFile(entry.path());
  return sources;
}

TEST(ExportsPage, ListsEveryExportedNameOnce) {
  std::multiset<std::string> names;
  for (const Row& row : rowsOfThePage()) names.insert(row.name);
  EXPECT_GT(names.size(), 150U);
  EXPECT_EQ(names, namesOfTheList());
}

TEST(ExportsPage, NamesTheHeaderThatDeclaresIt) {
  for (const Row& row : rowsOfThePage()) {
    ASSERT_TRUE(fs::exists(kSources / row.header)) << row.header;
    EXPECT_TRUE(mentions(withErrorClasses(readFile(kSources / row.header)), identifier(row.name)))
        << row.name;
  }
}

TEST(ExportsPage, NamesATestThatExistsInAFileThatKnowsTheName) {
  const auto files = filesOfTests();
  for (const Row& row : rowsOfThePage()) {
    const auto file = files.find(row.test);
    ASSERT_NE(file, files.end()) << row.name << ": " << row.test;
    std::string word = identifier(row.name);
    if (word == "writeError") word = "writeSingleError";  // the only way to it
    EXPECT_TRUE(mentions(withErrorClasses(readFile(file->second)), word)) << row.name;
  }
}

TEST(ExportsPage, KnowsWhichToolsTheReaderCalls) {
  const std::string reader = sourcesOfTheReader();
  for (const Row& row : rowsOfThePage()) {
    if (!row.name.starts_with("vnos_") && !row.name.starts_with("vn::string::")) continue;
    const bool called = std::regex_search(reader, std::regex("\\b" + identifier(row.name) + "\\("));
    EXPECT_EQ(row.caller, called ? "the reader" : "programs") << row.name;
  }
}

}  // namespace
}  // namespace dorvex::testing::exports_test
