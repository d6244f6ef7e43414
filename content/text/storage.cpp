#include "text/storage.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <utility>

#include "KNArchives.h"
#include "TSWPArchives.h"
#include "drawables/drawable.h"
#include "graph/plain_text.h"
#include "graph/utf8.h"
#include "styles/known_styles.h"
#include "text/attribute_runs.h"
#include "text/list_numbers.h"
#include "text/marks.h"
#include "text/paragraphs.h"

namespace dorvex::content {
namespace {

using Storage = TSWP::StorageArchive;
using StorageKind = TSWP::StorageArchive_KindType;
// The number of a heading's page, as a table of contents was laid out last.
using ContentsPage = TSWP::TSWPTOCPageNumberAttachmentArchive;

// Characters that are acted on.
constexpr char32_t kSectionBreak = 0x04;
constexpr char32_t kPageBreak = 0x05;
constexpr char32_t kColumnBreak = 0x0C;
constexpr char32_t kFootnoteMark = 0x0E;

// More paragraphs than a person could tell apart that were one.
constexpr std::size_t kMostJoined = 1000;

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
Role roleByPlace(StorageKind kind) {
  switch (kind) {
    case StorageKind::HEADER:
      return Role::kHeader;
    case StorageKind::FOOTNOTE:
      return Role::kFootnote;
    case StorageKind::TABLEOFCONTENTS:
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
        known_(reading.keep<KnownStyles>()),
        sink_(sink),
        kind_(storage.get(Storage::kind, StorageKind::TEXTBOX)),
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

  // The styles of a paragraph, by the tables at its start.
  struct Form {
    const Object* style = nullptr;
    const Object* list = nullptr;
    std::size_t level = 0;
    std::uint32_t number = 0;  // that it has in a list by its own account; 0 for none
  };

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
    form_ = originalForm_ = formHere();
    beginSection();
  }

  Form formHere() {
    for (ObjectRuns* runs : {&styles_, &lists_}) runs->moveTo(position_);
    for (NumberRuns* runs : {&levels_, &starts_}) runs->moveTo(position_);
    return {styles_.value(), lists_.value(), levels_.value(), starts_.valueOnlyAt(position_)};
  }

  void beginSection() {
    sections_.moveTo(position_);
    if (sections_.value() == section_) return;
    section_ = sections_.value();
    if (section_ != nullptr) sink_.section(*section_);
  }

  // A separator stands before the position.
  void finish(std::optional<Break> brokenBy) {
    if (deleted()) return join();
    keepTargets();
    endInserted_ = marks_.marks().insertion != nullptr;
    end(brokenBy);
    endInserted_ = false;
    begin();
  }

  // Two paragraphs without what parted them are one, with the style of the first unless
  // nothing is left of that.
  void join() {
    const bool nothingLeft = text_.nothingLeft() && before_.empty();
    text_.appendEnd();
    if (joined_.size() < kMostJoined) joined_.push_back(originalForm_);
    originalForm_ = formHere();
    if (!nothingLeft) return;
    form_ = originalForm_;
    beginSection();
  }

  void end(std::optional<Break> brokenBy) {
    const bool drawables = !before_.empty() || !behind_.empty();
    emit(before_);
    // Of drawables or a break alone there is no line to show.
    if (!text_.empty() || (!drawables && !brokenBy)) {
      emitParagraph();
    } else if (drawables) {
      mark(form_, numbers_);
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
    std::vector<Paragraph> original = originals();
    Paragraph paragraph = paragraphOf(form_, numbers_);
    paragraph.original = std::move(original);
    paragraph.endInserted = endInserted_;
    text_.take(runMaker_, known_.paragraphStyle(form_.style).marks, paragraph);
    Block block;
    block.what = std::move(paragraph);
    sink_.block(std::move(block));
  }

  // What the paragraph was before the ends in it were deleted. Those are numbered for
  // themselves: the items that follow are counted by what is left.
  std::vector<Paragraph> originals() {
    std::vector<Paragraph> original;
    if (joined_.empty()) return original;
    joined_.push_back(originalForm_);
    ListNumbers numbers = numbers_;
    for (const Form& form : std::exchange(joined_, {}))
      original.push_back(paragraphOf(form, numbers));
    return original;
  }

  // A paragraph without its text.
  Paragraph paragraphOf(const Form& form, ListNumbers& numbers) {
    const ParagraphStyle& style = known_.paragraphStyle(form.style);
    Paragraph paragraph;
    paragraph.style = style.name;
    paragraph.role = style.role.role;
    paragraph.level = style.role.level;
    paragraph.list = mark(form, numbers);
    if (kind_ == StorageKind::TABLEOFCONTENTS || paragraph.role == Role::kOther)
      paragraph.role = roleByPlace(kind_);
    if (paragraph.list && (paragraph.role == Role::kOther || paragraph.role == Role::kBody))
      paragraph.role = Role::kList;
    return paragraph;
  }

  // Counts a paragraph as an item of a list, where it is one.
  std::optional<ListMark> mark(const Form& form, ListNumbers& numbers) {
    const ListStyle& style = known_.listStyle(form.list);
    if (form.level >= std::min(style.size(), ListNumbers::kLevels) || !style[form.level].marked)
      return std::nullopt;
    if (style[form.level].kind == ListKind::kNumber)
      return listMark(style, numbers.count(form.level, form.number));
    numbers.pass(form.level);
    return listMark(style, std::vector<std::uint32_t>(form.level + 1));
  }

  void takeAttachment(Position at) {
    footnotes_.moveTo(at);
    attachments_.moveTo(at);
    const Object* object = footnotes_.valueOnlyAt(at);
    if (object == nullptr) object = attachments_.valueOnlyAt(at);
    if (object == nullptr) return;
    if (Types<TSWP::FootnoteReferenceAttachmentArchive>::hold(object->type)) {
      takeFootnote(*object);
    } else if (Types<ContentsPage>::hold(object->type)) {
      append(plainText(Message<ContentsPage>(object->payload).get(ContentsPage::page_number)));
    } else if (const auto field = fieldOf(*object)) {
      text_.appendField(*field);
    } else {
      takeDrawable(*object);
    }
  }

  void takeFootnote(const Object& attachment) {
    if (auto note = sink_.footnote(attachment, deleted())) {
      if (!note->id.empty()) text_.appendFootnote(*std::move(note));
    } else if (!deleted()) {
      takeNoteText(attachment);
    }
  }

  void takeNoteText(const Object& attachment) {
    using Attachment = TSWP::FootnoteReferenceAttachmentArchive;
    const Object* note =
        reading_.follow(Message<Attachment>(attachment.payload).get(Attachment::contained_storage));
    if (note == nullptr || !Types<Storage>::hold(note->type) || !reading_.claim(*note)) return;
    const Descent descent(reading_);
    if (descent.tooDeep()) return;
    std::vector<Block> blocks = readStorage(reading_, Message<Storage>(note->payload));
    std::ranges::move(blocks, std::back_inserter(behind_));
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
  KnownStyles& known_;
  StorageSink& sink_;
  StorageKind kind_;
  ObjectRuns styles_, lists_, attachments_, footnotes_, sections_;
  NumberRuns levels_, starts_;
  MarkTables marks_;
  RunMaker runMaker_;
  ListNumbers numbers_;

  Position position_ = 0;
  Form form_;                 // of the paragraph
  Form originalForm_;         // of the one that it was, at the position
  std::vector<Form> joined_;  // of those that it was before, whose ends are deleted
  bool endInserted_ = false;  // the end of the paragraph that is read
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
