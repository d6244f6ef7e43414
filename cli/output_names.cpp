#include "output_names.h"

#include <algorithm>
#include <filesystem>
#include <unordered_map>

#include "document_id.h"
#include "exit_status.h"

namespace dorvex::cli {
namespace {

constexpr std::size_t kLongestOutputName = 255;
constexpr std::size_t kDigitsThatTellApart = 8;

// A directory may be named with a slash behind it.
std::string fileName(const std::filesystem::path& path) {
  return (path.has_filename() ? path : path.parent_path()).filename();
}

std::string pathAsName(const std::filesystem::path& path) {
  std::string name = path.lexically_normal().relative_path();
  if (name.ends_with('/')) name.pop_back();
  std::replace(name.begin(), name.end(), '/', '_');
  return name;
}

std::string nameOf(const ListedPath& document, Naming naming) {
  if (document.isStandardInput) return "standard-input";
  switch (naming) {
    case Naming::kPath:
      return pathAsName(document.path);
    case Naming::kHash:
      return documentId(document.path);
    case Naming::kFile:
      break;
  }
  return fileName(document.path);
}

// Not within a character of UTF-8.
std::string cut(std::string name, std::size_t length) {
  while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
  name.resize(length);
  return name;
}

std::string fitted(std::string name, const std::string& path, const std::string& ending) {
  if (name.size() + ending.size() <= kLongestOutputName) return name + ending;
  const std::string mark = "~" + documentId(path).substr(0, kDigitsThatTellApart) + ending;
  return cut(std::move(name), kLongestOutputName - mark.size()) + mark;
}

}  // namespace

std::vector<std::string> outputNames(const std::vector<ListedPath>& documents, Naming naming,
                                     const std::string& ending) {
  std::vector<std::string> names;
  std::unordered_map<std::string, std::string> pathOf;
  for (const ListedPath& document : documents) {
    names.push_back(fitted(nameOf(document, naming), document.path, ending));
    const auto [other, isNew] = pathOf.emplace(names.back(), document.path);
    if (isNew) continue;
    const std::string both = document.path == other->second
                                 ? document.path + " is named twice"
                                 : other->second + " and " + document.path + " would both become " +
                                       names.back() +
                                       " (--name path or --name hash tells them apart)";
    throw UsageError(both + "; nothing was written");
  }
  return names;
}

}  // namespace dorvex::cli
