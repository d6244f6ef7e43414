// Cells as they are stored: buffers of optional fields, of which a cell's mask tells
// which are there. docs/tables.md describes both generations.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace dorvex::content {

// What a cell holds, as its type byte says.
enum class StoredType : std::uint8_t {
  kEmpty = 0,
  kNumber = 2,
  kText = 3,
  kDate = 5,
  kBool = 6,
  kDuration = 7,
  kError = 8,
  kRich = 9,
  kCurrency = 10,
};

// Keys of a cell into the lists of its table.
enum class CellKey : std::uint8_t {
  kString,
  kRichText,
  kFormula,
  kControl,
  kComment,
  kFormatKind,  // no key, but which of the formats is shown
  // The formats, in the order of the format kinds.
  kNumberFormat,
  kCurrencyFormat,
  kDateFormat,
  kDurationFormat,
  kTextFormat,
  kBooleanFormat,
  kCurrentFormat,  // of older cells: the one that is shown
  kUnused,         // styles, and what else concerns no content
  kCount,
};

struct CellRecord {
  StoredType type = StoredType::kEmpty;
  bool older = false;
  std::string_view decimal;  // the 16 bytes of a decimal; empty for none
  std::optional<double> number;
  std::optional<double> seconds;

  void set(CellKey key, std::uint32_t value) {
    keys_[static_cast<std::size_t>(key)] = value;
    present_ |= 1U << static_cast<unsigned>(key);
  }
  std::optional<std::uint32_t> find(CellKey key) const {
    if ((present_ >> static_cast<unsigned>(key) & 1) == 0) return std::nullopt;
    return keys_[static_cast<std::size_t>(key)];
  }

 private:
  std::array<std::uint32_t, static_cast<std::size_t>(CellKey::kCount)> keys_;
  std::uint32_t present_ = 0;

 public:
  // The keys are left as they are: nothing reads those that are not present.
  CellRecord() {}  // NOLINT(modernize-use-equals-default,cppcoreguidelines-pro-type-member-init)
};

// Reads the cell that buffer begins with; nothing where it is none. The buffer may go
// on behind it.
std::optional<CellRecord> readCurrentCell(std::string_view buffer);  // version 5
std::optional<CellRecord> readOlderCell(std::string_view buffer);    // versions 0 to 4

}  // namespace dorvex::content
