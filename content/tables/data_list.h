// The lists of a table: what its cells refer to by key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "TSTArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

class DataList {
 public:
  using Entry = Message<TST::TableDataList_ListEntry>;

  DataList() = default;  // one without entries
  DataList(Reading& reading, const Message<TSP::Reference>& list);

  std::size_t size() const { return entries_.size(); }
  // The number of the entry of that key, for what is kept beside the list.
  std::optional<std::size_t> indexOf(std::uint32_t key) const;
  const Entry& operator[](std::size_t index) const { return entries_[index].entry; }
  // The entry of that key, or null.
  const Entry* find(std::uint32_t key) const;

 private:
  struct Keyed {
    std::uint32_t key;
    Entry entry;
  };

  template <typename Entries>
  void add(const Entries& entries);
  void indexKeys();

  std::vector<Keyed> entries_;             // ascending by key
  std::vector<std::uint32_t> indexOfKey_;  // one more than the index; empty for scattered keys
};

}  // namespace dorvex::content
