// Going on with an output file of an earlier run.
#pragma once

#include <string>
#include <unordered_set>

namespace dorvex::cli {

// The ids of the records in a file, a JSON line each; lines that are no whole
// record do not count. Nothing for a file that does not exist. Throws
// EnvironmentError when it cannot be read.
std::unordered_set<std::string> idsIn(const std::string& file);

// Opens the file for adding records: a last line that was not finished is cut
// off. Gives the descriptor, which is the caller's. Throws EnvironmentError.
int openForMore(const std::string& file);

}  // namespace dorvex::cli
