#include "tables/cell_reader.h"

#include <cmath>
#include <utility>
#include <variant>
#include <vector>

#include "TSCEArchives.h"
#include "TSDArchives.h"
#include "graph/plain_text.h"
#include "tables/cell_value.h"
#include "tables/formula.h"
#include "tables/table_directory.h"
#include "text/comment.h"
#include "text/storage.h"

namespace dorvex::content {
namespace {

using Store = TST::DataStore;
using ListEntry = TST::TableDataList_ListEntry;

// The format keys of a cell in the order of the format kinds, which count from 1.
std::optional<CellKey> keyOfKind(std::uint32_t kind) {
  constexpr auto kFirst = static_cast<std::uint32_t>(CellKey::kNumberFormat);
  constexpr std::uint32_t kKinds = 6;
  if (kind < 1 || kind > kKinds) return std::nullopt;
  return static_cast<CellKey>(kFirst + kind - 1);
}

// The format of a cell that does not say which of its formats it shows.
CellKey keyOfType(StoredType type) {
  switch (type) {
    case StoredType::kCurrency:
      return CellKey::kCurrencyFormat;
    case StoredType::kDate:
      return CellKey::kDateFormat;
    case StoredType::kDuration:
      return CellKey::kDurationFormat;
    case StoredType::kBool:
      return CellKey::kBooleanFormat;
    case StoredType::kText:
    case StoredType::kRich:
      return CellKey::kTextFormat;
    default:
      return CellKey::kNumberFormat;
  }
}

Control controlOfInteraction(std::uint32_t interaction) {
  switch (interaction) {
    case 4:
      return Control::kStepper;
    case 5:
      return Control::kSlider;
    case 6:
      return Control::kRating;
    case 7:
      return Control::kPopup;
    case 8:
      return Control::kCheckbox;
    default:
      return Control::kNone;
  }
}

std::optional<Decimal> numberIn(const CellRecord& record) {
  if (!record.decimal.empty()) return Decimal::fromBits(record.decimal);
  if (record.number && std::isfinite(*record.number)) return Decimal(*record.number);
  return std::nullopt;
}

// The paragraphs of a cell, which has no place for anything else.
class CellText final : public StorageSink {
 public:
  void block(Block&& block) override {
    if (auto* paragraph = std::get_if<Paragraph>(&block.what)) {
      paragraphs_.push_back(std::move(*paragraph));
    } else if (!std::holds_alternative<Break>(block.what)) {
      problem_ = "what is drawn in its text is not shown";
    }
  }
  std::optional<NoteMark> footnote(const Object&, bool deleted) override {
    if (!deleted) problem_ = "a footnote in its text is not shown";
    return NoteMark{};
  }

  std::vector<Paragraph>& paragraphs() { return paragraphs_; }
  // What of the text is not among the paragraphs; empty for nothing.
  std::string_view problem() const { return problem_; }

 private:
  std::vector<Paragraph> paragraphs_;
  std::string_view problem_;
};

// The item of that number in a pop-up menu. Both generations of items have the same fields.
template <typename Items>
std::optional<Message<TSCE::CellValueArchive>> itemAt(const Items& items, double index) {
  double number = 0;
  for (const auto& item : items)
    if (number++ == index) return item.template as<TSCE::CellValueArchive>();
  return std::nullopt;
}

void setText(std::string_view text, const CellFormat& format, const CellParts& parts, Cell& cell) {
  cell.type = CellType::kText;
  appendPlainText(text, cell.value);
  if (parts.text) format.appendText(text, cell.text);
}

}  // namespace

std::string columnName(std::uint32_t column) {
  std::string name;
  for (std::uint64_t rest = std::uint64_t{column} + 1; rest > 0; rest = (rest - 1) / 26)
    name.insert(name.begin(), static_cast<char>('A' + (rest - 1) % 26));
  return name;
}

const DataList& LazyList::get(Reading& reading) {
  if (!list_) list_.emplace(reading, reference_);
  return *list_;
}

const CellFormat* FormatList::find(std::uint32_t key, Reading& reading, Formatting& formatting) {
  const DataList& list = list_.get(reading);
  formats_.resize(list.size());
  const auto index = list.indexOf(key);
  if (!index) return nullptr;
  auto& format = formats_[*index];
  if (!format) {
    const auto archive = list[*index].get(ListEntry::format);
    format = std::make_unique<CellFormat>(archive, formatting, customOf(archive, reading));
  }
  return format.get();
}

CustomArchive FormatList::customOf(const FormatArchive& format, Reading& reading) {
  const auto key = format.find(TSK::FormatStructArchive::custom_id);
  const auto* entry = key ? customs_.get(reading).find(*key) : nullptr;
  return entry == nullptr ? CustomArchive() : entry->get(ListEntry::custom_format);
}

CellReader::CellReader(Reading& reading, const Message<Store>& store, std::string tableName,
                       std::uint64_t model)
    : reading_(reading),
      formatting_(reading.keep<Formatting>()),
      tableName_(std::move(tableName)),
      model_(model),
      strings_(store.get(Store::stringTable)),
      richTexts_(store.get(Store::rich_text_table)),
      formulas_(store.get(Store::formula_table)),
      controls_(store.get(Store::control_cell_spec_table)),
      comments_(store.get(Store::commentStorageTable)),
      choices_(store.get(Store::multipleChoiceListFormatTable)),
      formats_(store.get(Store::format_table)),
      olderFormats_(store.get(Store::format_table_pre_bnc), store.get(Store::customFormatTable)) {}

void CellReader::addProblem(std::string_view problem, const Place& place) {
  if (!reading_.wantsProblems()) return;
  reading_.addProblem("Table \"" + tableName_ + "\", " + columnName(place.column) +
                      std::to_string(std::uint64_t{place.row} + 1) + ": " + std::string(problem));
}

// The entry of a key that the cell has; null without one, and counted where it is
// missing.
const CellReader::Entry* CellReader::find(LazyList& list, std::optional<std::uint32_t> key,
                                          std::string_view what, const Place& place) {
  if (!key) return nullptr;
  const Entry* entry = list.get(reading_).find(*key);
  if (entry == nullptr) addProblem("its " + std::string(what) + " is missing", place);
  return entry;
}

void CellReader::read(const CellRecord& record, const CellParts& parts, const Place& place,
                      Cell& cell) {
  const CellFormat& format = formatOf(record, place);
  readValue(record, format, parts, place, cell);
  readControl(record, format, place, cell);
  if (parts.formula) readFormula(record, place, cell);
  if (parts.rich) readComment(record, place, cell);
  if (cell.type == CellType::kNone && record.type == StoredType::kEmpty &&
      (cell.control != Control::kNone || record.find(CellKey::kComment)))
    cell.type = CellType::kEmpty;
  if (cell.type != CellType::kNone) cell.format = format.name();
}

const CellFormat& CellReader::formatOf(const CellRecord& record, const Place& place) {
  std::optional<std::uint32_t> key;
  if (record.older) {
    key = record.find(CellKey::kCurrentFormat);
  } else if (const auto kind = record.find(CellKey::kFormatKind)) {
    if (const auto which = keyOfKind(*kind)) key = record.find(*which);
  } else {
    key = record.find(keyOfType(record.type));
  }
  if (!key) return plain_;
  FormatList& list = record.older ? olderFormats_ : formats_;
  if (const CellFormat* format = list.find(*key, reading_, formatting_)) return *format;
  addProblem("its format is missing", place);
  return plain_;
}

void CellReader::readValue(const CellRecord& record, const CellFormat& format,
                           const CellParts& parts, const Place& place, Cell& cell) {
  switch (record.type) {
    case StoredType::kEmpty:
      return;
    case StoredType::kNumber:
    case StoredType::kCurrency:
      return readNumber(record, format, parts, place, cell);
    case StoredType::kText:
      return readText(record, format, parts, place, cell);
    case StoredType::kRich:
      return readRich(record, format, parts, place, cell);
    case StoredType::kError:
      cell.type = CellType::kError;
      return;
    case StoredType::kDate:
      if (!record.seconds) break;
      appendIsoDate(*record.seconds, cell.value);
      if (cell.value.empty()) break;
      cell.type = CellType::kDate;
      if (parts.text) format.appendDate(*record.seconds, formatting_.symbols(), cell.text);
      return;
    case StoredType::kDuration:
      if (!record.number || !std::isfinite(*record.number)) break;
      cell.type = CellType::kDuration;
      cell.number = *record.number;
      if (parts.text) format.appendDuration(cell.number, formatting_.symbols(), cell.text);
      return;
    case StoredType::kBool:
      if (!record.number) break;
      cell.type = CellType::kBool;
      cell.number = *record.number > 0 ? 1 : 0;
      if (parts.text) CellFormat::appendBool(cell.number != 0, cell.text);
      return;
  }
  addProblem("it has no value of its type", place);
}

void CellReader::readNumber(const CellRecord& record, const CellFormat& format,
                            const CellParts& parts, const Place& place, Cell& cell) {
  const auto number = numberIn(record);
  if (!number) return addProblem("it has no number", place);
  if (record.older && format.choices())
    return readChoice(*format.choices(), number->toDouble(), place, cell);
  const bool currency = record.type == StoredType::kCurrency;
  cell.type = currency ? CellType::kCurrency : format.typeOfNumber();
  cell.number = number->toDouble();
  if (number->exceedsDouble()) cell.decimal = number->text();
  cell.currency = format.currency();
  if (parts.text) format.appendNumber(*number, formatting_.symbols(), cell.text);
}

// A pop-up menu of older documents stores the number of its item, of which the first is
// empty.
void CellReader::readChoice(std::uint32_t list, double number, const Place& place, Cell& cell) {
  using Menu = TST::PopUpMenuModel;
  const Entry* entry = find(choices_, list, "pop-up menu", place);
  if (entry == nullptr) return;
  const auto menu = reading_.get<Menu>(entry->get(ListEntry::reference));
  const auto index = std::floor(number);
  const auto newer = menu.all(Menu::tsce_item);
  const auto item = newer.first() ? itemAt(newer, index) : itemAt(menu.all(Menu::item), index);
  if (!item) return addProblem("its pop-up menu has no such item", place);
  setChosen(*item, cell);
}

void CellReader::setChosen(const Message<TSCE::CellValueArchive>& item, Cell& cell) {
  using Value = TSCE::CellValueArchive;
  cell.type = CellType::kEmpty;  // the choice of nothing
  if (const auto text = item.find(Value::string_value)) {
    cell.type = CellType::kText;
    cell.value = plainText(text->get(TSCE::StringCellValueArchive::value));
  } else if (const auto number = item.find(Value::number_value)) {
    cell.number = number->get(TSCE::NumberCellValueArchive::value);
    cell.type = std::isfinite(cell.number) ? CellType::kNumber : CellType::kNone;
  } else if (const auto date = item.find(Value::date_value)) {
    appendIsoDate(date->get(TSCE::DateCellValueArchive::value), cell.value);
    cell.type = cell.value.empty() ? CellType::kNone : CellType::kDate;
  } else if (const auto boolean = item.find(Value::boolean_value)) {
    cell.type = CellType::kBool;
    cell.number = boolean->get(TSCE::BooleanCellValueArchive::value) ? 1 : 0;
  }
  cell.text = shownValue(item, formatting_);
}

void CellReader::readText(const CellRecord& record, const CellFormat& format,
                          const CellParts& parts, const Place& place, Cell& cell) {
  const auto key = record.find(CellKey::kString);
  if (!key) return setText({}, format, parts, cell);  // an empty text
  if (const Entry* entry = find(strings_, key, "text", place))
    setText(entry->get(ListEntry::string), format, parts, cell);
}

void CellReader::readRich(const CellRecord& record, const CellFormat& format,
                          const CellParts& parts, const Place& place, Cell& cell) {
  const auto key = record.find(CellKey::kRichText);
  if (!key) {
    if (record.find(CellKey::kString)) return readText(record, format, parts, place, cell);
    return readNumber(record, format, parts, place, cell);
  }
  const Entry* entry = find(richTexts_, key, "rich text", place);
  if (entry == nullptr) return;
  const auto payload =
      reading_.get<TST::RichTextPayloadArchive>(entry->get(ListEntry::rich_text_payload));
  const auto storage =
      reading_.get<TSWP::StorageArchive>(payload.get(TST::RichTextPayloadArchive::storage));
  cell.type = CellType::kRich;
  CellText text;
  readStorage(reading_, storage, text);
  if (!text.problem().empty()) addProblem(text.problem(), place);
  bool first = true;
  for (const Paragraph& paragraph : text.paragraphs()) {
    if (!std::exchange(first, false)) cell.value += '\n';
    cell.value += paragraph.text;
  }
  if (parts.rich) cell.paragraphs = std::move(text.paragraphs());
  if (parts.text) cell.text = cell.value;
}

void CellReader::readFormula(const CellRecord& record, const Place& place, Cell& cell) {
  const auto key = record.find(CellKey::kFormula);
  if (!key) return;
  if (const Entry* entry = formulas_.get(reading_).find(*key)) {
    const Host host{reading_.keep<TableDirectory>().byModel(model_), place};
    FormulaText formula = formulaText(reading_, entry->get(ListEntry::formula), host);
    cell.formula = std::move(formula.text);
    if (!formula.problem.empty()) cell.formulaProblem = "its formula: " + formula.problem;
  } else {
    cell.formulaProblem = "its formula is missing";
  }
  if (!cell.formulaProblem.empty()) addProblem(cell.formulaProblem, place);
}

void CellReader::readControl(const CellRecord& record, const CellFormat& format, const Place& place,
                             Cell& cell) {
  cell.control = format.control();
  const Entry* entry = find(controls_, record.find(CellKey::kControl), "control", place);
  if (entry == nullptr) return;
  const auto control = entry->get(ListEntry::cell_spec);
  cell.control = controlOfInteraction(control.get(TST::CellSpecArchive::interaction_type));
}

void CellReader::readComment(const CellRecord& record, const Place& place, Cell& cell) {
  const Entry* entry = find(comments_, record.find(CellKey::kComment), "comment", place);
  if (entry == nullptr) return;
  const auto storage =
      reading_.get<TSD::CommentStorageArchive>(entry->get(ListEntry::comment_storage));
  Comment comment = content::readComment(reading_, storage);
  if (saysSomething(comment)) cell.comments.push_back(std::move(comment));
}

}  // namespace dorvex::content
