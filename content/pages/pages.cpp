#include "pages/pages.h"

#include <cstddef>
#include <optional>
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

// The text that flows through the pages, and what hangs on it. A document for the layout
// of pages has one like any other, which it does not show. The pages have the headers and
// footers of its sections all the same.
class Body : public StorageSink {
 public:
  Body(Reading& reading, const Message<Settings>& settings, Sink& sink)
      : isShown_(settings.get(Settings::body, true)),
        sections_(reading, settings),
        footnotes_(reading, settings),
        reading_(reading),
        sink_(sink) {}

  void read(const Message<Storage>& storage) {
    readStorage(reading_, storage, *this);
    if (hides_) ++reading_.leftOut().hiddenTexts;
  }

  void block(Block&& block) override {
    if (isShown_) {
      sink_.body(block);
      ++blocks_;
    } else {
      hides_ = hides_ || !textOf({std::move(block)}).empty();
    }
  }

  void section(const Object& object) override {
    read_.push_back(sections_.read(object, blocks_));
    footnotes_.beginSection();
    sink_.beginSection(read_.back());
  }

  std::optional<NoteMark> footnote(const Object& attachment, bool deleted) override {
    if (!isShown_) return NoteMark{};
    return footnotes_.add(attachment, deleted);
  }

  void writeSections() const {
    for (const Section& section : read_) sink_.section(section);
  }

  void writeFootnotes() { footnotes_.write(sink_); }

 private:
  bool isShown_;
  bool hides_ = false;  // a text
  Sections sections_;
  Footnotes footnotes_;
  Reading& reading_;
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
  body.read(storage);
  body.writeSections();
  readFloating(
      reading,
      reading.get<TP::FloatingDrawablesArchive>(document.get(Document::floating_drawables)),
      reading.get<TP::DrawablesZOrderArchive>(document.get(Document::drawables_zorder)), sink);
  body.writeFootnotes();
}

}  // namespace dorvex::content
