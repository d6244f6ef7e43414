#include "drawables/attributes.h"

#include <string>
#include <utility>

#include "drawables/box_text.h"
#include "graph/plain_text.h"
#include "newer.h"
#include "text/comment.h"

namespace dorvex::content {
namespace {

using DrawableArchive = TSD::DrawableArchive;
using Labelled = newer::TSD_DrawableArchive;

// The text of a title or caption; empty, and counted, where it is hidden.
std::string readLabel(Reading& reading, const Message<TSP::Reference>& reference, bool hidden) {
  using Caption = newer::TSA_CaptionInfoArchive;
  const auto caption = reading.get<Caption>(reference);
  std::string text = textOf(readBoxText(reading, caption.get(Caption::super)));
  if (!hidden || text.empty()) return text;
  ++reading.leftOut().hiddenTexts;
  return {};
}

}  // namespace

void readAttributes(Reading& reading, const Message<DrawableArchive>& drawable, Block& block) {
  block.alt = plainText(drawable.get(DrawableArchive::accessibility_description));
  block.link = plainText(drawable.get(DrawableArchive::hyperlink_url));
  if (const auto reference = drawable.find(DrawableArchive::comment)) {
    Comment comment = readComment(reading, reading.get<TSD::CommentStorageArchive>(*reference));
    if (saysSomething(comment)) block.comments.push_back(std::move(comment));
  }
  const auto labelled = drawable.as<Labelled>();
  block.title =
      readLabel(reading, labelled.get(Labelled::title), labelled.get(Labelled::title_hidden));
  block.caption =
      readLabel(reading, labelled.get(Labelled::caption), labelled.get(Labelled::caption_hidden));
}

bool hasRemarks(const Block& block) {
  return !(block.title.empty() && block.caption.empty() && block.link.empty() &&
           block.comments.empty());
}

}  // namespace dorvex::content
