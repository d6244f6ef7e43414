// The objects that the reader files, and those that it drops since their identifier is
// taken.
//
// The reader keeps the first object under an identifier, in the order in which it reads
// the members. Whatever comes later under the same identifier is gone without a word.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "dorvex/result.h"

namespace dorvex {

class FiledObjects {
 public:
  // Objects of one member, by their identifiers, in the order of the members.
  void add(const std::string& member, std::vector<std::uint64_t> identifiers);

  // For each member of which objects were dropped, a row for each member that has those
  // which took their identifiers.
  std::vector<SkippedMember> dropped() const;

 private:
  struct Member {
    std::string name;
    std::vector<std::uint64_t> identifiers;  // ascending
  };
  std::vector<Member> members_;
};

}  // namespace dorvex
