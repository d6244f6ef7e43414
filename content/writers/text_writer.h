// A document as plain text: what a person would read aloud. Slides and sheets end with a
// form feed, and the columns of tables stand below each other.
#pragma once

#include <string>
#include <utility>

#include "writers/block_walk.h"
#include "writers/output.h"

namespace dorvex::content {

class TextWriter final : public BlockWalk {
 public:
  TextWriter(const WriterOptions& options, Output::Take take)
      : BlockWalk(options), output_(std::move(take)) {}

 private:
  void putBeginning(const Metadata&) override {}
  void putEnd() override;
  void beginSlide(const Slide& slide, const Paragraph* title) override;
  void beginNotes() override;
  void endNotes() override {}
  void endSlide() override { endPage(); }
  void beginSheet(const Sheet& sheet) override;
  void endSheet() override { endPage(); }
  void put(const Paragraph& paragraph) override;
  void put(const Table& table) override;
  void put(const Chart& chart) override;
  void put(const Equation& equation) override;
  void put(const Media& media, const std::string& alt, const std::string& link) override;
  void putCaption(const std::string& text) override;
  void putFootnote(const Footnote& footnote) override;
  void putRunning(Running place, PageClass pages, const HeaderText& text) override;
  void put(const Comment& comment) override;
  void putComments(const std::vector<Comment>& comments) override;

  void line(const std::string& text);
  void endPage() { output_.put('\f'); }

  Output output_;
  std::string lead_;  // stands before the next line
};

}  // namespace dorvex::content
