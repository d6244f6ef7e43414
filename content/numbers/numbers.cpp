#include "numbers/numbers.h"

#include <optional>
#include <utility>

#include "TNArchives.h"
#include "drawables/box_text.h"
#include "drawables/drawable.h"
#include "graph/plain_text.h"
#include "newer.h"

namespace dorvex::content {
namespace {

using Archive = TN::SheetArchive;
using Form = TN::FormBasedSheetArchive;

// A form shows rows of another sheet's table; it is a sheet without tables of its own.
std::optional<Message<Archive>> sheetIn(const Object& object) {
  if (Types<Archive>::hold(object.type)) return Message<Archive>(object.payload);
  if (Types<Form>::hold(object.type)) return Message<Form>(object.payload).get(Form::super);
  return std::nullopt;
}

Sheet readSheet(Reading& reading, const Message<Archive>& archive) {
  using Newer = newer::TN_SheetArchive;
  Sheet sheet;
  sheet.name = plainText(archive.get(Archive::name));
  sheet.hidden = archive.as<Newer>().get(Newer::is_hidden);
  for (const auto& reference : archive.all(Archive::drawable_infos))
    appendDrawable(reading, reference, sheet.blocks);
  return sheet;
}

}  // namespace

void readNumbers(Reading& reading, Sink& sink) {
  using Document = TN::DocumentArchive;
  const Message<Document> document(reading.graph().document().payload);
  for (const auto& reference : document.all(Document::sheets)) {
    const Object* object = reading.follow(reference);
    if (object == nullptr || !reading.claim(*object)) continue;
    if (const auto archive = sheetIn(*object)) {
      sink.sheet(readSheet(reading, *archive));
    } else {
      reading.countUnknown(*object);
    }
  }
}

}  // namespace dorvex::content
