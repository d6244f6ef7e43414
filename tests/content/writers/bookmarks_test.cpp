// Bookmarks as HTML has them.

#include <gtest/gtest.h>

#include <string>

#include "writers/html_writer.h"

namespace dorvex::content::bookmarks_test {
namespace {

Block marked(std::string text, std::string bookmark) {
  Paragraph paragraph;
  paragraph.text = text;
  paragraph.runs.emplace_back().text = std::move(text);
  paragraph.runs.back().bookmark = std::move(bookmark);
  Block block;
  block.what = std::move(paragraph);
  return block;
}

TEST(BookmarksInHtml, HaveOnePlaceThatLinksLeadTo) {
  std::string html;
  HtmlWriter writer(WriterOptions(), [&](std::string_view bytes) { html += bytes; });
  Sink& sink = writer;
  sink.document(Application::kPages, {});
  sink.body(marked("a", "C4EE-1"));
  sink.body(marked("b", "C4EE-1"));
  sink.body(marked("c", "\"x"));
  sink.end({});
  EXPECT_NE(html.find("<p><a id=\"C4EE-1\"></a>a</p>\n<p>b</p>\n<p><a id=\"-x\"></a>c</p>"),
            std::string::npos);
}

}  // namespace
}  // namespace dorvex::content::bookmarks_test
