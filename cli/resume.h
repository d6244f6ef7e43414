// Going on with an output file of an earlier run.
#pragma once

#include <string>
#include <unordered_set>

namespace dorvex::cli {

// Documents by their ids.
using Ids = std::unordered_set<std::string>;
// The words that records have for results.
using Statuses = std::unordered_set<std::string>;

// The documents that are done according to a file of records: those whose last
// record there has none of the statuses that are to be read again. A last line
// without its end does not count, nor does a line that is damaged. Nothing for a
// file that does not exist. Throws EnvironmentError when the file cannot be read
// or is something else.
Ids doneIn(const std::string& file, const Statuses& again);

// A descriptor, the caller's, for adding to such a file, which need not exist.
struct ResumedFile {
  int fd;
  Ids done;
};
// Takes the file for this run alone and cuts an unfinished line off. Throws
// EnvironmentError, with the file untouched, when another run has it, or when it
// is something else.
ResumedFile resumeInto(const std::string& file, const Statuses& again);

// Takes an output file for this run alone, where the file system knows locks.
// Throws EnvironmentError when another run has it.
void lockOutput(int fd, const std::string& file);

}  // namespace dorvex::cli
