#include "tables/shown_lines.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "newer.h"
#include "tables/cell_value.h"
#include "tables/table_rows.h"

namespace dorvex::content {
namespace {

using Info = TST::TableInfoArchive;
using Model = TST::TableModelArchive;
using GroupBy = TST::CategoryOwnerArchive_GroupByArchive;
using Group = TST::CategoryOwnerArchive_GroupByArchive_GroupNodeArchive;
using Map = TST::ColumnRowUIDMapArchive;

// No application groups by more columns than five.
constexpr unsigned kDeepestCategory = 16;
// No application has tables of as many columns.
constexpr std::size_t kMostShownColumns = 10'000;

struct GroupLine {
  std::string label;
  unsigned level = 0;
};

// The labels of all groups by their identifiers.
class Groups {
 public:
  Groups(Reading& reading, const Message<Model>& model)
      : reading_(reading), formatting_(reading.keep<Formatting>()) {
    using NewerModel = newer::TST_TableModelArchive;
    using Owner = newer::TST_CategoryOwnerRefArchive;
    if (const auto reference = model.as<NewerModel>().find(NewerModel::category_owner)) {
      for (const auto& groupBy : reading.get<Owner>(*reference).all(Owner::group_by))
        add(reading.get<GroupBy>(groupBy));
    }
    const auto inlined = model.get(Model::category_owner);
    for (const auto& groupBy : inlined.all(TST::CategoryOwnerArchive::group_by)) add(groupBy);
  }

  const GroupLine* find(const Uid& uid) const {
    const auto group = groups_.find(uid);
    return group == groups_.end() ? nullptr : &group->second;
  }

 private:
  void add(const Message<GroupBy>& groupBy) {
    using Newer = newer::TST_GroupByArchive;
    if (!groupBy.get(GroupBy::is_enabled)) return;
    addChildren(groupBy.get(GroupBy::group_node_root), 0);
    if (const auto root = groupBy.as<Newer>().find(Newer::group_node_root_ref)) {
      if (const auto node = once(*root)) addChildren(*node, 0);
    }
  }

  // The group of a reference that was not followed before.
  std::optional<Message<Group>> once(const Message<TSP::Reference>& reference) {
    const Object* object = reading_.follow(reference);
    if (object == nullptr || !Types<Group>::hold(object->type) || !seen_.insert(object).second)
      return std::nullopt;
    return Message<Group>(object->payload);
  }

  void addChildren(const Message<Group>& parent, unsigned level) {
    using Newer = newer::TST_GroupNodeArchive;
    if (level > kDeepestCategory) return;
    for (const auto& child : parent.all(Group::child)) addGroup(child, level + 1);
    for (const auto& reference : parent.as<Newer>().all(Newer::child_ref)) {
      if (const auto child = once(reference)) addGroup(*child, level + 1);
    }
  }

  void addGroup(const Message<Group>& group, unsigned level) {
    groups_.emplace(Uid(group.get(Group::group_uid)),
                    GroupLine{shownValue(group.get(Group::group_cell_value), formatting_), level});
    addChildren(group, level);
  }

  Reading& reading_;
  Formatting& formatting_;
  std::set<const Object*> seen_;
  std::map<Uid, GroupLine> groups_;
};

// The cells of group and total lines: a table of their own.
class Sums {
 public:
  Sums(Reading& reading, const Message<Info>& info, const std::string& name) {
    using Archive = TST::SummaryModelArchive;
    const auto archive = reading.get<Archive>(info.get(Info::summary_model));
    uids_ = UidMap(reading.get<Map>(archive.get(Archive::column_row_uids)));
    Table shape;
    shape.name = name;
    shape.rows = static_cast<std::uint32_t>(uids_.rows.size());
    shape.columns = static_cast<std::uint32_t>(std::min(uids_.columns.size(), kMostShownColumns));
    rows_.emplace(reading, archive.get(Archive::data_store), shape);
  }

  // The texts of a line in the columns that are shown; none where it has none.
  std::vector<std::string> texts(const Uid& row, const std::vector<Uid>& columns) {
    const auto place = uids_.rows.placeOf(row);
    std::vector<std::string> texts;
    if (!place) return texts;
    rows_->read(*place, {true, false, false}, cells_);
    bool any = false;
    for (const Uid& uid : columns) {
      const auto column = uids_.columns.placeOf(uid);
      texts.push_back(column && *column < cells_.size() ? cells_[*column].text : std::string());
      any = any || !texts.back().empty();
    }
    if (!any) texts.clear();
    return texts;
  }

 private:
  UidMap uids_;
  std::optional<StoredRows> rows_;
  std::vector<Cell> cells_;
};

// Whether all lines are those of the model, in its order.
bool isPlain(const std::vector<ShownLine>& lines, std::uint32_t count) {
  if (lines.size() != count) return false;
  for (std::uint32_t i = 0; i < count; ++i)
    if (lines[i].model != i) return false;
  return true;
}

std::optional<std::uint32_t> modelLine(const UidLine& base, const Uid& uid, std::uint32_t count) {
  const auto place = base.placeOf(uid);
  return place && *place < count ? place : std::nullopt;
}

}  // namespace

void readShownLines(Reading& reading, const Message<Info>& info, const Message<Model>& model,
                    const UidMap& base, Table& table) {
  const auto reference = info.find(Info::view_column_row_uids);
  if (!reference) return;
  const UidMap view(reading.get<Map>(*reference));
  if (view.columns.size() > kMostShownColumns) return;
  const Groups groups(reading, model);
  Sums sums(reading, info, table.name);

  std::vector<ShownLine> rows;
  for (const Uid& uid : view.rows.uids()) {
    ShownLine& line = rows.emplace_back();
    line.model = modelLine(base.rows, uid, table.rows);
    if (line.model) continue;
    line.summary = sums.texts(uid, view.columns.uids());
    if (const GroupLine* group = groups.find(uid)) {
      line.group = group->label;
      line.level = group->level;
    }
  }
  std::vector<ShownLine> columns;
  for (const Uid& uid : view.columns.uids()) {
    ShownLine& line = columns.emplace_back();
    line.model = modelLine(base.columns, uid, table.columns);
  }
  if (rows.empty() || columns.empty()) return;
  if (!isPlain(rows, table.rows)) table.shownRows = std::move(rows);
  if (!isPlain(columns, table.columns)) table.shownColumns = std::move(columns);
}

}  // namespace dorvex::content
