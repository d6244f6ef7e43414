// Whether a rendering is what its format says. Each function says what is wrong with one,
// or nothing where all is well.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dorvex::testing {

// Valid UTF-8, without control characters but those.
std::string flawOfText(std::string_view text, std::string_view allowedControls);

// One JSON value that has no key twice, and is as a JSON Schema says: the schema is its
// text, of which patterns are not looked at. lines: it stands in one line.
std::string flawOfJson(std::string_view text, std::string_view schema, bool oneLine);

// Every element ends where it should, attributes are quoted, nothing links to a script.
std::string flawOfHtml(std::string_view text);

// Every pipe table has a rule, and as many cells in each row; the lines of a grid table
// are equally wide; nothing links to a script; fences and pandoc's boxes are closed.
std::string flawOfMarkdown(std::string_view text);

// Fields as RFC 4180 has them, as many in each row.
std::string flawOfCsv(std::string_view text, char delimiter);

// The rows of what has no flaw.
std::vector<std::vector<std::string>> csvRows(std::string_view text, char delimiter);

}  // namespace dorvex::testing
