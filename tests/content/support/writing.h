// Documents of a few blocks through a writer, for tests.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "content/support/blocks.h"
#include "dorvex/content.h"
#include "writers/options.h"

namespace dorvex::testing {

template <typename What>
content::Block blockOf(What what) {
  content::Block block;
  block.what = std::move(what);
  return block;
}

// What a writer of that format makes of a document that give hands it.
template <typename Give>
std::string written(content::Format format, content::WriterOptions options, Give give) {
  std::string text;
  options.format = format;
  const auto take = [&text](std::string_view bytes) { text += bytes; };
  const auto writer = content::makeWriter(options, {take, [](std::string_view) {}, take});
  give(*writer);
  writer->end({});
  return text;
}

inline std::string writtenSlide(content::Format format, const content::Slide& slide,
                                const content::WriterOptions& options = {}) {
  return written(format, options, [&](content::Sink& sink) {
    sink.document(content::Application::kKeynote, {});
    sink.slide(slide);
  });
}

inline std::string writtenSheet(content::Format format, const content::Sheet& sheet,
                                const content::WriterOptions& options = {}) {
  return written(format, options, [&](content::Sink& sink) {
    sink.document(content::Application::kNumbers, {});
    sink.sheet(sheet);
  });
}

// The body of a document of Pages, and a footnote where there is one.
inline std::string writtenBody(content::Format format, const std::vector<content::Block>& body,
                               const content::WriterOptions& options = {},
                               const std::vector<content::Footnote>& notes = {}) {
  return written(format, options, [&](content::Sink& sink) {
    sink.document(content::Application::kPages, {});
    for (const content::Block& block : body) sink.body(block);
    for (const content::Footnote& note : notes) sink.footnote(note);
  });
}

// A paragraph with a mark of a note at its end.
inline content::Block noted(const std::string& text, std::string id, std::string mark) {
  content::Paragraph paragraph;
  paragraph.text = text;
  paragraph.runs.resize(2);
  paragraph.runs[0].text = text;
  paragraph.runs[1].footnote = std::move(id);
  paragraph.runs[1].footnoteMark = std::move(mark);
  return blockOf(std::move(paragraph));
}

inline content::Block heading(content::Role role, unsigned level, std::string text) {
  content::Paragraph paragraph;
  paragraph.role = role;
  paragraph.level = level;
  paragraph.text = std::move(text);
  return blockOf(std::move(paragraph));
}

inline content::Block item(unsigned level, content::ListKind kind, std::string label,
                           std::string text) {
  content::Paragraph paragraph;
  paragraph.list = content::ListMark{level, kind, std::move(label)};
  paragraph.text = std::move(text);
  return blockOf(std::move(paragraph));
}

}  // namespace dorvex::testing
