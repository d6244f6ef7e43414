#include "support/corpus.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "support/package_writer.h"

namespace dorvex::testing {

namespace fs = std::filesystem;

fs::path corpusFolder() {
  const char* folder = std::getenv("DORVEX_CORPUS");
  return folder != nullptr ? folder : DORVEX_CORPUS;
}

bool hasCorpus() { return fs::is_regular_file(corpusFolder() / "expected.json"); }

std::string corpusIsAbsent() {
  return "no folder of real documents at " + corpusFolder().string() +
         ": set DORVEX_CORPUS to test with them";
}

std::vector<std::string> corpusDocuments() {
  std::vector<std::string> names;
  if (!hasCorpus()) return names;
  for (const auto& entry : fs::directory_iterator(corpusFolder() / "documents"))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

Stream& addCorpusDocument(BareHost& host, const std::string& name) {
  const fs::path path = corpusFolder() / "documents" / name;
  if (fs::is_directory(path)) return host.addDirectoryDocument(path / "Index" / "Document.iwa");
  return host.addDocument(readFile(path), path.string());
}

std::string testNameOf(const std::string& document) {
  std::string name = document;
  std::ranges::replace_if(
      name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
  return name;
}

}  // namespace dorvex::testing
