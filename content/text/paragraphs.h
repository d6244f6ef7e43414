// A paragraph while its text is read.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "dorvex/content.h"
#include "styles/character_marks.h"
#include "text/marks.h"

namespace dorvex::content {

// Where a footnote is referred to: its id, and the mark that is shown.
struct NoteMark {
  std::string id;  // empty where there is none
  std::string mark;
};

class ParagraphText {
 public:
  // Text that is shown, with the marks that are set.
  void append(std::string_view text);
  void append(char32_t character);
  // The end of a paragraph, which is deleted.
  void appendEnd();
  // What stands in the place of an attachment.
  void appendFootnote(NoteMark note);
  void appendField(FieldKind field);

  // The marks of what is appended next.
  void setMarks(const Marks& marks);

  // Whether nothing was appended, and whether nothing that was not deleted.
  bool empty() const { return pieces_.empty(); }
  bool nothingLeft() const { return !left_; }

  // Sets the text and the runs of a paragraph, and begins anew. Of the paragraph are the
  // marks of its style.
  void take(RunMaker& maker, const CharacterMarks& ofParagraph, Paragraph& paragraph);

 private:
  struct Piece {
    Marks marks;
    std::string text;
    NoteMark footnote;
    FieldKind field = FieldKind::kNone;
    bool endsParagraph = false;

    bool isText() const {
      return footnote.id.empty() && field == FieldKind::kNone && !endsParagraph;
    }
  };

  Piece& addPiece();
  std::string& textPiece();

  std::vector<Piece> pieces_;
  Marks marks_;
  bool goesOn_ = false;  // whether the last piece takes text with the marks that are set
  bool left_ = false;
};

}  // namespace dorvex::content
