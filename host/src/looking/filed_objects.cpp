#include "looking/filed_objects.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

namespace dorvex {
namespace {

// In one row; the others are counted.
constexpr std::size_t kMostNamed = 10;

struct Filed {
  std::uint64_t identifier;
  std::size_t member;
};

std::string list(const std::vector<std::uint64_t>& identifiers) {
  const std::size_t named = std::min(identifiers.size(), kMostNamed);
  std::string text;
  for (std::size_t i = 0; i < named; ++i) {
    if (i > 0) text += ", ";
    text += std::to_string(identifiers[i]);
  }
  const std::size_t others = identifiers.size() - named;
  return others == 0 ? text : text + " and " + std::to_string(others) + " more";
}

// keeper: the member whose objects have the identifiers; empty for the same member.
std::string droppedText(const std::vector<std::uint64_t>& identifiers, const std::string& keeper) {
  const bool one = identifiers.size() == 1;
  return (one ? "its object " : "its objects ") + list(identifiers) +
         (one ? " is dropped, since " : " are dropped, since ") + (keeper.empty() ? "it" : keeper) +
         (keeper.empty() ? " has another" : " has one") +
         (one ? " of that identifier" : " of each of those identifiers");
}

}  // namespace

void FiledObjects::add(const std::string& member, std::vector<std::uint64_t> identifiers) {
  if (!std::is_sorted(identifiers.begin(), identifiers.end()))
    std::sort(identifiers.begin(), identifiers.end());
  members_.push_back({member, std::move(identifiers)});
}

std::vector<SkippedMember> FiledObjects::dropped() const {
  std::vector<Filed> all;
  for (std::size_t i = 0; i < members_.size(); ++i) {
    for (const std::uint64_t identifier : members_[i].identifiers) all.push_back({identifier, i});
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Filed& a, const Filed& b) { return a.identifier < b.identifier; });
  std::map<std::pair<std::size_t, std::size_t>, std::vector<std::uint64_t>> rows;
  for (std::size_t first = 0, i = 1; i < all.size(); ++i) {
    if (all[i].identifier != all[first].identifier) {
      first = i;
    } else {
      rows[{all[i].member, all[first].member}].push_back(all[i].identifier);
    }
  }
  std::vector<SkippedMember> dropped;
  for (auto& [pair, identifiers] : rows) {
    identifiers.erase(std::unique(identifiers.begin(), identifiers.end()), identifiers.end());
    const auto& [loser, keeper] = pair;
    dropped.push_back({members_[loser].name,
                       droppedText(identifiers, loser == keeper ? "" : members_[keeper].name)});
  }
  return dropped;
}

}  // namespace dorvex
