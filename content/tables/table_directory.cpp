#include "tables/table_directory.h"

#include <algorithm>
#include <charconv>

#include "TNArchives.h"
#include "TSCEArchives.h"
#include "TSDArchives.h"
#include "graph/plain_text.h"
#include "newer.h"
#include "tables/table_rows.h"

namespace dorvex::content {
namespace {

using Model = TST::TableModelArchive;
using Info = TST::TableInfoArchive;

constexpr unsigned kDeepestBox = 32;
// Tables with more header cells than these are referred to by letters and numbers.
constexpr std::uint32_t kMostHeaders = 100'000;

// References within the directory are followed without being counted: whoever shows
// what they refer to counts them.
template <typename M>
Message<M> at(const Reading& reading, const Message<TSP::Reference>& reference) {
  const Object* object = reading.graph().find(reference.get(TSP::Reference::identifier));
  return object != nullptr && Types<M>::hold(object->type) ? Message<M>(object->payload)
                                                           : Message<M>();
}

// "B038FD03-5528-4270-859A-5B60720DDFE1" as the identifier that older documents refer
// to it by: its bytes, the lowest first.
std::optional<Uid> parseUid(std::string_view text) {
  std::uint64_t words[2] = {};
  unsigned bytes = 0;
  while (!text.empty() && bytes < 16) {
    if (text.front() == '-') {
      text.remove_prefix(1);
      continue;
    }
    std::uint64_t byte = 0;
    const char* const end = text.data() + std::min<std::size_t>(2, text.size());
    if (std::from_chars(text.data(), end, byte, 16).ptr != end) return std::nullopt;
    words[bytes / 8] |= byte << (8 * (bytes % 8));
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    ++bytes;
  }
  return bytes == 16 && text.empty() ? std::optional(Uid(words[1], words[0])) : std::nullopt;
}

// Empties the headers that name more than one line.
void dropDoubles(std::vector<std::string>& headers) {
  std::map<std::string_view, unsigned> counts;
  for (const std::string& header : headers) ++counts[header];
  std::vector<bool> doubles;
  doubles.reserve(headers.size());
  for (const std::string& header : headers) doubles.push_back(counts[header] > 1);
  for (std::size_t i = 0; i < headers.size(); ++i)
    if (doubles[i]) headers[i].clear();
}

Table shapeOf(const NamedTable& table) {
  Table shape;
  shape.name = table.name;
  shape.rows = table.rows;
  shape.columns = table.columns;
  return shape;
}

constexpr CellParts kShownOnly{true, false, false};

}  // namespace

std::string quotedName(std::string_view name) {
  static constexpr std::string_view kOperators = "+-*/^&=<>(),;:\"{}%!$";
  static constexpr std::string_view kWideOperators[] = {"×", "÷", "≠", "≤", "≥"};
  const auto contains = [&](std::string_view part) {
    return name.find(part) != std::string_view::npos;
  };
  const bool quoted = name.find_first_of(kOperators) != std::string_view::npos ||
                      std::ranges::any_of(kWideOperators, contains);
  std::string text = quoted ? "'" : "";
  for (const char c : name) {
    if (c == '\'') {
      text += "'''";
    } else {
      text += c;
    }
  }
  if (quoted) text += '\'';
  return text;
}

TableDirectory::TableDirectory(Reading& reading) : reading_(reading) {
  addTables();
  addSheets();
  addOwners();
}

void TableDirectory::addTables() {
  for (const Object& object : reading_.graph().objects()) {
    if (!Types<Model>::hold(object.type)) continue;
    const Message<Model> model(object.payload);
    NamedTable& table = tables_.emplace_back();
    table.identifier = object.identifier;
    table.name = plainText(model.get(Model::table_name));
    table.rows = model.get(Model::number_of_rows);
    table.columns = std::min(model.get(Model::number_of_columns), kMostHeaders);
    table.model = model;
    byModel_[object.identifier] = &table;
  }
}

void TableDirectory::addSheets() {
  if (reading_.application() != Application::kNumbers) return countAllNames();
  using Form = TN::FormBasedSheetArchive;
  using Sheet = TN::SheetArchive;
  const Message<TN::DocumentArchive> document(reading_.graph().document().payload);
  for (const auto& reference : document.all(TN::DocumentArchive::sheets)) {
    const Object* object = reading_.graph().find(reference.get(TSP::Reference::identifier));
    if (object == nullptr) continue;
    const auto sheet = Types<Form>::hold(object->type)
                           ? Message<Form>(object->payload).get(Form::super)
                           : Message<Sheet>(object->payload);
    const std::string name = plainText(sheet.get(Sheet::name));
    for (const auto& drawable : sheet.all(Sheet::drawable_infos)) addToSheet(drawable, name, 0);
  }
}

void TableDirectory::countAllNames() {
  for (const NamedTable& table : tables_) ++names_[table.name];
}

// A table that is on no sheet, such as the data behind a pivot table, shares its name with
// none that a person could mean.
void TableDirectory::addToSheet(const Message<TSP::Reference>& drawable, std::string_view sheet,
                                unsigned depth) {
  constexpr std::uint32_t kGroup = 3008;
  const Object* object = reading_.graph().find(drawable.get(TSP::Reference::identifier));
  if (object == nullptr || depth > kDeepestBox) return;
  if (Types<Info>::hold(object->type)) {
    const auto model = Message<Info>(object->payload).get(Info::tableModel);
    const auto found = byModel_.find(model.get(TSP::Reference::identifier));
    if (found == byModel_.end() || found->second->isOnSheet) return;
    NamedTable& table = *found->second;
    table.isOnSheet = true;
    table.sheet = sheet;
    ++names_[table.name];
  } else if (object->type == kGroup) {
    const Message<TSD::GroupArchive> group(object->payload);
    for (const auto& child : group.all(TSD::GroupArchive::children))
      addToSheet(child, sheet, depth + 1);
  }
}

// Formulas refer to the owner that stands behind a table's own one; in older documents
// to the table's identifier.
void TableDirectory::addOwners() {
  using Owner = TSCE::FormulaOwnerDependenciesArchive;
  using NewerOwner = newer::TSCE_FormulaOwnerDependenciesArchive;
  using NewerModel = newer::TST_TableModelArchive;
  std::map<Uid, Uid> baseOf;
  for (const Object& object : reading_.graph().objects()) {
    if (!Types<Owner>::hold(object.type)) continue;
    const Message<Owner> owner(object.payload);
    if (const auto base = owner.as<NewerOwner>().find(NewerOwner::base_owner_uid))
      baseOf.emplace(Uid(owner.get(Owner::formula_owner_uid)), Uid(*base));
  }
  for (const NamedTable& table : tables_) {
    if (const auto uid = parseUid(table.model.get(Model::table_id))) byOwner_.emplace(*uid, &table);
    const auto haunted = table.model.as<NewerModel>().find(NewerModel::haunted_owner);
    if (!haunted) continue;
    const Uid owner(haunted->get(newer::TST_TableModelArchive_HauntedOwnerArchive::owner_uid));
    const auto base = baseOf.find(owner);
    if (base != baseOf.end()) byOwner_.emplace(base->second, &table);
  }
}

const NamedTable* TableDirectory::byModel(std::uint64_t identifier) const {
  const auto table = byModel_.find(identifier);
  return table == byModel_.end() ? nullptr : table->second;
}

const NamedTable* TableDirectory::byOwner(const Uid& uid) const {
  const auto table = byOwner_.find(uid);
  return table == byOwner_.end() ? nullptr : table->second;
}

std::string TableDirectory::qualifier(const NamedTable& table, const NamedTable* host) const {
  if (host == &table) return {};
  std::string text;
  const bool sameSheet = host != nullptr && host->sheet == table.sheet;
  const auto count = names_.find(table.name);
  const bool unique = count != names_.end() && count->second == 1;
  if (!sameSheet && !unique && !table.sheet.empty()) text = quotedName(table.sheet) + "::";
  return text + quotedName(table.name) + "::";
}

const UidMap& TableDirectory::uids(const NamedTable& table) {
  const auto known = uids_.find(table.identifier);
  if (known != uids_.end()) return known->second;
  const auto map =
      at<TST::ColumnRowUIDMapArchive>(reading_, table.model.get(Model::base_column_row_uids));
  return uids_.emplace(table.identifier, UidMap(map)).first->second;
}

std::string_view TableDirectory::columnHeader(const NamedTable& table, std::uint32_t column) {
  auto known = columnHeaders_.find(table.identifier);
  if (known == columnHeaders_.end())
    known = columnHeaders_.emplace(table.identifier, readColumnHeaders(table)).first;
  return column < known->second.size() ? known->second[column] : std::string_view();
}

std::string_view TableDirectory::rowHeader(const NamedTable& table, std::uint32_t row) {
  auto known = rowHeaders_.find(table.identifier);
  if (known == rowHeaders_.end())
    known = rowHeaders_.emplace(table.identifier, readRowHeaders(table)).first;
  return row < known->second.size() ? known->second[row] : std::string_view();
}

// The header row next to the body has the names.
TableDirectory::Headers TableDirectory::readColumnHeaders(const NamedTable& table) {
  const std::uint32_t headerRows = table.model.get(Model::number_of_header_rows);
  Headers headers;
  if (headerRows == 0 || headerRows > table.rows) return headers;
  StoredRows rows(reading_, table.model.get(Model::base_data_store), shapeOf(table));
  std::vector<Cell> cells;
  rows.read(headerRows - 1, kShownOnly, cells);
  for (Cell& cell : cells) headers.push_back(std::move(cell.text));
  dropDoubles(headers);
  return headers;
}

TableDirectory::Headers TableDirectory::readRowHeaders(const NamedTable& table) {
  const std::uint32_t headerColumns = table.model.get(Model::number_of_header_columns);
  Headers headers;
  if (headerColumns == 0 || headerColumns > table.columns || table.rows > kMostHeaders)
    return headers;
  Table shape = shapeOf(table);
  shape.columns = headerColumns;
  StoredRows rows(reading_, table.model.get(Model::base_data_store), shape);
  std::vector<Cell> cells;
  for (std::uint32_t row = 0; row < table.rows; ++row) {
    rows.read(row, kShownOnly, cells);
    headers.push_back(cells[headerColumns - 1].text);
  }
  dropDoubles(headers);
  return headers;
}

}  // namespace dorvex::content
