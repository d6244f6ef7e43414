// What the files of -o DIRECTORY are called.
#pragma once

#include <string>
#include <vector>

#include "path_list.h"

namespace dorvex::cli {

enum class Naming {
  kFile,  // as the document's file: report.pages.txt
  kPath,  // as its whole path: home_ann_report.pages.txt
  kHash,  // by its id, as records have it: 0123456789abcdef0123456789abcdef.txt
};

// A name for each document, with an ending. One that would be longer than names
// may be is cut, and told apart by the beginning of its id. Throws UsageError
// where two documents would have one name: neither is to overwrite the other.
std::vector<std::string> outputNames(const std::vector<ListedPath>& documents, Naming naming,
                                     const std::string& ending);

}  // namespace dorvex::cli
