#include "text/storage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "KNArchives.h"
#include "TSWPArchives.h"
#include "drawables/drawable.h"
#include "graph/plain_text.h"
#include "graph/utf8.h"
#include "styles/list_style.h"
#include "styles/paragraph_style.h"
#include "text/attribute_runs.h"
#include "text/list_numbers.h"
#include "text/marks.h"
#include "text/paragraphs.h"

namespace dorvex::content {
namespace {

using Storage = TSWP::StorageArchive;
using Kind = TSWP::StorageArchive_KindType;

// Characters that are acted on.
constexpr char32_t kSectionBreak = 0x04;
constexpr char32_t kPageBreak = 0x05;
constexpr char32_t kColumnBreak = 0x0C;
constexpr char32_t kFootnoteMark = 0x0E;
constexpr char32_t kParagraphSeparator = 0x2029;
constexpr char32_t kAttachment = 0xFFFC;

bool endsParagraph(char32_t character) {
  switch (character) {
    case '\n':
    case '\r':
    case kSectionBreak:
    case kPageBreak:
    case kColumnBreak:
    case kParagraphSeparator:
      return true;
    default:
      return false;
  }
}

std::optional<Break> breakOf(char32_t character) {
  switch (character) {
    case kSectionBreak:
      return Break::kSection;
    case kPageBreak:
      return Break::kPage;
    case kColumnBreak:
      return Break::kColumn;
    default:
      return std::nullopt;
  }
}

// The role of paragraphs whose style states none, by the place of the text.
Role roleByPlace(Kind kind) {
  switch (kind) {
    case Kind::HEADER:
      return Role::kHeader;
    case Kind::FOOTNOTE:
      return Role::kFootnote;
    case Kind::TABLEOFCONTENTS:
      return Role::kToc;
    default:
      return Role::kOther;
  }
}

// The pieces of a text, joined where there are several.
class JoinedText {
 public:
  explicit JoinedText(const Message<Storage>& storage) {
    bool first = true;
    for (const std::string_view piece : storage.all(Storage::text)) {
      if (!std::exchange(first, false) && joined_.empty()) joined_ = text_;
      if (!joined_.empty()) joined_ += piece;
      text_ = joined_.empty() ? piece : std::string_view(joined_);
    }
  }
  JoinedText(const JoinedText&) = delete;
  JoinedText& operator=(const JoinedText&) = delete;

  std::string_view text() const { return text_; }

 private:
  std::string joined_;
  std::string_view text_;
};

// Reads a storage in one pass over its text, along which all tables are gone through.
class StorageReader {
 public:
  StorageReader(Reading& reading, const Message<Storage>& storage, StorageSink& sink)
      : reading_(reading),
        sink_(sink),
        kind_(storage.get(Storage::kind, Kind::TEXTBOX)),
        styles_(
            objectRuns(reading, storage.get(Storage::table_para_style), WithoutObject::kGoesOn)),
        lists_(objectRuns(reading, storage.get(Storage::table_list_style), WithoutObject::kGoesOn)),
        attachments_(objectRuns(reading, storage.get(Storage::table_attachment))),
        footnotes_(objectRuns(reading, storage.get(Storage::table_footnote))),
        sections_(objectRuns(reading, storage.get(Storage::table_section))),
        levels_(numberRuns(storage.get(Storage::table_para_data))),
        starts_(numberRuns(storage.get(Storage::table_para_starts))),
        marks_(reading, storage),
        runMaker_(reading) {}

  void read(std::string_view text) {
    begin();
    if (text.empty()) return;
    while (!text.empty()) {
      if (position_ >= marks_.nextChange()) moveMarks();
      if (!takePlain(text)) takeOther(text);
    }
    end(std::nullopt);
  }

 private:
  void moveMarks() {
    marks_.moveTo(position_);
    text_.setMarks(marks_.marks());
  }

  bool deleted() const { return marks_.marks().deletion != nullptr; }

  // Takes characters that stand for themselves in one piece: most of most texts.
  bool takePlain(std::string_view& text) {
    const std::size_t most = std::min<std::size_t>(text.size(), marks_.nextChange() - position_);
    std::size_t length = 0;
    while (length < most && text[length] >= ' ' && text[length] <= '~') ++length;
    if (length == 0) return false;
    append(text.substr(0, length));
    text.remove_prefix(length);
    position_ += static_cast<Position>(length);
    return true;
  }

  void takeOther(std::string_view& text) {
    const Character first = firstCharacter(text);
    const char32_t character = first.code;
    text.remove_prefix(first.length);
    // Beyond the first plane a character takes two units.
    const Position at = std::exchange(position_, position_ + (character < 0x10000 ? 1 : 2));
    if (endsParagraph(character)) {
      finish(breakOf(character));
    } else if (character == kAttachment || character == kFootnoteMark) {
      takeAttachment(at);
    } else if (const char32_t shown = plainCharacter(character); shown != 0) {
      append(shown);
    }
  }

  void append(auto shown) {
    text_.append(shown);
    noteShown();
  }

  // What is shown at the position bears its links and bookmarks.
  void noteShown() {
    shownField_ = marks_.marks().field;
    shownBookmark_ = marks_.marks().bookmark;
  }

  // A link or a bookmark on nothing but the end of a paragraph stands there without text.
  void keepTargets() {
    const auto isLost = [](const Object* object, const Object* shown) {
      return object != nullptr && object != shown &&
             (Types<TSWP::HyperlinkFieldArchive>::hold(object->type) ||
              Types<TSWP::UnsupportedHyperlinkFieldArchive>::hold(object->type) ||
              Types<TSWP::BookmarkFieldArchive>::hold(object->type));
    };
    const Marks& marks = marks_.marks();
    if (isLost(marks.field, shownField_) || isLost(marks.bookmark, shownBookmark_))
      append(std::string_view());
  }

  // A paragraph starts at the position.
  void begin() {
    start_ = position_;
    for (ObjectRuns* runs : {&styles_, &lists_, &sections_}) runs->moveTo(start_);
    for (NumberRuns* runs : {&levels_, &starts_}) runs->moveTo(start_);
    if (sections_.value() == section_) return;
    section_ = sections_.value();
    if (section_ != nullptr) sink_.section(*section_);
  }

  // A separator stands before the position.
  void finish(std::optional<Break> brokenBy) {
    if (!deleted()) {
      keepTargets();
      end(brokenBy);
      begin();
      return;
    }
    // Two paragraphs without what parted them are one, with the style of the first unless
    // nothing is left of that.
    const bool nothingLeft = text_.nothingLeft() && before_.empty();
    text_.append(U'\n');
    if (nothingLeft) begin();
  }

  void end(std::optional<Break> brokenBy) {
    const bool drawables = !before_.empty() || !behind_.empty();
    emit(before_);
    // Of drawables or a break alone there is no line to show.
    if (!text_.empty() || (!drawables && !brokenBy)) {
      emitParagraph();
    } else if (drawables) {
      mark(listStyle());
    }
    emit(behind_);
    if (brokenBy) {
      Block block;
      block.what = *brokenBy;
      sink_.block(std::move(block));
    }
  }

  void emit(std::vector<Block>& drawables) {
    for (Block& block : drawables) sink_.block(std::move(block));
    drawables.clear();
  }

  void emitParagraph() {
    const ParagraphStyle& style = paragraphStyle();
    Paragraph paragraph;
    paragraph.style = style.name;
    paragraph.role = style.role.role;
    paragraph.level = style.role.level;
    paragraph.list = mark(listStyle());
    if (kind_ == Kind::TABLEOFCONTENTS || paragraph.role == Role::kOther)
      paragraph.role = roleByPlace(kind_);
    if (paragraph.list && (paragraph.role == Role::kOther || paragraph.role == Role::kBody))
      paragraph.role = Role::kList;
    text_.take(runMaker_, style.marks, paragraph);
    Block block;
    block.what = std::move(paragraph);
    sink_.block(std::move(block));
  }

  const ParagraphStyle& paragraphStyle() {
    const auto [known, isNew] = paragraphStyles_.try_emplace(styles_.value());
    if (isNew) known->second = readParagraphStyle(reading_, styles_.value());
    return known->second;
  }

  const ListStyle& listStyle() {
    const auto [known, isNew] = listStyles_.try_emplace(lists_.value());
    if (isNew) known->second = readListStyle(reading_, lists_.value());
    return known->second;
  }

  // Counts the paragraph as an item of a list, where it is one.
  std::optional<ListMark> mark(const ListStyle& style) {
    const std::size_t level = levels_.value();
    if (level >= std::min(style.size(), ListNumbers::kLevels) || !style[level].marked)
      return std::nullopt;
    if (style[level].kind == ListKind::kNumber)
      return listMark(style, numbers_.count(level, starts_.valueOnlyAt(start_)));
    numbers_.pass(level);
    return listMark(style, std::vector<std::uint32_t>(level + 1));
  }

  void takeAttachment(Position at) {
    footnotes_.moveTo(at);
    attachments_.moveTo(at);
    const Object* object = footnotes_.valueOnlyAt(at);
    if (object == nullptr) object = attachments_.valueOnlyAt(at);
    if (object == nullptr) return;
    if (Types<TSWP::FootnoteReferenceAttachmentArchive>::hold(object->type)) {
      NoteMark note = sink_.footnote(*object, deleted());
      if (!note.id.empty()) text_.appendFootnote(std::move(note));
    } else if (const auto field = fieldOf(*object)) {
      text_.appendField(*field);
    } else {
      takeDrawable(*object);
    }
  }

  // The field that a textual attachment is. The mark of a footnote in its own text is
  // none.
  std::optional<FieldKind> fieldOf(const Object& object) const {
    using Number = TSWP::NumberAttachmentArchive;
    using Textual = TSWP::TextualAttachmentArchive;
    using TextualKind = TSWP::TextualAttachmentArchive_Kind;
    using SlideNumber = KN::SlideNumberAttachmentArchive;
    constexpr std::uint32_t kTextualInPresentations = 14;
    const bool inPresentation = reading_.application() == Application::kKeynote;
    Message<Textual> textual;
    if (Types<Number>::hold(object.type)) {
      textual = Message<Number>(object.payload).get(Number::super);
    } else if (inPresentation && Types<SlideNumber>::hold(object.type)) {
      textual = Message<SlideNumber>(object.payload).get(SlideNumber::super);
    } else if (Types<Textual>::hold(object.type) ||
               (inPresentation && object.type == kTextualInPresentations)) {
      textual = Message<Textual>(object.payload);
    } else {
      return std::nullopt;
    }
    switch (textual.get(Textual::kind)) {
      case TextualKind::kKindPageNumber:
        return FieldKind::kPageNumber;
      case TextualKind::kKindPageCount:
        return FieldKind::kPageCount;
      default:
        return std::nullopt;
    }
  }

  void takeDrawable(const Object& attachment) {
    using Attachment = TSWP::DrawableAttachmentArchive;
    using Contents = TSWP::TOCAttachmentArchive;
    if (deleted()) return;
    const Message<Contents> contents(attachment.payload);
    Message<Attachment> drawable;
    if (Types<Contents>::hold(attachment.type)) {
      drawable = contents.get(Contents::super);
    } else if (Types<Attachment>::hold(attachment.type)) {
      drawable = Message<Attachment>(attachment.payload);
    }
    const Object* object = reading_.follow(drawable.get(Attachment::drawable));
    if (object == nullptr) return;
    auto block = readDrawable(reading_, *object);
    if (!block) return;
    if (block->link.empty()) block->link = runMaker_.make(marks_.marks(), {}).link;
    noteShown();
    (text_.nothingLeft() ? before_ : behind_).push_back(std::move(*block));
  }

  Reading& reading_;
  StorageSink& sink_;
  Kind kind_;
  ObjectRuns styles_, lists_, attachments_, footnotes_, sections_;
  NumberRuns levels_, starts_;
  MarkTables marks_;
  RunMaker runMaker_;
  ListNumbers numbers_;
  std::unordered_map<const Object*, ParagraphStyle> paragraphStyles_;
  std::unordered_map<const Object*, ListStyle> listStyles_;

  Position position_ = 0;
  Position start_ = 0;  // of the paragraph
  const Object* section_ = nullptr;
  const Object* shownField_ = nullptr;  // of what was shown last
  const Object* shownBookmark_ = nullptr;
  ParagraphText text_;
  std::vector<Block> before_, behind_;  // what is drawn before and behind the text
};

class Collector : public StorageSink {
 public:
  void block(Block&& block) override { blocks_.push_back(std::move(block)); }
  std::vector<Block> take() { return std::move(blocks_); }

 private:
  std::vector<Block> blocks_;
};

}  // namespace

NoteMark StorageSink::footnote(const Object&, bool) { return {}; }

void readStorage(Reading& reading, const Message<Storage>& storage, StorageSink& sink) {
  const JoinedText joined(storage);
  StorageReader(reading, storage, sink).read(joined.text());
}

std::vector<Block> readStorage(Reading& reading, const Message<Storage>& storage) {
  Collector collector;
  readStorage(reading, storage, collector);
  return collector.take();
}

}  // namespace dorvex::content
