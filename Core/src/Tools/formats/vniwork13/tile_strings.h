// The pieces of getTileStrings (iwa_utils.h).
#pragma once

#include <string>
#include <string_view>

namespace vn::iwork13 {

// A string of a table list with its escapes resolved: two backslashes to one,
// and a backslash with three digits to the byte that they denote.
std::string unescapeListString(std::string_view text);

// Turns backslash, n into a line feed. Of backslash, t and the byte behind it
// it leaves only the t: readers of tiles have always seen cells that way, and a
// tab here would change their text. Not the routine of the text sweep.
void replaceAllLFsAndTabs(std::string& value);

// The number of one cell record as text, six significant digits; empty where
// the record holds none.
std::string getNumericCellValue(const std::string& cell);

}  // namespace vn::iwork13
