// Text and its marks as Markdown, GitHub's or pandoc's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dorvex/content.h"
#include "writers/options.h"

namespace dorvex::content {

// Where a text stands decides what of it could be taken for markup.
enum class MarkdownPlace {
  kBlock,    // at the beginning of lines; line breaks stay
  kHeading,  // in one line
  kCell,     // of a pipe table, in one line
};

// A clean text with everything escaped that would be markup.
std::string markdownEscaped(std::string_view text, MarkdownPlace place, bool pandoc);

// The runs with their marks, links, footnotes, changes and comments.
std::string markdownInline(const Paragraph& paragraph, MarkdownPlace place,
                           const WriterOptions& options);

// The target of a link, in brackets where it needs them.
std::string markdownTarget(std::string_view url);

// The label of a footnote: letters, digits and dashes.
std::string markdownLabel(std::string_view id);

// A comment with its replies in one HTML comment.
std::string markdownComment(const Comment& comment);
// Text that no rendering of the Markdown shows, likewise. Text is clean.
std::string markdownHidden(std::string text);

}  // namespace dorvex::content
