// A document as Markdown, GitHub's or pandoc's.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "writers/block_walk.h"
#include "writers/markdown_inline.h"
#include "writers/output.h"
#include "writers/shown_table.h"

namespace dorvex::content {

class MarkdownWriter final : public BlockWalk {
 public:
  MarkdownWriter(const WriterOptions& options, Output::Take take)
      : BlockWalk(options), output_(std::move(take)) {}

 private:
  // A list that is open.
  struct OpenList {
    bool numbered = false;
    unsigned number = 0;    // of the last item
    std::size_t width = 2;  // of its mark, which deeper lines are indented by
  };

  void putBeginning(const Metadata& metadata) override;
  void putEnd() override;
  void beginSlide(const Slide& slide, const Paragraph* title) override;
  void beginNotes() override;
  void endNotes() override;
  void endSlide() override {}
  void beginSheet(const Sheet& sheet) override;
  void endSheet() override {}
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

  void block(std::string text);
  void heading(unsigned level, const std::string& text);
  void putItem(const Paragraph& paragraph);
  std::string marksFor(const ListMark& mark);
  void pipeTable(const Table& table);
  void gridTable(const Table& table);
  bool needsGrid(const Table& table) const;
  std::string cellText(const ShownTable& shown, const ShownRow& row, std::size_t column) const;
  std::string cellText(const Cell& cell) const;
  void pipeRow(const std::vector<std::string>& cells);
  void indented(const std::string& lines);
  std::string escaped(std::string_view text, MarkdownPlace place) const;

  Output output_;
  std::vector<OpenList> lists_;  // outermost first
  std::string indent_;           // of a footnote
  std::string first_;            // stands before the next block in place of the indent
  bool any_ = false;
};

}  // namespace dorvex::content
