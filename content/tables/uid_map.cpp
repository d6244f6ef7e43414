#include "tables/uid_map.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "graph/find_each.h"
#include "tables/cell_fields.h"

namespace dorvex::content {
namespace {

template <typename Uids, typename Numbers>
UidLine lineOf(const Uids& uids, const Numbers& numbers) {
  std::vector<Uid> all;
  all.reserve(uids.count());
  for (const auto& uid : uids) all.emplace_back(uid);
  std::vector<std::uint32_t> ofPlace;
  ofPlace.reserve(numbers.count());
  for (const std::uint32_t number : numbers) ofPlace.push_back(number);
  return {std::move(all), std::move(ofPlace)};
}

}  // namespace

Uid::Uid(const Message<TSP::UUID>& uid) {
  const auto words = findEach(uid, TSP::UUID::upper, TSP::UUID::lower);
  upper = std::get<0>(words).value_or(0);
  lower = std::get<1>(words).value_or(0);
}

Uid::Uid(const Message<TSP::CFUUIDArchive>& uid) {
  using Archive = TSP::CFUUIDArchive;
  const std::string_view bytes = uid.get(Archive::uuid_bytes);
  if (bytes.size() == 2 * sizeof lower) {
    lower = valueAt<std::uint64_t>(bytes, 0);
    upper = valueAt<std::uint64_t>(bytes, sizeof lower);
    return;
  }
  const auto joined = [](std::uint32_t high, std::uint32_t low) {
    return std::uint64_t{high} << 32 | low;
  };
  lower = joined(uid.get(Archive::uuid_w1), uid.get(Archive::uuid_w0));
  upper = joined(uid.get(Archive::uuid_w3), uid.get(Archive::uuid_w2));
}

UidLine::UidLine(std::vector<Uid> uids, std::vector<std::uint32_t> uidOfPlace) {
  // Each identifier has one place.
  uidOfPlace.resize(std::min(uidOfPlace.size(), uids.size()));
  uids_.reserve(uidOfPlace.size());
  for (const std::uint32_t number : uidOfPlace)
    uids_.push_back(number < uids.size() ? uids[number] : Uid());
  sorted_.resize(uids_.size());
  std::iota(sorted_.begin(), sorted_.end(), 0U);
  std::ranges::sort(sorted_, {},
                    [&](std::uint32_t place) { return std::pair(uids_[place], place); });
}

std::optional<std::uint32_t> UidLine::placeOf(const Uid& uid) const {
  const auto found =
      std::ranges::lower_bound(sorted_, uid, {}, [&](std::uint32_t place) { return uids_[place]; });
  if (found == sorted_.end() || uids_[*found] != uid) return std::nullopt;
  return *found;
}

UidMap::UidMap(const Message<TST::ColumnRowUIDMapArchive>& archive) {
  using Archive = TST::ColumnRowUIDMapArchive;
  rows = lineOf(archive.all(Archive::sorted_row_uids), archive.all(Archive::row_uid_for_index));
  columns =
      lineOf(archive.all(Archive::sorted_column_uids), archive.all(Archive::column_uid_for_index));
}

}  // namespace dorvex::content
