// Which documents to read: from arguments, folders and lists.
#pragma once

#include <cstdint>
#include <deque>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorvex::cli {

// A package that lies open as a folder: one with an application's ending, or
// with Index.zip or Index/Document.iwa in it.
bool isPackageDirectory(const std::filesystem::path& path);

// A path that ends as the applications' documents do, in any case: .pages, .key,
// .numbers.
bool hasDocumentName(const std::filesystem::path& path);

class PathList {
 public:
  virtual ~PathList() = default;
  // The next path; nothing at the end.
  virtual std::optional<std::string> next() = 0;
};

// Each path in turn. A folder that is no package is gone through in the order of
// its names, folders within it too, but not through symbolic links; of the regular
// files in it only those with a document's name count, unless all do. A folder that
// cannot be listed is given itself: reading it will say why.
std::unique_ptr<PathList> listPaths(std::vector<std::string> paths, bool allFiles);

// Each path of a list as it arrives, ended by a line feed or by NUL. Empty ones
// do not count. The stream must outlive it.
std::unique_ptr<PathList> readPaths(std::istream& list, char end);

}  // namespace dorvex::cli
