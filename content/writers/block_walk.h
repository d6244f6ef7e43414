// What the writers for people have in common: the parts of a document in their order,
// lists put together from paragraphs, and what each drawable shows.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "dorvex/content.h"
#include "writers/options.h"

namespace dorvex::content {

// Where a line stands that runs through all pages of a section.
enum class Running { kHeader, kFooter };

// A writer says how each thing looks; BlockWalk says in which order things come.
class BlockWalk : public Sink {
 public:
  explicit BlockWalk(WriterOptions options) : options_(std::move(options)) {}

  void slide(const Slide& slide) final;
  void sheet(const Sheet& sheet) final;
  void beginSection(const Section& section) final;
  void body(const Block& block) final { visit(block); }
  void floating(const FloatingPage& page) final;
  void footnote(const Footnote& footnote) final;
  void document(Application application, const Metadata& metadata) final;
  void end(const Summary& summary) final;

 protected:
  const WriterOptions& options() const { return options_; }
  Application application() const { return application_; }

  virtual void putBeginning(const Metadata& metadata) = 0;
  virtual void putEnd() = 0;
  // The title is that of the placeholder, or a paragraph made of the slide's title; null
  // where there is none.
  virtual void beginSlide(const Slide& slide, const Paragraph* title) = 0;
  virtual void beginNotes() = 0;
  virtual void endNotes() = 0;
  virtual void endSlide() = 0;
  virtual void beginSheet(const Sheet& sheet) = 0;
  virtual void endSheet() = 0;

  virtual void put(const Paragraph& paragraph) = 0;
  virtual void put(const Table& table) = 0;
  virtual void put(const Chart& chart) = 0;
  virtual void put(const Equation& equation) = 0;
  // link is where the file is, or empty.
  virtual void put(const Media& media, const std::string& alt, const std::string& link) = 0;
  // A line that belongs to what came before: its title or caption.
  virtual void putCaption(const std::string& text) = 0;
  // Where a click on the drawable that came before leads, outside the document.
  virtual void putLink(const std::string&) {}
  virtual void putFootnote(const Footnote& footnote) = 0;
  // What stands at the head or the foot of the pages of a section, for one class of them.
  virtual void putRunning(Running place, PageClass pages, const HeaderText& text) = 0;
  // A drawable's comments, where they are shown in their place.
  virtual void put(const Comment& comment) = 0;
  virtual void putComments(const std::vector<Comment>& comments) = 0;

  void visit(const std::vector<Block>& blocks);
  void visit(const Block& block);
  // Keeps the comments of a paragraph for the end where they belong there.
  void noteComments(const Paragraph& paragraph);

 private:
  void noteComments(const std::vector<Comment>& comments);
  void comments(const std::vector<Comment>& comments);
  void media(const Media& media, const std::string& alt);
  void gallery(const Gallery& gallery);
  void paragraph(const Paragraph& paragraph);
  void putHeld();
  void endSection();

  WriterOptions options_;
  Application application_ = Application::kKeynote;
  const Box* shownAsTitle_ = nullptr;
  std::vector<Comment> forTheEnd_;
  std::optional<Paragraph> held_;            // whose end was inserted, until the next one comes
  std::map<PageClass, HeaderText> footers_;  // of the section, until it ends
};

}  // namespace dorvex::content
