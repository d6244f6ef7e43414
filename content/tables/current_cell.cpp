#include <array>
#include <bit>

#include "tables/cell_fields.h"
#include "tables/cell_record.h"

namespace dorvex::content {
namespace {

constexpr unsigned char kVersion = 5;
constexpr std::size_t kTypeOffset = 1;
constexpr std::size_t kMaskOffset = 8;
constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kDecimalSize = 16;

// The first three bits of the mask announce values, the others keys.
constexpr unsigned kDecimalBit = 0;
constexpr unsigned kDoubleBit = 1;
constexpr unsigned kSecondsBit = 2;

// What the key of each bit is.
constexpr std::array kKeyOfBit{
    CellKey::kUnused,        CellKey::kUnused,         CellKey::kUnused,  // values
    CellKey::kString,        CellKey::kRichText,
    CellKey::kUnused,  // cell style
    CellKey::kUnused,  // text style
    CellKey::kUnused,  // conditional style
    CellKey::kUnused,  // conditional rule
    CellKey::kFormula,       CellKey::kControl,
    CellKey::kUnused,  // formula error
    CellKey::kFormatKind,    CellKey::kNumberFormat,   CellKey::kCurrencyFormat,
    CellKey::kDateFormat,    CellKey::kDurationFormat, CellKey::kTextFormat,
    CellKey::kBooleanFormat, CellKey::kComment,
    CellKey::kUnused,  // import warning
};

bool readField(unsigned bit, CellFields& fields, CellRecord& cell) {
  switch (bit) {
    case kDecimalBit:
      return fields.takeBytes(kDecimalSize, cell.decimal);
    case kDoubleBit:
      return fields.takeDouble(cell.number);
    case kSecondsBit:
      return fields.takeDouble(cell.seconds);
    default:
      return fields.takeKey(kKeyOfBit[bit], cell);
  }
}

}  // namespace

std::optional<CellRecord> readCurrentCell(std::string_view buffer) {
  if (buffer.size() < kHeaderSize || valueAt<unsigned char>(buffer, 0) != kVersion)
    return std::nullopt;
  const auto type = storedType(valueAt<unsigned char>(buffer, kTypeOffset), StoredType::kCurrency);
  if (!type) return std::nullopt;
  CellRecord cell;
  cell.type = *type;
  CellFields fields(buffer.substr(kHeaderSize));
  // Fields stand in the order of their bits, so those of unknown bits come last.
  auto mask = valueAt<std::uint32_t>(buffer, kMaskOffset) & ((1U << kKeyOfBit.size()) - 1);
  for (; mask != 0; mask &= mask - 1) {
    if (!readField(static_cast<unsigned>(std::countr_zero(mask)), fields, cell))
      return std::nullopt;
  }
  return cell;
}

}  // namespace dorvex::content
