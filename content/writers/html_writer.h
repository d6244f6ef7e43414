// A document as one self-contained page of HTML, without scripts.
#pragma once

#include <string>
#include <unordered_set>
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
  // A list that is open.
  struct OpenList {
    std::string element;
    unsigned number = 0;  // of the last item
  };

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
  void putLink(const std::string& url) override;
  void putFootnote(const Footnote& footnote) override;
  void putRunning(Running place, PageClass pages, const HeaderText& text) override;
  void put(const Comment& comment) override;
  void putComments(const std::vector<Comment>& comments) override;

  void line(const std::string& html);
  void element(const std::string& name, const std::string& content);
  std::string content(const Paragraph& paragraph);
  void putItem(const Paragraph& paragraph);
  std::string itemTag(const ListMark& mark);
  void leaveLists(std::size_t depth);
  void leaveNotes();

  Output output_;
  std::vector<OpenList> lists_;                // outermost first
  std::unordered_set<std::string> bookmarks_;  // that have their place
  std::string mark_;                           // of a footnote, that stands before its text
  bool inFootnotes_ = false;
};

}  // namespace dorvex::content
