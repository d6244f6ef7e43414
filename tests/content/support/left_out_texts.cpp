#include "content/support/left_out_texts.h"

#include <algorithm>
#include <array>
#include <utility>

#include "KNArchives.h"
#include "TPArchives.h"
#include "TSAArchives.h"
#include "TSDArchives.h"
#include "TSTArchives.h"
#include "TSWPArchives.h"
#include "graph/plain_text.h"
#include "graph/utf8.h"
#include "newer.h"

namespace dorvex::testing {

using namespace content;

namespace {

using Info = TSWP::ShapeInfoArchive;
using Storage = TSWP::StorageArchive;

constexpr std::uint32_t kPlaceholder = 7;
constexpr std::uint32_t kStickyNote = 2014;
constexpr std::uint32_t kImage = 3005;
constexpr std::uint32_t kTableDataList = 6005;

// Drawables, and how deep in them their common part lies.
struct DrawableType {
  std::uint32_t type;
  unsigned depth;
};

constexpr std::array<DrawableType, 9> kDrawables = {{{2011, 2},
                                                     {kStickyNote, 3},
                                                     {kPlaceholder, 3},
                                                     {kImage, 1},
                                                     {3007, 1},
                                                     {3008, 1},
                                                     {5021, 1},
                                                     {6000, 1},
                                                     {6007, 2}}};
// Boxes, and how deep in them their shape lies.
constexpr std::array<DrawableType, 5> kBoxes = {
    {{2011, 0}, {kStickyNote, 1}, {kPlaceholder, 1}, {633, 1}, {2240, 1}}};

std::string_view within(std::string_view payload, unsigned depth) {
  using Nesting = TSD::GroupArchive;  // any message that another one extends
  for (; depth > 0; --depth) payload = Message<Nesting>(payload).get(Nesting::super).bytes();
  return payload;
}

template <std::size_t Size>
const DrawableType* typeIn(const std::array<DrawableType, Size>& types, std::uint32_t type) {
  const auto found = std::ranges::find(types, type, &DrawableType::type);
  return found == types.end() ? nullptr : &*found;
}

std::uint64_t identifierOf(const Message<TSP::Reference>& reference) {
  return reference.get(TSP::Reference::identifier);
}

std::string textOfStorage(const Message<Storage>& storage) {
  std::string text;
  for (const std::string_view piece : storage.all(Storage::text)) text += piece;
  return text;
}

constexpr bool isOctal(char c) { return c >= '0' && c <= '7'; }

// How many bytes an escape takes that the reader may have left in a text.
std::size_t escapeIn(std::string_view text) {
  if (text[0] != '\\') return 0;
  if (text.size() >= 4 && std::all_of(text.begin() + 1, text.begin() + 4, isOctal)) return 4;
  return text.size() >= 2 && (text[1] == 'n' || text[1] == 't') ? 2 : 1;
}

}  // namespace

std::string squeezed(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    if (const std::size_t escape = escapeIn(text); escape > 0) {
      text.remove_prefix(escape);
      continue;
    }
    const Character character = firstCharacter(text);
    const char32_t shown = plainCharacter(character.code);
    if (shown > ' ') appendCharacter(result, shown);
    text.remove_prefix(character.length);
  }
  return result;
}

LeftOutTexts::LeftOutTexts(const Graph& graph) : graph_(graph) {
  findSwitchedOff();
  findTemplates();
  findHiddenCaptions();
  findGalleryCaptions();
  findUnusedMasters();
  findBodyOfPageLayout();
  findTextsOfBoxes();
  findSummaries();
  addStorages();
  addTableStrings();
}

std::optional<std::string> LeftOutTexts::kindOf(const std::string& text) const {
  const auto kind = kinds_.find(text);
  return kind == kinds_.end() ? std::nullopt : std::optional(kind->second);
}

template <typename M>
Message<M> LeftOutTexts::get(const Reference& reference) const {
  const Object* object = graph_.find(identifierOf(reference));
  return object != nullptr && Types<M>::hold(object->type) ? Message<M>(object->payload)
                                                           : Message<M>();
}

bool LeftOutTexts::hasText(Identifier storage) const {
  const Object* object = graph_.find(storage);
  return object != nullptr && !textOfStorage(Message<Storage>(object->payload)).empty();
}

// A placeholder that its slide does not list is switched off.
void LeftOutTexts::findSwitchedOff() {
  using Slide = KN::SlideArchive;
  if (graph_.application() != Application::kKeynote) return;
  for (const Object& object : graph_.objects()) {
    if (!Types<Slide>::hold(object.type)) continue;
    const Message<Slide> slide(object.payload);
    std::set<Identifier> listed;
    for (const auto field : {Slide::owned_drawables, Slide::drawables_z_order})
      for (const auto& drawable : slide.all(field)) listed.insert(identifierOf(drawable));
    for (const auto field : {Slide::titlePlaceholder, Slide::bodyPlaceholder,
                             Slide::objectPlaceholder, Slide::slideNumberPlaceholder}) {
      const Identifier placeholder = identifierOf(slide.get(field));
      if (!listed.contains(placeholder)) boxes_.emplace(placeholder, "switched off");
    }
  }
}

// What the slides of the theme hold is for others to begin with.
void LeftOutTexts::findTemplates() {
  using Slide = KN::SlideArchive;
  if (graph_.application() != Application::kKeynote) return;
  const Message<KN::DocumentArchive> document(graph_.document().payload);
  const Object* show = graph_.find(identifierOf(document.get(KN::DocumentArchive::show)));
  if (show == nullptr) return;
  std::set<Identifier> shown;
  const auto tree = Message<KN::ShowArchive>(show->payload).get(KN::ShowArchive::slideTree);
  for (const auto& node : tree.all(KN::SlideTreeArchive::slides))
    shown.insert(identifierOf(get<KN::SlideNodeArchive>(node).get(KN::SlideNodeArchive::slide)));
  for (const Object& object : graph_.objects()) {
    if (!Types<Slide>::hold(object.type) || shown.contains(object.identifier)) continue;
    const Message<Slide> slide(object.payload);
    for (const auto field : {Slide::owned_drawables, Slide::drawables_z_order})
      for (const auto& drawable : slide.all(field))
        boxes_.emplace(identifierOf(drawable), "of a template");
  }
}

void LeftOutTexts::findHiddenCaptions() {
  using Drawable = newer::TSD_DrawableArchive;
  for (const Object& object : graph_.objects()) {
    const DrawableType* type = typeIn(kDrawables, object.type);
    if (type == nullptr) continue;
    const Message<Drawable> drawable(within(object.payload, type->depth));
    if (drawable.get(Drawable::title_hidden))
      boxes_.emplace(identifierOf(drawable.get(Drawable::title)), "hidden title");
    if (drawable.get(Drawable::caption_hidden))
      boxes_.emplace(identifierOf(drawable.get(Drawable::caption)), "hidden caption");
  }
}

// A gallery has captions for each image and one for all, and shows one kind of them.
void LeftOutTexts::findGalleryCaptions() {
  using Gallery = TSA::GalleryInfo;
  using Item = TSA::GalleryItem;
  using Mode = TSA::GalleryCaptionMode;
  for (const Object& object : graph_.objects()) {
    if (object.type != kImage) continue;
    const auto gallery = Message<TSD::ImageArchive>(object.payload).get(Gallery::gallery_info);
    const Mode mode = gallery.get(Gallery::caption_mode);
    if (mode != Mode::GalleryCaptionModeAllImages)
      storages_.emplace(identifierOf(gallery.get(Gallery::caption_storage)), "hidden caption");
    if (mode == Mode::GalleryCaptionModePerImage) continue;
    for (const auto& item : gallery.all(Gallery::items))
      storages_.emplace(identifierOf(get<Item>(item).get(Item::caption_storage)), "hidden caption");
  }
}

// A section has masters for pages that it does not have.
void LeftOutTexts::findUnusedMasters() {
  using Master = TP::PageMasterArchive;
  using Section = TP::SectionArchive;
  if (graph_.application() != Application::kPages) return;
  std::set<Identifier> used;
  for (const Object& object : graph_.objects()) {
    if (!Types<Section>::hold(object.type)) continue;
    const Message<Section> section(object.payload);
    used.insert(identifierOf(section.get(Section::odd_page_master)));
    if (section.get(Section::page_master_even_odd_pages_different))
      used.insert(identifierOf(section.get(Section::even_page_master)));
    if (section.get(Section::page_master_first_page_different) &&
        !section.get(Section::page_master_first_page_hides_header_footer))
      used.insert(identifierOf(section.get(Section::first_page_master)));
  }
  for (const Object& object : graph_.objects()) {
    if (!Types<Master>::hold(object.type) || used.contains(object.identifier)) continue;
    const Message<Master> master(object.payload);
    for (const auto field : {Master::headers, Master::footers})
      for (const auto& storage : master.all(field))
        storages_.emplace(identifierOf(storage), "of a page that is not there");
  }
}

void LeftOutTexts::findBodyOfPageLayout() {
  using Document = TP::DocumentArchive;
  if (graph_.application() != Application::kPages) return;
  const Message<Document> document(graph_.document().payload);
  const auto settings = get<TP::SettingsArchive>(document.get(Document::settings));
  if (!settings.get(TP::SettingsArchive::body, true))
    storages_.emplace(identifierOf(document.get(Document::body_storage)),
                      "the body of a page layout");
}

// A box has up to three texts, and shows one.
void LeftOutTexts::findTextsOfBoxes() {
  using Flow = TSWP::FlowInfoArchive;
  for (const Object& object : graph_.objects()) {
    const DrawableType* type = typeIn(kBoxes, object.type);
    if (type == nullptr) continue;
    const Message<Info> box(within(object.payload, type->depth));
    const Identifier own = identifierOf(box.get(Info::owned_storage));
    const Identifier flow =
        identifierOf(get<Flow>(box.get(Info::text_flow)).get(Flow::text_storage));
    const Identifier older = identifierOf(box.get(Info::deprecated_storage));
    const auto hidden = boxes_.find(object.identifier);
    const std::string_view kind = object.type == kStickyNote ? "copy of a comment"
                                  : hidden != boxes_.end()   ? std::string_view(hidden->second)
                                                             : std::string_view();
    bool shown = kind.empty();
    for (const Identifier storage : {own, flow, older}) {
      if (storage == 0 || !hasText(storage)) continue;
      if (!std::exchange(shown, false))
        storages_.emplace(storage, kind.empty() ? "older copy" : kind);
    }
  }
}

// What a table shows for its groups it also keeps as a table of its own.
void LeftOutTexts::findSummaries() {
  using Summary = TST::SummaryModelArchive;
  constexpr std::uint32_t kSummary = 6316;
  for (const Object& object : graph_.objects()) {
    if (object.type != kSummary) continue;
    const auto store = Message<Summary>(object.payload).get(Summary::data_store);
    summaryLists_.insert(identifierOf(store.get(TST::DataStore::stringTable)));
  }
}

void LeftOutTexts::addStorages() {
  for (const Object& object : graph_.objects()) {
    if (!Types<Storage>::hold(object.type)) continue;
    const auto kind = storages_.find(object.identifier);
    if (kind != storages_.end())
      kinds_.emplace(squeezed(textOfStorage(Message<Storage>(object.payload))), kind->second);
  }
}

// A string that no cell refers to: by its count, or by its key, where 0 is none.
void LeftOutTexts::addTableStrings() {
  using List = TST::TableDataList;
  using Entry = TST::TableDataList_ListEntry;
  for (const Object& object : graph_.objects()) {
    if (object.type != kTableDataList) continue;
    const bool ofSummary = summaryLists_.contains(object.identifier);
    for (const auto& entry : Message<List>(object.payload).all(List::entries)) {
      const bool unused = entry.get(Entry::refcount) == 0 || entry.get(Entry::key) == 0;
      if (unused || ofSummary)
        kinds_.emplace(squeezed(entry.get(Entry::string)),
                       ofSummary ? "of a summary" : "of no cell");
    }
  }
}

}  // namespace dorvex::testing
