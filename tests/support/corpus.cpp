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

namespace {

// More documents, in a folder of their own beside the corpus.
fs::path contentFolder() { return corpusFolder().lexically_normal().parent_path() / "content"; }

std::vector<fs::path> documentFolders() {
  std::vector<fs::path> folders = {corpusFolder() / "documents"};
  if (fs::is_regular_file(contentFolder() / "reader.json"))
    folders.push_back(contentFolder() / "documents");
  return folders;
}

}  // namespace

bool hasCorpus() { return fs::is_regular_file(corpusFolder() / "expected.json"); }

std::string corpusIsAbsent() {
  return "no folder of real documents at " + corpusFolder().string() +
         ": set DORVEX_CORPUS to test with them";
}

std::vector<fs::path> corpusExpectations() {
  std::vector<fs::path> files = {corpusFolder() / "expected.json"};
  if (documentFolders().size() > 1) files.push_back(contentFolder() / "reader.json");
  return files;
}

std::vector<std::string> corpusDocuments() {
  std::vector<std::string> names;
  if (!hasCorpus()) return names;
  for (const fs::path& folder : documentFolders()) {
    for (const auto& entry : fs::directory_iterator(folder))
      names.push_back(entry.path().filename().string());
  }
  std::ranges::sort(names);
  return names;
}

fs::path corpusPath(const std::string& name) {
  const auto folders = documentFolders();
  const auto holding = std::ranges::find_if(
      folders, [&name](const fs::path& folder) { return fs::exists(folder / name); });
  return (holding != folders.end() ? *holding : folders.front()) / name;
}

Stream& addCorpusDocument(BareHost& host, const std::string& name) {
  const fs::path path = corpusPath(name);
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
