#include "keynote/slide.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>
#include <utility>
#include <vector>

#include "KNArchives.h"
#include "drawables/box_text.h"
#include "drawables/drawable.h"
#include "graph/plain_text.h"

namespace dorvex::content {
namespace {

using SlideArchive = KN::SlideArchive;

constexpr std::uint32_t kStickyNote = 2014;

// What is on the slide, from back to front. Newer documents list the order of drawing
// apart, and what that lacks stands in front.
std::vector<const Object*> drawablesOf(Reading& reading, const Message<SlideArchive>& slide) {
  std::vector<const Object*> drawables;
  std::unordered_set<std::uint64_t> listed;
  const auto add = [&](const Message<TSP::Reference>& reference) {
    if (!listed.insert(reference.get(TSP::Reference::identifier)).second) return;
    if (const Object* object = reading.follow(reference)) drawables.push_back(object);
  };
  for (const auto& reference : slide.all(SlideArchive::drawables_z_order)) add(reference);
  for (const auto& reference : slide.all(SlideArchive::owned_drawables)) add(reference);
  return drawables;
}

// What a placeholder that says no kind of its own is by the slide.
PlaceholderKind kindBySlide(const Message<SlideArchive>& slide, const Object& object) {
  const auto isAt = [&](const auto& field) {
    return slide.get(field).get(TSP::Reference::identifier) == object.identifier;
  };
  if (isAt(SlideArchive::titlePlaceholder)) return PlaceholderKind::kTitle;
  if (isAt(SlideArchive::bodyPlaceholder)) return PlaceholderKind::kBody;
  if (isAt(SlideArchive::objectPlaceholder)) return PlaceholderKind::kObject;
  return isAt(SlideArchive::slideNumberPlaceholder) ? PlaceholderKind::kSlideNumber
                                                    : PlaceholderKind::kOther;
}

bool isPlaceholder(const Block& block, PlaceholderKind kind) {
  const auto* box = std::get_if<Box>(&block.what);
  return box != nullptr && box->kind == BoxKind::kPlaceholder && box->placeholder == kind;
}

// The title and the body are read first wherever they are drawn.
void moveToFront(std::vector<Block>& blocks, PlaceholderKind kind) {
  std::stable_partition(blocks.begin(), blocks.end(),
                        [&](const Block& block) { return isPlaceholder(block, kind); });
}

std::optional<std::string> titleOf(const std::vector<Block>& blocks) {
  const auto title = std::ranges::find_if(
      blocks, [](const Block& block) { return isPlaceholder(block, PlaceholderKind::kTitle); });
  if (title == blocks.end()) return std::nullopt;
  return textOf(std::get<Box>(title->what).blocks);
}

void readDrawables(Reading& reading, const Message<SlideArchive>& archive, Slide& slide) {
  for (const Object* object : drawablesOf(reading, archive)) {
    auto block = readDrawable(reading, *object);
    if (!block) continue;
    if (isPlaceholder(*block, PlaceholderKind::kOther))
      setPlaceholderKind(kindBySlide(archive, *object), std::get<Box>(block->what));
    if (object->type == kStickyNote) {
      std::ranges::move(block->comments, std::back_inserter(slide.comments));
    } else {
      slide.blocks.push_back(*std::move(block));
    }
  }
  moveToFront(slide.blocks, PlaceholderKind::kBody);
  moveToFront(slide.blocks, PlaceholderKind::kTitle);
  slide.title = titleOf(slide.blocks);
}

// Every slide has these placeholders. One that is not among its drawables is switched
// off, and may still hold a text.
void countSwitchedOff(Reading& reading, const Message<SlideArchive>& archive) {
  for (const auto& field :
       {SlideArchive::titlePlaceholder, SlideArchive::bodyPlaceholder,
        SlideArchive::objectPlaceholder, SlideArchive::slideNumberPlaceholder}) {
    const Object* object = reading.follow(archive.get(field));
    if (object == nullptr || !Types<KN::PlaceholderArchive>::hold(object->type)) continue;
    if (!reading.claim(*object)) continue;
    const Message<KN::PlaceholderArchive> placeholder(object->payload);
    const auto blocks = readBoxText(reading, placeholder.get(KN::PlaceholderArchive::super));
    if (!textOf(blocks).empty()) ++reading.leftOut().hiddenTexts;
  }
}

}  // namespace

Slide readSlide(Reading& reading, const Object& object) {
  const Message<SlideArchive> archive(object.payload);
  Slide slide;
  slide.layout = plainText(
      reading.get<SlideArchive>(archive.get(SlideArchive::master)).get(SlideArchive::name));
  readDrawables(reading, archive, slide);
  countSwitchedOff(reading, archive);
  using Note = KN::NoteArchive;
  const auto note = reading.get<Note>(archive.get(SlideArchive::note));
  slide.notes = readText(reading, note.get(Note::containedStorage));
  return slide;
}

}  // namespace dorvex::content
