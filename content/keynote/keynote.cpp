#include "keynote/keynote.h"

#include "KNArchives.h"
#include "keynote/slide.h"
#include "keynote/slide_tree.h"

namespace dorvex::content {

void readKeynote(Reading& reading, Sink& sink) {
  const Message<KN::DocumentArchive> document(reading.graph().document().payload);
  const auto show = reading.get<KN::ShowArchive>(document.get(KN::DocumentArchive::show));
  unsigned number = 0;
  for (const SlideNode& node : readSlideTree(reading, show.get(KN::ShowArchive::slideTree))) {
    Slide slide = readSlide(reading, *node.slide);
    slide.number = ++number;
    slide.skipped = node.skipped;
    slide.depth = node.depth;
    sink.slide(slide);
  }
}

}  // namespace dorvex::content
