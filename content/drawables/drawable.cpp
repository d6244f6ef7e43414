#include "drawables/drawable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "KNArchives.h"
#include "TPArchives.h"
#include "TSDArchives.h"
#include "TSTArchives.h"
#include "TSWPArchives.h"
#include "charts/chart.h"
#include "drawables/attributes.h"
#include "drawables/box_text.h"
#include "drawables/nesting.h"
#include "drawables/pictures.h"
#include "tables/table.h"
#include "text/comment.h"
#include "text/toc.h"

namespace dorvex::content {
namespace {

// The role of a paragraph on a slide. It is the place that makes a title: styles of titles
// stand anywhere, for their looks.
Role roleOnSlide(PlaceholderKind kind, const Paragraph& paragraph) {
  const Role role = paragraph.role;
  if (kind == PlaceholderKind::kTitle) return Role::kTitle;
  if (kind == PlaceholderKind::kBody && role == Role::kSubtitle) return role;
  const bool saysNothing = role == Role::kTitle || role == Role::kSubtitle ||
                           role == Role::kHeading || role == Role::kOther;
  if (!saysNothing) return role;
  if (paragraph.list) return Role::kList;
  return kind == PlaceholderKind::kBody ? Role::kBody : Role::kOther;
}

void setRolesOnSlide(PlaceholderKind kind, std::vector<Block>& blocks) {
  for (Block& block : blocks) {
    auto* paragraph = std::get_if<Paragraph>(&block.what);
    if (paragraph == nullptr) continue;
    paragraph->role = roleOnSlide(kind, *paragraph);
    paragraph->level = 0;
  }
}

void readShape(Reading& reading, const Object& object, Block& block) {
  using Info = TSWP::ShapeInfoArchive;
  const Message<Info> shape(object.payload);
  const bool isTextBox = shape.get(Info::is_text_box);
  Box box{isTextBox ? BoxKind::kTextBox : BoxKind::kShape, PlaceholderKind::kOther,
          readBoxText(reading, shape)};
  if (reading.application() == Application::kKeynote)
    setRolesOnSlide(PlaceholderKind::kOther, box.blocks);
  block.what = std::move(box);
}

// A shape without text, or a line between shapes.
void readOutline(Reading&, const Object&, Block& block) {
  block.what = Box{BoxKind::kShape, PlaceholderKind::kOther, {}};
}

// A note that sticks on the page: what it says is a comment, of which its own text is
// a copy.
void readStickyNote(Reading& reading, const Object& object, Block& block) {
  using Note = TSWP::CommentInfoArchive;
  using Storage = TSD::CommentStorageArchive;
  readOutline(reading, object, block);
  const Message<Note> note(object.payload);
  Comment comment = readComment(reading, reading.get<Storage>(note.get(Note::comment_storage)));
  if (saysSomething(comment)) block.comments.push_back(std::move(comment));
}

void readContents(Reading& reading, const Object& object, Block& block) {
  const Message<TSWP::TOCInfoArchive> contents(object.payload);
  block.what =
      Box{BoxKind::kTextBox, PlaceholderKind::kOther, readTableOfContents(reading, contents)};
}

PlaceholderKind kindOf(KN::PlaceholderArchive_Kind kind) {
  using Kind = KN::PlaceholderArchive_Kind;
  switch (kind) {
    case Kind::kKindSlideNumberPlaceholder:
      return PlaceholderKind::kSlideNumber;
    case Kind::kKindTitlePlaceholder:
      return PlaceholderKind::kTitle;
    case Kind::kKindBodyPlaceholder:
      return PlaceholderKind::kBody;
    case Kind::kKindObjectPlaceholder:
      return PlaceholderKind::kObject;
    case Kind::kKindPlaceholder:
      break;
  }
  return PlaceholderKind::kOther;
}

void readPlaceholder(Reading& reading, const Object& object, Block& block) {
  using Archive = KN::PlaceholderArchive;
  const Message<Archive> placeholder(object.payload);
  Box box{BoxKind::kPlaceholder, PlaceholderKind::kOther,
          readBoxText(reading, placeholder.get(Archive::super))};
  setPlaceholderKind(kindOf(placeholder.get(Archive::kind)), box);
  block.what = std::move(box);
}

// The other applications have placeholders as well, which are boxes for text.
void readPlainPlaceholder(Reading& reading, const Object& object, Block& block) {
  using Archive = TP::PlaceholderArchive;
  const Message<Archive> placeholder(object.payload);
  block.what = Box{BoxKind::kTextBox, PlaceholderKind::kOther,
                   readBoxText(reading, placeholder.get(Archive::super))};
}

void readGroup(Reading& reading, const Object& object, Block& block) {
  using Group = TSD::GroupArchive;
  Box box{BoxKind::kGroup, PlaceholderKind::kOther, {}};
  for (const auto& reference : Message<Group>(object.payload).all(Group::children))
    appendDrawable(reading, reference, box.blocks);
  block.what = std::move(box);
}

void readImage(Reading& reading, const Object& object, Block& block) {
  Picture picture = readPicture(reading, Message<TSD::ImageArchive>(object.payload));
  std::visit([&](auto& what) { block.what = std::move(what); }, picture.what);
  if (block.caption.empty()) block.caption = std::move(picture.caption);
}

void readFilm(Reading& reading, const Object& object, Block& block) {
  Movie movie = readMovie(reading, Message<TSD::MovieArchive>(object.payload));
  block.what = std::move(movie.media);
  if (block.link.empty()) block.link = std::move(movie.link);
}

void readChartBlock(Reading& reading, const Object& object, Block& block) {
  block.what = readChart(reading, object);
}

void readTableBlock(Reading& reading, const Object& object, Block& block) {
  block.what = readTable(reading, Message<TST::TableInfoArchive>(object.payload));
}

void readWrappedTable(Reading& reading, const Object& object, Block& block) {
  using Wrapping = TST::WPTableInfoArchive;
  block.what = readTable(reading, Message<Wrapping>(object.payload).get(Wrapping::super));
}

struct DrawableType {
  std::uint32_t type;
  // In how many messages the drawable's own lies, each the field 1 of the one around it.
  unsigned depth;
  void (*read)(Reading&, const Object&, Block&);
};

constexpr std::uint32_t kLine = 3009;

constexpr std::array<DrawableType, 11> kTypes = {{
    {2011, 2, readShape},
    {2014, 3, readStickyNote},
    {2240, 3, readContents},
    {3004, 1, readOutline},
    {3005, 1, readImage},
    {3007, 1, readFilm},
    {3008, 1, readGroup},
    {kLine, 2, readOutline},
    {5021, 1, readChartBlock},
    {6000, 1, readTableBlock},
    {6007, 2, readWrappedTable},
}};
constexpr DrawableType kPlaceholder = {7, 3, readPlaceholder};
constexpr DrawableType kPlainPlaceholder = {7, 3, readPlainPlaceholder};

const DrawableType* typeOf(const Reading& reading, const Object& object) {
  // The other applications give the other ids of Keynote's to something else.
  if (reading.application() == Application::kKeynote) {
    if (Types<KN::PlaceholderArchive>::hold(object.type)) return &kPlaceholder;
  } else if (object.type == kPlainPlaceholder.type) {
    return &kPlainPlaceholder;
  }
  const auto* const type = std::ranges::find(kTypes, object.type, &DrawableType::type);
  return type == kTypes.end() ? nullptr : type;
}

Message<TSD::DrawableArchive> drawableIn(const Object& object, unsigned depth) {
  return Message<TSD::DrawableArchive>(nested(object.payload, depth));
}

// Whether a reference is to a drawable that says itself that it lies in that one.
bool isChild(const Reading& reading, const Message<TSP::Reference>& reference,
             const Object& parent) {
  const Object* child = reading.graph().find(reference.get(TSP::Reference::identifier));
  const DrawableType* type = child == nullptr ? nullptr : typeOf(reading, *child);
  if (type == nullptr) return false;
  const auto named = drawableIn(*child, type->depth).get(TSD::DrawableArchive::parent);
  return named.get(TSP::Reference::identifier) == parent.identifier;
}

// A drawable that only later versions know: if it extends a shape or a group, it has its
// text or its drawables where those have theirs.
void readUnknown(Reading& reading, const Object& object, unsigned depth, Block& block) {
  using Group = TSD::GroupArchive;
  using Shape = TSWP::ShapeInfoArchive;
  constexpr unsigned kOfGroup = 1;
  constexpr unsigned kOfShape = 2;
  Box box{BoxKind::kShape, PlaceholderKind::kOther, {}};
  if (depth >= kOfShape)
    box.blocks = readBoxText(reading, Message<Shape>(nested(object.payload, depth - kOfShape)));
  if (depth >= kOfGroup) {
    const Message<Group> group(nested(object.payload, depth - kOfGroup));
    for (const auto& reference : group.all(Group::children)) {
      if (!isChild(reading, reference, object)) continue;
      box.kind = BoxKind::kGroup;
      appendDrawable(reading, reference, box.blocks);
    }
  }
  block.what = std::move(box);
}

// Sets the block of a drawable; whether the object is one.
bool readByType(Reading& reading, const Object& object, Block& block) {
  if (const DrawableType* type = typeOf(reading, object)) {
    readAttributes(reading, drawableIn(object, type->depth), block);
    type->read(reading, object, block);
    return true;
  }
  reading.countUnknown(object);
  const auto depth = depthOfDrawable(object.payload);
  if (!depth) return false;
  readAttributes(reading, drawableIn(object, *depth), block);
  readUnknown(reading, object, *depth, block);
  return true;
}

// Whether a block shows something, or somebody said something about it. The
// description of a mere line says nothing.
bool isWorthShowing(const Object& object, const Block& block) {
  const auto* box = std::get_if<Box>(&block.what);
  if (box == nullptr || !box->blocks.empty()) return true;
  return hasRemarks(block) || (object.type != kLine && !block.alt.empty());
}

}  // namespace

std::optional<Block> readDrawable(Reading& reading, const Object& drawable) {
  if (!reading.claim(drawable)) return std::nullopt;
  const Descent descent(reading);
  if (descent.tooDeep()) {
    reading.addProblem("Drawable " + std::to_string(drawable.identifier) + " lies too deep");
    return std::nullopt;
  }
  Block block;
  if (!readByType(reading, drawable, block) || !isWorthShowing(drawable, block))
    return std::nullopt;
  return block;
}

void setPlaceholderKind(PlaceholderKind kind, Box& box) {
  box.placeholder = kind;
  setRolesOnSlide(kind, box.blocks);
}

void appendDrawable(Reading& reading, const Message<TSP::Reference>& reference,
                    std::vector<Block>& blocks) {
  const Object* object = reading.follow(reference);
  if (object == nullptr) return;
  if (auto block = readDrawable(reading, *object)) blocks.push_back(*std::move(block));
}

}  // namespace dorvex::content
