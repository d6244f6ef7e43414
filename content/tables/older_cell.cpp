#include <array>

#include "tables/cell_fields.h"
#include "tables/cell_record.h"

namespace dorvex::content {
namespace {

constexpr std::size_t kOlderMaskOffset = 4;
constexpr unsigned kLongHeaderVersion = 2;  // the first whose header has a second mask
constexpr unsigned kLastVersion = 4;
constexpr std::size_t kShortHeaderSize = 8;
constexpr std::size_t kLongHeaderSize = 12;

enum class Width { kKey, kNumber, kSeconds };

struct FieldRule {
  std::uint32_t bit;
  unsigned firstVersion;
  Width width;
  CellKey key;
};

// The fields of the mask, in their order, which is not that of their bits.
constexpr std::array kFields{
    FieldRule{0x2, 0, Width::kKey, CellKey::kUnused},    // cell style
    FieldRule{0x80, 0, Width::kKey, CellKey::kUnused},   // text style
    FieldRule{0x400, 2, Width::kKey, CellKey::kUnused},  // conditional style
    FieldRule{0x800, 2, Width::kKey, CellKey::kUnused},  // conditional rule
    FieldRule{0x4, 0, Width::kKey, CellKey::kCurrentFormat},
    FieldRule{0x8, 0, Width::kKey, CellKey::kFormula},
    FieldRule{0x100, 0, Width::kKey, CellKey::kUnused},  // formula error
    FieldRule{0x200, 0, Width::kKey, CellKey::kRichText},
    FieldRule{0x1000, 0, Width::kKey, CellKey::kComment},
    FieldRule{0x2000, 2, Width::kKey, CellKey::kUnused},  // import warning
    FieldRule{0x10, 0, Width::kKey, CellKey::kString},
    FieldRule{0x20, 0, Width::kNumber, CellKey::kUnused},
    FieldRule{0x40, 0, Width::kSeconds, CellKey::kUnused},
};
// What else the masks of real documents hold announces no field: behind these come the
// keys of formats that the cell had before, which nothing shows.

bool readField(const FieldRule& rule, CellFields& fields, CellRecord& cell) {
  switch (rule.width) {
    case Width::kKey:
      return fields.takeKey(rule.key, cell);
    case Width::kNumber:
      return fields.takeDouble(cell.number);
    case Width::kSeconds:
      return fields.takeDouble(cell.seconds);
  }
  return false;
}

}  // namespace

std::optional<CellRecord> readOlderCell(std::string_view buffer) {
  if (buffer.size() < kShortHeaderSize) return std::nullopt;
  const unsigned version = valueAt<unsigned char>(buffer, 0);
  const std::size_t header = version < kLongHeaderVersion ? kShortHeaderSize : kLongHeaderSize;
  if (version > kLastVersion || buffer.size() < header) return std::nullopt;
  const std::size_t typeOffset = version < kLastVersion ? 2 : 1;
  const auto type = storedType(valueAt<unsigned char>(buffer, typeOffset), StoredType::kRich);
  if (!type) return std::nullopt;

  CellRecord cell;
  cell.type = *type;
  cell.older = true;
  CellFields fields(buffer.substr(header));
  const std::uint32_t mask = valueAt<std::uint16_t>(buffer, kOlderMaskOffset);
  for (const FieldRule& rule : kFields) {
    if ((mask & rule.bit) == 0 || version < rule.firstVersion) continue;
    if (!readField(rule, fields, cell)) return std::nullopt;
  }
  return cell;
}

}  // namespace dorvex::content
