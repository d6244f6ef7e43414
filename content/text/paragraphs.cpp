#include "text/paragraphs.h"

#include <utility>

#include "graph/utf8.h"

namespace dorvex::content {

void ParagraphText::setMarks(const Marks& marks) {
  marks_ = marks;
  goesOn_ = !pieces_.empty() && pieces_.back().isText() && pieces_.back().marks == marks_;
}

ParagraphText::Piece& ParagraphText::addPiece() {
  left_ = left_ || marks_.deletion == nullptr;
  return pieces_.emplace_back(Piece{marks_, {}, {}, FieldKind::kNone, false});
}

std::string& ParagraphText::textPiece() {
  if (!std::exchange(goesOn_, true)) addPiece();
  return pieces_.back().text;
}

void ParagraphText::append(std::string_view text) { textPiece() += text; }

void ParagraphText::append(char32_t character) { appendCharacter(textPiece(), character); }

void ParagraphText::appendEnd() {
  Piece& piece = addPiece();
  piece.text = '\n';
  piece.endsParagraph = true;
  goesOn_ = false;
}

void ParagraphText::appendFootnote(NoteMark note) {
  addPiece().footnote = std::move(note);
  goesOn_ = false;
}

void ParagraphText::appendField(FieldKind field) {
  addPiece().field = field;
  goesOn_ = false;
}

void ParagraphText::take(RunMaker& maker, const CharacterMarks& ofParagraph, Paragraph& paragraph) {
  bool marked = false;
  for (Piece& piece : pieces_) {
    Run run = maker.make(piece.marks, ofParagraph);
    run.text = std::move(piece.text);
    run.footnote = std::move(piece.footnote.id);
    run.footnoteMark = std::move(piece.footnote.mark);
    if (piece.field != FieldKind::kNone) run.field = piece.field;
    run.endsParagraph = piece.endsParagraph;
    if (!run.deleted) paragraph.text += run.text;
    marked = marked || isMarked(run);
    paragraph.runs.push_back(std::move(run));
  }
  if (!marked) paragraph.runs.clear();
  pieces_.clear();
  goesOn_ = false;
  left_ = false;
}

}  // namespace dorvex::content
