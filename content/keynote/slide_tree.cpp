#include "keynote/slide_tree.h"

#include <algorithm>

namespace dorvex::content {
namespace {

using SlideNodeArchive = KN::SlideNodeArchive;
using Tree = KN::SlideTreeArchive;

constexpr unsigned kDeepestNode = 64;

const Object* nodeAt(Reading& reading, const Message<TSP::Reference>& reference) {
  const Object* object = reading.follow(reference);
  if (object == nullptr || !reading.claim(*object)) return nullptr;
  if (Types<SlideNodeArchive>::hold(object->type)) return object;
  reading.countUnknown(*object);
  return nullptr;
}

// Adds the slide of a node, if the node has one.
void addSlide(Reading& reading, const Message<SlideNodeArchive>& node, unsigned depth,
              std::vector<SlideNode>& slides) {
  const Object* slide = reading.follow(node.get(SlideNodeArchive::slide));
  if (slide == nullptr || !reading.claim(*slide)) return;
  if (Types<KN::SlideArchive>::hold(slide->type)) {
    slides.push_back({slide, node.get(SlideNodeArchive::isHidden), depth});
  } else {
    reading.countUnknown(*slide);
  }
}

// Adds a node of the form of a tree and the nodes below it. The root has no slide.
void addBranch(Reading& reading, const Message<SlideNodeArchive>& node, unsigned depth,
               std::vector<SlideNode>& slides) {
  addSlide(reading, node, std::max(depth, 1U), slides);
  if (depth == kDeepestNode) return;
  for (const auto& reference : node.all(SlideNodeArchive::children)) {
    if (const Object* child = nodeAt(reading, reference))
      addBranch(reading, Message<SlideNodeArchive>(child->payload), depth + 1, slides);
  }
}

}  // namespace

std::vector<SlideNode> readSlideTree(Reading& reading, const Message<Tree>& tree) {
  std::vector<SlideNode> slides;
  for (const auto& reference : tree.all(Tree::slides)) {
    const Object* object = nodeAt(reading, reference);
    if (object == nullptr) continue;
    const Message<SlideNodeArchive> node(object->payload);
    addSlide(reading, node, std::max(node.get(SlideNodeArchive::depth, 1U), 1U), slides);
  }
  if (!slides.empty()) return slides;
  if (const Object* root = nodeAt(reading, tree.get(Tree::rootSlideNode)))
    addBranch(reading, Message<SlideNodeArchive>(root->payload), 0, slides);
  return slides;
}

}  // namespace dorvex::content
