#include "writers/html_writer.h"

#include <gtest/gtest.h>

#include "content/support/writing.h"

namespace dorvex::content::html_writer_test {
namespace {

using namespace testing;

constexpr Format kHtml = Format::kHtml;

// What stands in the page.
std::string within(const std::string& html) {
  const auto from = html.find("<main>\n") + 7;
  return html.substr(from, html.find("</main>") - from);
}

TEST(HtmlWriter, MakesASectionOfEachSlideAndAnAsideOfItsNotes) {
  Slide slide;
  slide.number = 2;
  slide.skipped = true;
  slide.title = "Tea & milk";
  slide.notes = {paragraph("a")};
  EXPECT_EQ(within(writtenSlide(kHtml, slide)),
            "<section class=\"slide skipped\" id=\"slide-2\">\n<h1>Tea &amp; milk</h1>\n"
            "<aside class=\"notes\">\n<p>a</p>\n</aside>\n</section>\n");
}

TEST(HtmlWriter, MarksHiddenSheetsOrLeavesThemOut) {
  const Sheet sheet{"One", true, {}};
  EXPECT_EQ(within(writtenSheet(kHtml, sheet)),
            "<section class=\"sheet hidden\">\n<h2>One</h2>\n</section>\n");
  WriterOptions options;
  options.dropSkipped = true;
  EXPECT_EQ(within(writtenSheet(kHtml, sheet, options)), "");
}

TEST(HtmlWriter, NestsLists) {
  const std::string html = within(writtenBody(
      kHtml, {item(0, ListKind::kBullet, "•", "a"), item(1, ListKind::kNumber, "1.", "b"),
              item(0, ListKind::kBullet, "•", "c")}));
  std::string flat = html;
  std::erase(flat, '\n');
  EXPECT_EQ(flat, "<ul><li>a<ol><li>b</li></ol></li><li>c</li></ul>");
}

TEST(HtmlWriter, LinksMarksToTheirNotes) {
  const Footnote note{"1", "†", false, {paragraph("Or milk.")}};
  EXPECT_EQ(within(writtenBody(kHtml, {noted("Tea", "1", "†")}, {}, {note})),
            "<p>Tea<sup><a href=\"#note-1\">†</a></sup></p>\n<section class=\"footnotes\">\n"
            "<aside id=\"note-1\">\n<p><sup>†</sup> Or milk.</p>\n</aside>\n</section>\n");
}

TEST(HtmlWriter, ShowsEachPictureOfAGallery) {
  Gallery gallery;
  gallery.images.resize(2);
  gallery.images[0].alt = "A pot";
  gallery.images[0].caption = "Brown";
  gallery.images[1].alt = "A cup";
  EXPECT_EQ(within(writtenBody(kHtml, {blockOf(gallery)})),
            "<figure>\n<p>A pot</p>\n</figure>\n<p class=\"caption\">Brown</p>\n"
            "<figure>\n<p>A cup</p>\n</figure>\n");
}

TEST(HtmlWriter, SaysTheLanguageWhereItIsOne) {
  const auto page = [](const std::string& language) {
    return written(kHtml, {}, [&](Sink& sink) {
      Metadata metadata;
      metadata.language = language;
      sink.document(Application::kPages, metadata);
    });
  };
  EXPECT_NE(page("pt_BR").find("<html lang=\"pt-BR\">"), std::string::npos);
  EXPECT_NE(page("\"><script>").find("<html>"), std::string::npos);
}

}  // namespace
}  // namespace dorvex::content::html_writer_test
