// The tables beside a text: from which position on which value holds.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "TSWPArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

// Positions in a text, in UTF-16 units.
using Position = std::uint32_t;
constexpr Position kBehindAll = std::numeric_limits<Position>::max();

// A table, gone through from the start of the text to its end.
template <typename V>
class AttributeRuns {
 public:
  struct Entry {
    Position from = 0;
    V value{};
  };

  AttributeRuns() = default;
  explicit AttributeRuns(std::vector<Entry> entries) : entries_(std::move(entries)) {
    if (!std::ranges::is_sorted(entries_, std::less(), &Entry::from))
      std::ranges::stable_sort(entries_, std::less(), &Entry::from);
  }

  // Goes on to a position, and not back.
  void moveTo(Position position) {
    while (next_ < entries_.size() && entries_[next_].from <= position) ++next_;
  }
  // The value there; the one of a default before the first entry.
  V value() const { return next_ == 0 ? V{} : entries_[next_ - 1].value; }
  // The value of the entry that stands at exactly that position, where moveTo led.
  V valueOnlyAt(Position position) const {
    return next_ == 0 || entries_[next_ - 1].from != position ? V{} : entries_[next_ - 1].value;
  }
  // Where the value changes next.
  Position nextChange() const {
    return next_ == entries_.size() ? kBehindAll : entries_[next_].from;
  }

 private:
  std::vector<Entry> entries_;
  std::size_t next_ = 0;
};

using ObjectRuns = AttributeRuns<const Object*>;
using NumberRuns = AttributeRuns<std::uint32_t>;

// What an entry without an object means.
enum class WithoutObject { kEnds, kGoesOn };

ObjectRuns objectRuns(Reading& reading, const Message<TSWP::ObjectAttributeTable>& table,
                      WithoutObject meaning = WithoutObject::kEnds);

// The first of the two numbers of each entry.
NumberRuns numberRuns(const Message<TSWP::ParaDataAttributeTable>& table);

}  // namespace dorvex::content
