// Rows and columns by their identifiers: those stay the same when a person moves, sorts
// or groups what they stand for.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <vector>

#include "TSPMessages.h"
#include "TSTArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

struct Uid {
  std::uint64_t upper = 0;
  std::uint64_t lower = 0;

  Uid() = default;
  Uid(std::uint64_t upper, std::uint64_t lower) : upper(upper), lower(lower) {}
  explicit Uid(const Message<TSP::UUID>& uid);
  // Four words, or 16 bytes, or nothing.
  explicit Uid(const Message<TSP::CFUUIDArchive>& uid);

  auto operator<=>(const Uid&) const = default;  // NOLINT(modernize-use-nullptr): no pointer
};

// The rows, or the columns, of a map: which identifier stands at which place.
class UidLine {
 public:
  UidLine() = default;
  // The identifiers, and for each place the number of its one.
  UidLine(std::vector<Uid> uids, std::vector<std::uint32_t> uidOfPlace);

  std::size_t size() const { return uids_.size(); }
  // The identifiers by place.
  const std::vector<Uid>& uids() const { return uids_; }
  std::optional<std::uint32_t> placeOf(const Uid& uid) const;

 private:
  std::vector<Uid> uids_;
  std::vector<std::uint32_t> sorted_;  // places, ascending by identifier
};

struct UidMap {
  UidMap() = default;
  explicit UidMap(const Message<TST::ColumnRowUIDMapArchive>& archive);

  UidLine rows, columns;
};

}  // namespace dorvex::content
