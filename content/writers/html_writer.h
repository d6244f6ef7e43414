// A document as one self-contained page of HTML, without scripts.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "writers/block_walk.h"
#include "writers/output.h"

namespace dorvex::content {

class HtmlWriter final : public BlockWalk {
 public:
  HtmlWriter(const WriterOptions& options, Output::Take take)
      : BlockWalk(options), output_(std::move(take)) {}

 private:
  void putBeginning(const Metadata& metadata) override;
  void putEnd() override;
  void beginSlide(const Slide& slide, const Paragraph* title) override;
  void beginNotes() override;
  void endNotes() override;
  void endSlide() override;
  void beginSheet(const Sheet& sheet) override;
  void endSheet() override;
  void put(const Paragraph& paragraph) override;
  void put(const Table& table) override;
  void put(const Chart& chart) override;
  void put(const Equation& equation) override;
  void put(const Media& media, const std::string& alt, const std::string& link) override;
  void putCaption(const std::string& text) override;
  void putFootnote(const Footnote& footnote) override;
  void put(const Comment& comment) override;
  void putComments(const std::vector<Comment>& comments) override;

  void line(const std::string& html);
  void element(const std::string& name, const std::string& content);
  void putItem(const Paragraph& paragraph);
  void leaveLists(std::size_t depth);
  void leaveNotes();

  Output output_;
  std::vector<std::string> lists_;  // the elements that are open, outermost first
  bool inFootnotes_ = false;
};

}  // namespace dorvex::content
