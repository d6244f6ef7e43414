#include "drawables/box_text.h"

#include <algorithm>
#include <string_view>

#include "text/storage.h"

namespace dorvex::content {
namespace {

using ShapeInfo = TSWP::ShapeInfoArchive;
using Storage = TSWP::StorageArchive;

const Object* storageAt(Reading& reading, const Message<TSP::Reference>& reference) {
  const Object* object = reading.follow(reference);
  return object != nullptr && Types<Storage>::hold(object->type) ? object : nullptr;
}

bool isEmpty(const Object& storage) {
  return std::ranges::all_of(Message<Storage>(storage.payload).all(Storage::text),
                             [](std::string_view piece) { return piece.empty(); });
}

// The text that flows through linked boxes, this one among them.
const Object* flowOf(Reading& reading, const Message<ShapeInfo>& box) {
  using Flow = TSWP::FlowInfoArchive;
  const auto flow = reading.get<Flow>(box.get(ShapeInfo::text_flow));
  return storageAt(reading, flow.get(Flow::text_storage));
}

// Documents of some years hold the same text in two of these places. A linked box may
// have an empty text of its own.
const Object* storageOf(Reading& reading, const Message<ShapeInfo>& box) {
  const Object* own = storageAt(reading, box.get(ShapeInfo::owned_storage));
  if (own != nullptr && !isEmpty(*own)) return own;
  if (const Object* flow = flowOf(reading, box)) return flow;
  return own != nullptr ? own : storageAt(reading, box.get(ShapeInfo::deprecated_storage));
}

std::vector<Block> readStorageObject(Reading& reading, const Object* storage) {
  if (storage == nullptr || !reading.claim(*storage)) return {};
  auto blocks = readStorage(reading, Message<Storage>(storage->payload));
  if (showNothing(blocks)) blocks.clear();
  return blocks;
}

bool isEmptyParagraph(const Block& block) {
  const auto* paragraph = std::get_if<Paragraph>(&block.what);
  return paragraph != nullptr && paragraph->text.empty() && paragraph->runs.empty();
}

void appendText(const std::vector<Block>& blocks, std::string& text) {
  for (const Block& block : blocks) {
    if (const auto* paragraph = std::get_if<Paragraph>(&block.what)) {
      text += paragraph->text;
      text += '\n';
    } else if (const auto* box = std::get_if<Box>(&block.what)) {
      appendText(box->blocks, text);
    }
  }
}

}  // namespace

std::vector<Block> readBoxText(Reading& reading, const Message<ShapeInfo>& box) {
  return readStorageObject(reading, storageOf(reading, box));
}

std::vector<Block> readText(Reading& reading, const Message<TSP::Reference>& storage) {
  return readStorageObject(reading, storageAt(reading, storage));
}

bool showNothing(const std::vector<Block>& blocks) {
  return std::ranges::all_of(blocks, isEmptyParagraph);
}

std::string textOf(const std::vector<Block>& blocks) {
  std::string text;
  appendText(blocks, text);
  if (!text.empty()) text.pop_back();  // the last line feed
  return text;
}

}  // namespace dorvex::content
