// Keeps the parts of a document that are handed to a sink.
#pragma once

#include <vector>

#include "dorvex/content.h"

namespace dorvex::testing {

class Parts : public content::Sink {
 public:
  void document(content::Application, const content::Metadata& metadata) override {
    this->metadata = metadata;
  }
  void slide(const content::Slide& slide) override { slides.push_back(slide); }
  void sheet(const content::Sheet& sheet) override { sheets.push_back(sheet); }
  void body(const content::Block& block) override { blocks.push_back(block); }
  void section(const content::Section& section) override { sections.push_back(section); }
  void floating(const content::FloatingPage& page) override { pages.push_back(page); }
  void footnote(const content::Footnote& note) override { footnotes.push_back(note); }
  void end(const content::Summary& summary) override { this->summary = summary; }

  content::Metadata metadata;
  std::vector<content::Slide> slides;
  std::vector<content::Sheet> sheets;
  std::vector<content::Block> blocks;
  std::vector<content::Section> sections;
  std::vector<content::FloatingPage> pages;
  std::vector<content::Footnote> footnotes;
  content::Summary summary;
};

}  // namespace dorvex::testing
