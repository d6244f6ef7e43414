#include "Tools/formats/vniwork13/tile_strings.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "TSTArchives.pb.h"
#include "Tools/formats/vniwork13/iwa_utils.h"

namespace vn::iwork13 {
namespace {

// A tile row has at most this many columns, and as many offset words.
constexpr std::size_t kMaxColumns = 255;
constexpr std::int16_t kNoCell = -1;

using CellOffsets = std::array<std::int16_t, kMaxColumns>;
using StringMap = std::map<std::int32_t, std::string>;

// Positions in a cell record.
constexpr std::size_t kTypeOffset = 2;
constexpr std::size_t kFlagsOffset = 4;

enum CellType : unsigned char { kTextOrNumber = 0, kNumber = 2, kText = 3 };

// Where a value stands in a cell record, by the whole flags word.
struct ValuePosition {
  std::uint32_t flags;
  std::size_t offset;
};

constexpr ValuePosition kKeyPositions[] = {
    {0x14, 16}, {0x16, 20}, {0x94, 20}, {0x96, 24}, {0x282, 20},
};
constexpr ValuePosition kNumberPositions[] = {
    {0x24, 16}, {0x26, 20}, {0x2C, 20}, {0xA4, 20}, {0xA6, 24},
};

// Little-endian; bytes behind the end of the cell read as 0.
template <typename Value>
Value readLittleEndian(std::string_view cell, std::size_t offset) {
  Value value = 0;
  for (std::size_t i = 0; i < sizeof(Value) && offset + i < cell.size(); ++i)
    value |= static_cast<Value>(static_cast<unsigned char>(cell[offset + i])) << (8 * i);
  return value;
}

// The position that the cell's flags give, or null where they give none or the
// cell is too short for a value of that width.
template <std::size_t N>
const ValuePosition* findPosition(const ValuePosition (&positions)[N], std::string_view cell,
                                  std::size_t width) {
  const auto flags = readLittleEndian<std::uint32_t>(cell, kFlagsOffset);
  const auto* position = std::ranges::find(positions, flags, &ValuePosition::flags);
  if (position == std::end(positions) || cell.size() < position->offset + width) return nullptr;
  return position;
}

// The string of the cell's key. A cell without a key has key 0, which finds any
// string that stands there.
std::string stringOfCell(std::string_view cell, const StringMap& strings) {
  const auto* position = findPosition(kKeyPositions, cell, sizeof(std::uint32_t));
  const auto key =
      position != nullptr ? readLittleEndian<std::uint32_t>(cell, position->offset) : 0;
  const auto entry = strings.find(static_cast<std::int32_t>(key));
  return entry != strings.end() ? entry->second : std::string();
}

std::string textOfCell(const std::string& cell, const StringMap& strings) {
  switch (cell.size() > kTypeOffset ? static_cast<unsigned char>(cell[kTypeOffset]) : 0) {
    case kTextOrNumber: {
      std::string text = stringOfCell(cell, strings);
      return text.empty() ? getNumericCellValue(cell) : text;
    }
    case kNumber:
      return getNumericCellValue(cell);
    case kText:
      return stringOfCell(cell, strings);
    default:
      return {};
  }
}

// The first entry of a key stays; one without a string takes its key up too.
StringMap readStrings(const TST::TableDataList& list) {
  StringMap strings;
  for (const auto& entry : list.entries()) {
    std::string text;
    if (entry.has_string()) {
      text = unescapeListString(entry.string());
      replaceAllLFsAndTabs(text);
    }
    strings.emplace(static_cast<std::int32_t>(entry.key()), std::move(text));
  }
  return strings;
}

// The count of words is the byte length, capped at 255, and not half of it:
// the table is meant to be full, and missing bytes read as 0xFF.
CellOffsets readOffsets(const std::string& bytes) {
  const auto byteAt = [&bytes](std::size_t i) -> unsigned {
    return i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0xFFU;
  };
  CellOffsets offsets;
  offsets.fill(kNoCell);
  for (std::size_t i = 0; i < std::min(bytes.size(), kMaxColumns); ++i)
    offsets[i] = static_cast<std::int16_t>(byteAt(2 * i) | byteAt(2 * i + 1) << 8);
  return offsets;
}

// The bytes of one cell: up to the next cell of a higher column. Where that one
// has the lower offset the length becomes huge, and the cell runs to the end of
// the storage.
std::string cutCell(const std::string& storage, const CellOffsets& offsets, std::size_t column) {
  const auto offset = static_cast<std::size_t>(offsets[column]);
  if (offset > storage.size()) throw std::out_of_range("basic_string::substr");
  const auto* next = std::find_if(offsets.begin() + column + 1, offsets.end(),
                                  [](std::int16_t word) { return word != kNoCell; });
  const std::size_t length =
      next != offsets.end() ? static_cast<std::size_t>(*next) - offset : std::string::npos;
  return storage.substr(offset, length);
}

std::list<std::string> readRow(const TST::TileRowInfo& row, std::uint32_t maxColumn,
                               const StringMap& strings) {
  std::list<std::string> texts;
  const CellOffsets offsets = readOffsets(row.cell_offsets_pre_bnc());
  // Wraps to 0 for a maxColumn of 0xFFFFFFFF: such a row has no columns.
  const std::size_t columns = std::min<std::size_t>(maxColumn + 1U, kMaxColumns);
  for (std::size_t column = 0; column < columns; ++column) {
    std::string text;
    if (offsets[column] != kNoCell)
      text = textOfCell(cutCell(row.cell_storage_buffer_pre_bnc(), offsets, column), strings);
    texts.push_back(std::move(text));
  }
  return texts;
}

constexpr bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

std::string unescapeListString(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  std::size_t i = 0;
  while (i < text.size()) {
    const std::string_view rest = text.substr(i);
    if (rest.starts_with("\\\\")) {
      result += '\\';
      i += 2;
      continue;
    }
    // Decimal digits by the test, octal by the parse, which stops at an 8 or 9:
    // backslash, 189 is the byte 1, and all four characters are gone.
    if (rest[0] == '\\' && rest.size() >= 4 &&
        std::all_of(rest.begin() + 1, rest.begin() + 4, isDecimalDigit)) {
      const unsigned long byte = std::strtoul(std::string(rest.substr(1, 3)).c_str(), nullptr, 8);
      if (byte <= 0xFF) {
        result += static_cast<char>(byte);
        i += 4;
        continue;
      }
    }
    result += rest[0];
    ++i;
  }
  return result;
}

void replaceAllLFsAndTabs(std::string& value) {
  std::size_t write = 0;
  for (std::size_t read = 0; read < value.size(); ++write) {
    const std::string_view rest = std::string_view(value).substr(read);
    if (rest.starts_with("\\n")) {
      value[write] = '\n';
      read += 2;
    } else if (rest.starts_with("\\t")) {
      value[write] = 't';
      read += 3;
    } else {
      value[write] = rest[0];
      ++read;
    }
  }
  value.resize(write);
}

std::string getNumericCellValue(const std::string& cell) {
  const auto* position = findPosition(kNumberPositions, cell, sizeof(double));
  if (position == nullptr) return {};
  std::ostringstream text;
  text << std::bit_cast<double>(readLittleEndian<std::uint64_t>(cell, position->offset));
  return text.str();
}

std::list<std::list<std::string>> getTileStrings(const TST::Tile* tile,
                                                 const TST::TableDataList* list) {
  const StringMap strings = list != nullptr ? readStrings(*list) : StringMap();
  std::list<std::list<std::string>> rows;
  for (const TST::TileRowInfo& row : tile->rowinfos())
    rows.push_back(readRow(row, tile->maxcolumn(), strings));
  return rows;
}

}  // namespace vn::iwork13
