#include "numbers/numbers.h"

#include <optional>
#include <utility>
#include <variant>
#include <vector>

#include "TNArchives.h"
#include "drawables/box_text.h"
#include "drawables/drawable.h"
#include "graph/plain_text.h"
#include "newer.h"

namespace dorvex::content {
namespace {

using SheetArchive = TN::SheetArchive;
using Form = TN::FormBasedSheetArchive;

// A form shows rows of another sheet's table; it is a sheet without tables of its own.
std::optional<Message<SheetArchive>> sheetIn(const Object& object) {
  if (Types<SheetArchive>::hold(object.type)) return Message<SheetArchive>(object.payload);
  if (Types<Form>::hold(object.type)) return Message<Form>(object.payload).get(Form::super);
  return std::nullopt;
}

// Appends the lines that are printed above or below a sheet. The number of a page, which
// nearly all sheets have there, says nothing of the sheet.
void appendPrinted(Reading& reading, const Message<TSP::Reference>& storage, Role role,
                   std::vector<Block>& blocks) {
  for (Block& block : readText(reading, storage)) {
    auto* paragraph = std::get_if<Paragraph>(&block.what);
    if (paragraph == nullptr || paragraph->text.empty()) continue;
    paragraph->role = role;
    blocks.push_back(std::move(block));
  }
}

Sheet readSheet(Reading& reading, const Message<SheetArchive>& archive) {
  using Newer = newer::TN_SheetArchive;
  Sheet sheet;
  sheet.name = plainText(archive.get(SheetArchive::name));
  sheet.hidden = archive.as<Newer>().get(Newer::is_hidden);
  for (const auto& reference : archive.all(SheetArchive::headers))
    appendPrinted(reading, reference, Role::kHeader, sheet.blocks);
  appendPrinted(reading, archive.get(SheetArchive::header_storage), Role::kHeader, sheet.blocks);
  for (const auto& reference : archive.all(SheetArchive::drawable_infos))
    appendDrawable(reading, reference, sheet.blocks);
  for (const auto& reference : archive.all(SheetArchive::footers))
    appendPrinted(reading, reference, Role::kFooter, sheet.blocks);
  appendPrinted(reading, archive.get(SheetArchive::footer_storage), Role::kFooter, sheet.blocks);
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
