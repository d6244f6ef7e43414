#include "pages/pages.h"

#include <cstddef>
#include <string>
#include <vector>

#include "TPArchives.h"
#include "TSWPArchives.h"
#include "drawables/box_text.h"
#include "pages/floating.h"
#include "pages/footnotes.h"
#include "pages/sections.h"
#include "text/storage.h"

namespace dorvex::content {
namespace {

using Document = TP::DocumentArchive;
using Settings = TP::SettingsArchive;
using Storage = TSWP::StorageArchive;

// The text that flows through the pages, and what hangs on it.
class Body : public StorageSink {
 public:
  Body(Reading& reading, const Message<Settings>& settings, Sink& sink)
      : sections_(reading, settings), footnotes_(reading, settings), sink_(sink) {}

  void block(Block&& block) override {
    sink_.body(block);
    ++blocks_;
  }

  void section(const Object& object) override {
    read_.push_back(sections_.read(object, blocks_));
    footnotes_.beginSection();
  }

  std::string footnote(const Object& attachment, bool deleted) override {
    return footnotes_.add(attachment, deleted);
  }

  void writeSections() const {
    for (const Section& section : read_) sink_.section(section);
  }

  void writeFootnotes() { footnotes_.write(sink_); }

 private:
  Sections sections_;
  Footnotes footnotes_;
  Sink& sink_;
  std::size_t blocks_ = 0;
  std::vector<Section> read_;
};

}  // namespace

void readPages(Reading& reading, Sink& sink) {
  const Message<Document> document(reading.graph().document().payload);
  const auto settings = reading.get<Settings>(document.get(Document::settings));
  const auto storage = reading.get<Storage>(document.get(Document::body_storage));
  Body body(reading, settings, sink);
  // A document for the layout of pages has a body like any other, which it does not show.
  if (settings.get(Settings::body, true)) {
    readStorage(reading, storage, body);
  } else if (!textOf(readStorage(reading, storage)).empty()) {
    ++reading.leftOut().hiddenTexts;
  }
  body.writeSections();
  readFloating(
      reading,
      reading.get<TP::FloatingDrawablesArchive>(document.get(Document::floating_drawables)), sink);
  body.writeFootnotes();
}

}  // namespace dorvex::content
