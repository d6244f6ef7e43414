#include "tables/data_list.h"

#include <algorithm>
#include <set>

#include "graph/sorted.h"
#include "newer.h"

namespace dorvex::content {

DataList::DataList(Reading& reading, const Message<TSP::Reference>& list) {
  const auto archive = reading.get<TST::TableDataList>(list);
  add(archive.all(TST::TableDataList::entries));
  std::set<std::uint64_t> read;
  for (const auto& segment :
       archive.as<newer::TST_TableDataList>().all(newer::TST_TableDataList::segments)) {
    if (!read.insert(segment.get(TSP::Reference::identifier)).second) continue;
    const auto part = reading.get<newer::TST_TableDataListSegment>(segment);
    add(part.all(newer::TST_TableDataListSegment::entries));
  }
  indexKeys();
}

template <typename Entries>
void DataList::add(const Entries& entries) {
  for (const auto& entry : entries)
    entries_.push_back({entry.get(TST::TableDataList_ListEntry::key), entry});
}

// Keys count up from 1 with few gaps, unless a document is damaged.
void DataList::indexKeys() {
  sortAndKeepFirst(entries_, &Keyed::key);
  if (entries_.empty() || entries_.back().key > 4 * entries_.size() + 64) return;
  indexOfKey_.resize(entries_.back().key + std::size_t{1});
  for (std::size_t i = 0; i < entries_.size(); ++i)
    indexOfKey_[entries_[i].key] = static_cast<std::uint32_t>(i + 1);
}

std::optional<std::size_t> DataList::indexOf(std::uint32_t key) const {
  if (!indexOfKey_.empty()) {
    if (key >= indexOfKey_.size() || indexOfKey_[key] == 0) return std::nullopt;
    return indexOfKey_[key] - std::size_t{1};
  }
  const auto entry = std::ranges::lower_bound(entries_, key, {}, &Keyed::key);
  if (entry == entries_.end() || entry->key != key) return std::nullopt;
  return static_cast<std::size_t>(entry - entries_.begin());
}

const DataList::Entry* DataList::find(std::uint32_t key) const {
  const auto index = indexOf(key);
  return index ? &entries_[*index].entry : nullptr;
}

}  // namespace dorvex::content
