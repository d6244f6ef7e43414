// A view of texts for people and indexes. It loses things: what the reader
// printed as an escape and what a document really holds of the kind cannot be
// told apart. The reader's own output is never touched.
#pragma once

#include <string>
#include <unordered_set>
#include <vector>

namespace dorvex::cli {

// One text. Printed carriage returns (\r), vertical tabs (\013), form feeds
// (\014) and the separators U+2028 and U+2029 become line feeds, a carriage
// return with a line feed behind it one of them. Doubled backslashes become
// single. Placeholders (U+FFFC) go.
std::string tidyText(const std::string& text);

// The texts of one document: each tidied once, without those that hold nothing
// but white space then, and without exact repeats of earlier ones.
class Tidier {
 public:
  // False for a text to leave out. Otherwise it is tidied in place.
  bool take(std::string& text);

 private:
  // Hashes would be smaller, and could lose a text.
  std::unordered_set<std::string> seen_;
};

}  // namespace dorvex::cli
