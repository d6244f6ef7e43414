// Styles of lists: for each level the mark that stands before a paragraph.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dorvex/content.h"
#include "graph/reading.h"
#include "styles/numerals.h"

namespace dorvex::content {

struct ListLevel {
  bool marked = false;  // otherwise its paragraphs are of no list
  ListKind kind = ListKind::kBullet;
  std::string bullet;
  Numerals numerals = Numerals::kDecimal;
  std::string before, behind;  // of a number: "(" and ")"
  bool tiered = false;         // with the numbers of the levels above
};

using ListStyle = std::vector<ListLevel>;

// The style of that object; one without levels where that is null.
ListStyle readListStyle(Reading& reading, const Object* object);

// The mark of an item, whose numbers are those of all levels down to its own.
ListMark listMark(const ListStyle& style, const std::vector<std::uint32_t>& numbers);

}  // namespace dorvex::content
