#include "tables/hidden_lines.h"

#include <algorithm>

#include "graph/sorted.h"
#include "newer.h"

namespace dorvex::content {
namespace {

using State = TST::HiddenStateExtentArchive_RowOrColumnState;
using Bucket = TST::HeaderStorageBucket;
using NewerState = newer::TST_HiddenStateExtentArchive_RowOrColumnState;

bool isHidden(const Message<State>& state) {
  return state.get(State::user_hidden) || state.get(State::filtered) ||
         state.as<NewerState>().get(NewerState::pivot_hidden);
}

std::vector<std::uint32_t> hiddenOf(const Message<TST::HiddenStateExtentArchive>& extent,
                                    const UidLine& line) {
  std::vector<std::uint32_t> hidden;
  for (const auto& state : extent.all(TST::HiddenStateExtentArchive::hidden_states)) {
    if (!isHidden(state)) continue;
    if (const auto place = line.placeOf(Uid(state.get(State::row_or_column_uid))))
      hidden.push_back(*place);
  }
  sortAndKeepFirst(hidden);
  return hidden;
}

// The states of this table among those of an owner, which may keep several.
Message<TST::HiddenStatesArchive> statesOf(const Message<TST::TableInfoArchive>& info,
                                           const Message<TST::TableModelArchive>& model) {
  const auto owner = model.get(TST::TableModelArchive::hidden_states_owner);
  const auto all = owner.all(TST::HiddenStatesOwnerArchive::hidden_states);
  const auto wanted = info.find(TST::TableInfoArchive::hidden_states_uuid);
  for (const auto& states : all) {
    const auto uid = states.get(TST::HiddenStatesArchive::hidden_states_uid);
    if (wanted && Uid(uid) == Uid(*wanted)) return states;
  }
  return all.first().value_or(Message<TST::HiddenStatesArchive>());
}

void addHiddenOf(const Message<Bucket>& bucket, std::vector<std::uint32_t>& hidden) {
  using Header = TST::HeaderStorageBucket_Header;
  for (const auto& header : bucket.all(Bucket::headers))
    if (header.get(Header::hidingState) != 0) hidden.push_back(header.get(Header::index));
}

// Before tables had owners of their hidden states, the headers of lines said which are
// hidden; in documents with such owners they say it of none.
HiddenLines olderHiddenLines(Reading& reading, const Message<TST::DataStore>& store) {
  using Store = TST::DataStore;
  HiddenLines hidden;
  for (const auto& bucket : store.get(Store::rowHeaders).all(TST::HeaderStorage::buckets))
    addHiddenOf(reading.get<Bucket>(bucket), hidden.rows);
  addHiddenOf(reading.get<Bucket>(store.get(Store::columnHeaders)), hidden.columns);
  sortAndKeepFirst(hidden.rows);
  sortAndKeepFirst(hidden.columns);
  return hidden;
}

}  // namespace

HiddenLines readHiddenLines(Reading& reading, const Message<TST::TableInfoArchive>& info,
                            const Message<TST::TableModelArchive>& model, const UidMap& uids) {
  using Model = TST::TableModelArchive;
  if (!model.has(Model::hidden_states_owner))
    return olderHiddenLines(reading, model.get(Model::base_data_store));
  const auto states = statesOf(info, model);
  return {hiddenOf(states.get(TST::HiddenStatesArchive::row_hidden_state_extent), uids.rows),
          hiddenOf(states.get(TST::HiddenStatesArchive::column_hidden_state_extent), uids.columns)};
}

}  // namespace dorvex::content
