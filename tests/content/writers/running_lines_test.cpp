// Headers and footers of sections, in each rendering.
#include <gtest/gtest.h>

#include "content/support/writing.h"

namespace dorvex::content::running_lines_test {
namespace {

using testing::paragraph;
using testing::written;

// Two sections of a paragraph each, of which the first has lines and a watermark.
std::string rendered(Format format) {
  Section first;
  first.headers[PageClass::kFirst] = {"", "Welcome", ""};
  first.headers[PageClass::kDefault] = {"Tea", "", "A--B"};
  first.footers[PageClass::kDefault] = {"", "Page ", "", {"", "Page [page number]", ""}};
  first.drawables[PageClass::kDefault] = {paragraph("Draft")};
  return written(format, {}, [&](Sink& sink) {
    sink.document(Application::kPages, {});
    sink.beginSection(first);
    sink.body(paragraph("one"));
    sink.beginSection({});
    sink.body(paragraph("two"));
  });
}

TEST(RunningLines, StandOnceInText) {
  EXPECT_EQ(rendered(Format::kText), "Welcome\nTea  A--B\nDraft\none\nPage [page number]\ntwo\n");
}

TEST(RunningLines, AreCommentsInMarkdown) {
  EXPECT_EQ(rendered(Format::kMarkdown),
            "<!-- Header, first page: Welcome -->\n\n<!-- Header: Tea / A- -B -->\n\n"
            "Draft\n\none\n\n<!-- Footer: Page [page number] -->\n\ntwo\n");
}

TEST(RunningLines, AreElementsOfHtml) {
  const std::string html = rendered(Format::kHtml);
  EXPECT_NE(
      html.find(
          "<header title=\"first page\"><p><span></span><span>Welcome</span>"
          "<span></span></p></header>\n"
          "<header><p><span>Tea</span><span></span><span>A--B</span></p></header>\n"
          "<p>Draft</p>\n<p>one</p>\n"
          "<footer><p><span></span><span>Page [page number]</span><span></span></p></footer>\n"
          "<p>two</p>\n"),
      std::string::npos)
      << html;
}

TEST(RunningLines, OfTheLastSectionStandBeforeWhatFollowsTheText) {
  Section section;
  section.footers[PageClass::kDefault] = {"foot", "", ""};
  const std::string text = written(Format::kText, {}, [&](Sink& sink) {
    sink.document(Application::kPages, {});
    sink.beginSection(section);
    sink.body(paragraph("one"));
    sink.floating({1, {paragraph("box")}});
  });
  EXPECT_EQ(text, "one\nfoot\nbox\n");
}

}  // namespace
}  // namespace dorvex::content::running_lines_test
