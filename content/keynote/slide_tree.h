// The slides of a presentation, in the order in which they are presented.
#pragma once

#include <vector>

#include "KNArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

struct SlideNode {
  const Object* slide;
  bool skipped;
  unsigned depth;  // from 1
};

std::vector<SlideNode> readSlideTree(Reading& reading, const Message<KN::SlideTreeArchive>& tree);

}  // namespace dorvex::content
