// A sink for tests that keeps all that it is given.
#pragma once

#include <vector>

#include "dorvex/content.h"

namespace dorvex::testing {

// Its tables can be read as long as what was read is there.
struct Recorder final : content::Sink {
  void document(content::Application theApplication,
                const content::Metadata& theMetadata) override {
    application = theApplication;
    metadata = theMetadata;
  }
  void slide(const content::Slide& slide) override { slides.push_back(slide); }
  void sheet(const content::Sheet& sheet) override { sheets.push_back(sheet); }
  void body(const content::Block& block) override { bodyBlocks.push_back(block); }
  void section(const content::Section& section) override { sections.push_back(section); }
  void floating(const content::FloatingPage& page) override { floatingPages.push_back(page); }
  void footnote(const content::Footnote& footnote) override { footnotes.push_back(footnote); }
  void end(const content::Summary& theSummary) override { summary = theSummary; }

  content::Application application = content::Application::kPages;
  content::Metadata metadata;
  std::vector<content::Slide> slides;
  std::vector<content::Sheet> sheets;
  std::vector<content::Block> bodyBlocks;
  std::vector<content::Section> sections;
  std::vector<content::FloatingPage> floatingPages;
  std::vector<content::Footnote> footnotes;
  content::Summary summary;
};

}  // namespace dorvex::testing
