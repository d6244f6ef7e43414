// Pieces of HTML that the page and Markdown's HTML tables share.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dorvex/content.h"
#include "writers/options.h"
#include "writers/output.h"

namespace dorvex::content {

// Clean text with its markup characters as entities; line breaks as <br> on request.
std::string htmlEscaped(std::string_view text, bool breakLines = false);

// What the runs of a paragraph say, with their marks. footnotes: links to notes are made.
std::string htmlInline(const Paragraph& paragraph, const WriterOptions& options,
                       bool footnotes = true);

// "id" characters of a footnote.
std::string htmlId(std::string_view id);

// A comment with its replies, as a list item's content.
std::string htmlComment(const Comment& comment);

// A table element, a row at a time. Without a line feed in front or behind.
void putHtmlTable(const Table& table, const WriterOptions& options, Output& output);

}  // namespace dorvex::content
