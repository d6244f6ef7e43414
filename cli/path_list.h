// Which documents to read: from arguments, folders and lists.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace dorvex::cli {

// A package that lies open as a folder: one with an application's ending, or
// with Index.zip or Index/Document.iwa in it.
bool isPackageDirectory(const std::filesystem::path& path);

// A path that ends as the applications' documents do, in any case: .pages, .key,
// .numbers.
bool hasDocumentName(const std::filesystem::path& path);

// A document to read.
struct ListedPath {
  std::string path;              // as it was given or found
  bool isStandardInput = false;  // then the path is "-"
  std::error_code fault = {};    // a folder that cannot be gone through: nothing to read
};

class PathList {
 public:
  virtual ~PathList() = default;
  // The next path; nothing at the end. Throws EnvironmentError where the list
  // itself cannot be read.
  virtual std::optional<ListedPath> next() = 0;
};

// What a command is to read.
struct InputOptions {
  std::vector<std::string> paths;
  std::string filesFrom;  // a list instead, - for standard input; empty for none
  bool nul = false;       // paths of the list end with NUL
  bool allFiles = false;  // of folders, whatever their names
};
std::unique_ptr<PathList> listOf(const InputOptions& options);

// False where that is one document for certain.
bool mayBeSeveral(const InputOptions& options);

// Each path in turn, - for standard input. A folder that is no package is gone
// through in the order of its names, folders within it too, but not through
// symbolic links; of what is in it only files with a document's name count,
// unless all do, and packages. A folder that cannot be gone through comes with
// its fault, behind what could be found in it.
std::unique_ptr<PathList> listPaths(std::vector<std::string> paths, bool allFiles);

// Each path of a list in a file, - for standard input, as it arrives, ended by a
// line feed, maybe with a carriage return before it, or by NUL. Empty ones do not
// count. Throws EnvironmentError, also for NUL in a line.
std::unique_ptr<PathList> readPaths(const std::string& file, char end);

}  // namespace dorvex::cli
