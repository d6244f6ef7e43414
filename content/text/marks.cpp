#include "text/marks.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "TSDArchives.h"
#include "TSPMessages.h"
#include "TSWPArchives.h"
#include "graph/plain_text.h"
#include "text/comment.h"
#include "text/date.h"

namespace dorvex::content {
namespace {

using Storage = TSWP::StorageArchive;

// More comments on one place than a person could tell apart.
constexpr std::size_t kMostOpen = 64;
// A comment is repeated in each run of its range, up to so many bytes for a text.
constexpr std::size_t kMostRepeated = std::size_t{1} << 20;

// Fields that the application fills, by the type of their object.
struct FieldType {
  std::uint32_t type;
  FieldKind kind;
};

constexpr FieldType kFieldTypes[] = {
    {2033, FieldKind::kFileName}, {2034, FieldKind::kDate},     {2036, FieldKind::kMerge},
    {2037, FieldKind::kCitation}, {2038, FieldKind::kCitation},
};

FieldKind fieldKind(std::uint32_t type) {
  const auto* known = std::ranges::find(kFieldTypes, type, &FieldType::type);
  return known == std::end(kFieldTypes) ? FieldKind::kNone : known->kind;
}

std::size_t bytesOf(const Comment& comment) {
  std::size_t bytes = sizeof(Comment) + comment.author.size() + comment.text.size();
  for (const Comment& reply : comment.replies) bytes += bytesOf(reply);
  return bytes;
}

}  // namespace

MarkTables::MarkTables(Reading& reading, const Message<Storage>& storage)
    : reading_(reading), known_(reading.keep<KnownStyles>()) {
  const auto runs = [&](auto table) { return objectRuns(reading, storage.get(table)); };
  characters_ = runs(Storage::table_char_style);
  fields_ = runs(Storage::table_smartfield);
  bookmarks_ = runs(Storage::table_bookmark);
  rubies_ = runs(Storage::table_rubyfield);
  insertions_ = runs(Storage::table_insertion);
  deletions_ = runs(Storage::table_deletion);
  highlights_ = runs(Storage::table_highlight);
  readOverlapping(storage.get(Storage::table_overlapping_highlight));
}

void MarkTables::readOverlapping(const Message<TSWP::OverlappingFieldAttributeTable>& table) {
  using Attribute = TSWP::OverlappingFieldAttributeTable_OverlappingFieldAttribute;
  for (const auto& entry : table.all(TSWP::OverlappingFieldAttributeTable::entries)) {
    const auto range = entry.get(Attribute::range);
    const Position from = range.get(TSP::Range::location);
    const Position length = range.get(TSP::Range::length);
    const Object* object = reading_.follow(entry.get(Attribute::field));
    if (object != nullptr && length > 0)
      overlapping_.push_back(
          {from, length > kBehindAll - from ? kBehindAll : from + length, object});
  }
  std::ranges::stable_sort(overlapping_, {}, &Range::from);
}

void MarkTables::moveTo(Position position) {
  nextChange_ = kBehindAll;
  for (ObjectRuns* runs :
       {&characters_, &fields_, &bookmarks_, &rubies_, &insertions_, &deletions_, &highlights_}) {
    runs->moveTo(position);
    nextChange_ = std::min(nextChange_, runs->nextChange());
  }
  marks_.characters = known_.characterMarks(characters_.value());
  marks_.field = fields_.value();
  marks_.bookmark = bookmarks_.value();
  marks_.ruby = rubies_.value();
  marks_.insertion = insertions_.value();
  marks_.deletion = deletions_.value();
  moveHighlights(position);
}

void MarkTables::moveHighlights(Position position) {
  marks_.highlights.clear();
  if (highlights_.value() != nullptr) marks_.highlights.push_back(highlights_.value());
  std::erase_if(open_, [&](const Range& range) { return range.behind <= position; });
  for (; nextOverlapping_ < overlapping_.size(); ++nextOverlapping_) {
    const Range& range = overlapping_[nextOverlapping_];
    if (range.from > position) break;
    if (range.behind > position && open_.size() < kMostOpen) open_.push_back(range);
  }
  for (const Range& range : open_) {
    nextChange_ = std::min(nextChange_, range.behind);
    // A comment may stand in both tables.
    if (std::ranges::find(marks_.highlights, range.object) == marks_.highlights.end())
      marks_.highlights.push_back(range.object);
  }
  if (nextOverlapping_ < overlapping_.size())
    nextChange_ = std::min(nextChange_, overlapping_[nextOverlapping_].from);
}

Run RunMaker::make(const Marks& marks, const CharacterMarks& ofParagraph) {
  CharacterMarks characters = marks.characters;
  characters.fill(ofParagraph);
  Run run;
  run.bold = characters.bold.value_or(false);
  run.italic = characters.italic.value_or(false);
  run.underline = characters.underline.value_or(false);
  run.strike = characters.strike.value_or(false);
  run.baseline = characters.baseline.value_or(Baseline::kNormal);
  setBookmark(run, marks.bookmark);
  setField(run, marks.field);
  if (marks.ruby != nullptr && Types<TSWP::RubyFieldArchive>::hold(marks.ruby->type)) {
    const Message<TSWP::RubyFieldArchive> field(marks.ruby->payload);
    run.ruby = plainText(field.get(TSWP::RubyFieldArchive::ruby_text));
  }
  setComments(run, marks.highlights);
  run.inserted = change(marks.insertion);
  run.deleted = change(marks.deletion);
  return run;
}

void RunMaker::setField(Run& run, const Object* field) {
  using Link = TSWP::HyperlinkFieldArchive;
  using Unsupported = TSWP::UnsupportedHyperlinkFieldArchive;
  if (field == nullptr) return;
  if (Types<Link>::hold(field->type)) {
    run.link = plainText(Message<Link>(field->payload).get(Link::url_ref));
  } else if (Types<Unsupported>::hold(field->type)) {
    run.link = plainText(Message<Unsupported>(field->payload).get(Unsupported::url_ref));
  } else if (Types<TSWP::BookmarkFieldArchive>::hold(field->type)) {
    setBookmark(run, field);
  } else {
    run.field = fieldKind(field->type);
  }
}

void RunMaker::setBookmark(Run& run, const Object* bookmark) {
  using Field = TSWP::BookmarkFieldArchive;
  if (bookmark == nullptr || !Types<Field>::hold(bookmark->type)) return;
  const Message<Field> field(bookmark->payload);
  run.bookmark = plainText(field.get(Field::name));
  // Links name a bookmark without a name by its identifier.
  if (run.bookmark.empty())
    run.bookmark =
        plainText(field.get(Field::super).get(TSWP::SmartFieldArchive::text_attribute_uuid_string));
}

void RunMaker::setComments(Run& run, const std::vector<const Object*>& highlights) {
  for (const Object* highlight : highlights) {
    const bool repeats = comments_.contains(highlight);
    const Comment& said = comment(highlight);
    if (!saysSomething(said)) continue;
    if (repeats) repeated_ += bytesOf(said);
    if (!repeats || repeated_ < kMostRepeated) run.comments.push_back(said);
  }
}

const Comment& RunMaker::comment(const Object* highlight) {
  using Highlight = TSWP::HighlightArchive;
  using Comments = TSD::CommentStorageArchive;
  const auto [known, isNew] = comments_.try_emplace(highlight);
  if (isNew && Types<Highlight>::hold(highlight->type)) {
    const Message<Highlight> message(highlight->payload);
    const Object* storage = reading_.follow(message.get(Highlight::commentStorage));
    if (storage != nullptr && Types<Comments>::hold(storage->type))
      known->second = readComment(reading_, Message<Comments>(storage->payload));
  }
  return known->second;
}

std::optional<Change> RunMaker::change(const Object* object) {
  using Archive = TSWP::ChangeArchive;
  using Session = TSWP::ChangeSessionArchive;
  if (object == nullptr) return std::nullopt;
  Change change;
  if (!Types<Archive>::hold(object->type)) return change;
  const Message<Archive> message(object->payload);
  const auto session = reading_.get<Session>(message.get(Archive::session));
  change.author = authorName(reading_, session.get(Session::author));
  if (const auto date = message.find(Archive::date))
    change.date = utcDate(date->get(TSP::Date::seconds));
  return change;
}

bool isMarked(const Run& run) {
  return run.bold || run.italic || run.underline || run.strike ||
         run.baseline != Baseline::kNormal || !run.link.empty() || !run.footnote.empty() ||
         !run.bookmark.empty() || !run.ruby.empty() || run.field != FieldKind::kNone ||
         !run.comments.empty() || run.inserted || run.deleted;
}

}  // namespace dorvex::content
