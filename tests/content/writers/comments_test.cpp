// Comments on text as the writers have them.

#include <gtest/gtest.h>

#include <string>

#include "writers/html_writer.h"
#include "writers/markdown_writer.h"
#include "writers/text_writer.h"

namespace dorvex::content::comments_test {
namespace {

// A paragraph with a comment on two runs, and another one on the second.
Block commented() {
  const Comment comment{"Ann", "2024-01-02T03:04:05Z", "Why?", {}};
  const Comment other{"Bob", "", "So.", {}};
  Paragraph paragraph;
  paragraph.text = "tea time";
  paragraph.runs.resize(2);
  paragraph.runs[0].text = "tea";
  paragraph.runs[0].bold = true;
  paragraph.runs[0].comments = {comment};
  paragraph.runs[1].text = " time";
  paragraph.runs[1].comments = {comment, other};
  Block block;
  block.what = paragraph;
  return block;
}

template <typename Writer>
std::string written(CommentPlace place) {
  std::string text;
  WriterOptions options;
  options.comments = place;
  Writer writer(options, [&](std::string_view bytes) { text += bytes; });
  Sink& sink = writer;
  sink.document(Application::kPages, {});
  sink.body(commented());
  sink.end({});
  return text;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

TEST(CommentsOnText, AreShownOnceBehindTheirRange) {
  EXPECT_EQ(written<MarkdownWriter>(CommentPlace::kInline),
            "**tea** time<!-- Ann, 2024-01-02: Why? --><!-- Bob: So. -->\n");
}

TEST(CommentsOnText, AreShownOnceInEveryFormatAndPlace) {
  for (const CommentPlace place : {CommentPlace::kInline, CommentPlace::kEnd}) {
    for (const std::string& text :
         {written<MarkdownWriter>(place), written<HtmlWriter>(place), written<TextWriter>(place)}) {
      EXPECT_EQ(countOf(text, "Why?"), 1U) << text;
      EXPECT_EQ(countOf(text, "So."), 1U) << text;
    }
  }
}

}  // namespace
}  // namespace dorvex::content::comments_test
