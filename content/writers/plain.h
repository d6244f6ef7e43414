// Text as every writer but JSON's gives it.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "dorvex/content.h"
#include "writers/options.h"

namespace dorvex::content {

// Valid UTF-8 without control characters but U+000A and the tab, which U+2028 and
// U+2029 become the first of.
std::string cleanText(std::string_view text);

// The runs that are shown, one for a paragraph without marks. Their texts are clean.
std::vector<Run> shownRuns(const Paragraph& paragraph, ShownChanges changes);

// Their texts joined.
std::string shownText(const Paragraph& paragraph, ShownChanges changes);

// The paragraphs that are shown of one, with the runs that are: several where their ends
// are deleted, and what was deleted is shown.
std::vector<Paragraph> shownParagraphs(const Paragraph& paragraph, ShownChanges changes);

// What two paragraphs of the original were before the end of the first was inserted. Of
// one that was inserted wholly nothing is left, nor of its form.
Paragraph joinedOriginal(Paragraph first, Paragraph next);

// What a cell shows, clean.
std::string shownText(const Cell& cell);

// Whether a cell stands to the right, as numbers do.
bool standsRight(const Cell& cell);

// Of a chart's value: its number or date, clean; empty for none.
std::string valueText(const ChartValue& value);

// 1 for a title, 1 to 6 for a heading, 0 for other paragraphs.
unsigned headingLevel(const Paragraph& paragraph);

// Levels of lists below the first; items that are deeper stand there.
inline constexpr unsigned kDeepestList = 12;

// A link that a reader may follow: of the schemes of the web, mail, phone and files, or
// relative. Others, which could be scripts, are empty.
std::string safeLink(std::string_view url);

// "first page" of the pages that a header or footer is for; empty for all others.
std::string_view nameOfPages(PageClass pages);

// The parts of a header or footer that are not empty, clean and in one line.
std::string joinedParts(const HeaderText& text, std::string_view separator);

// What is shown at the left, in the center, at the right.
std::array<std::string_view, 3> shownParts(const HeaderText& text);

// "Ann, 2024-05-06" of a comment or change; either may be missing.
std::string byline(std::string_view author, std::string_view date);

}  // namespace dorvex::content
