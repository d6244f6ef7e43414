// Links of drawables as the writers have them.

#include <gtest/gtest.h>

#include <string>

#include "writers/html_writer.h"
#include "writers/markdown_writer.h"

namespace dorvex::content::links_test {
namespace {

template <typename Writer>
std::string written(const std::string& link) {
  std::string text;
  Writer writer(WriterOptions(), [&](std::string_view bytes) { text += bytes; });
  Sink& sink = writer;
  sink.document(Application::kKeynote, {});
  Block film;
  film.what = Media{MediaKind::kMovie, std::nullopt, nullptr, ""};
  film.link = link;
  sink.body(film);
  sink.end({});
  return text;
}

TEST(LinksOfDrawables, AreShownBehindThem) {
  EXPECT_EQ(written<MarkdownWriter>("https://tea.example/a_b"),
            "[https://tea.example/a_b](https://tea.example/a_b)\n");
  EXPECT_NE(written<HtmlWriter>("https://tea.example/?a&b")
                .find("<p><a href=\"https://tea.example/?a&amp;b\">https://tea.example/?a&amp;b"),
            std::string::npos);
}

TEST(LinksOfDrawables, AreNotShownWhereTheyLeadNowhere) {
  for (const char* link : {"", "?slide=+1", "#bookmark", "javascript:alert(1)"})
    EXPECT_EQ(written<MarkdownWriter>(link), "") << link;
}

}  // namespace
}  // namespace dorvex::content::links_test
