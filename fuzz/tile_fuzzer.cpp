// The cell texts of a tile, and the pieces that they are made from.
//
// Input: one word, the length of the tile's payload; that payload; the payload of
// the list of strings, which also stands for a string and for a cell record.
#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "TSTArchives.pb.h"
#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/tile_strings.h"
#include "fuzz_input.h"

namespace dorvex::fuzz {
namespace {

constexpr std::uint64_t kMostColumns = 255;

void checkTile(const TST::Tile& tile, const TST::TableDataList* list) {
  try {
    const auto rows = vn::iwork13::getTileStrings(&tile, list);
    require(rows.size() == static_cast<std::size_t>(tile.rowinfos_size()),
            "a tile has as many rows as it says");
    // A number of columns that does not fit into 32 bits is none.
    const auto columns = std::min<std::uint64_t>(tile.maxcolumn() + 1U, kMostColumns);
    for (const auto& row : rows) require(row.size() == columns, "rows are equally long");
  } catch (const std::out_of_range&) {
    // stated for a cell that lies outside its row's storage
  }
}

void checkPieces(const std::string& text) {
  require(vn::iwork13::unescapeListString(text).size() <= text.size(),
          "escapes are longer than what they stand for");
  std::string replaced = text;
  vn::iwork13::replaceAllLFsAndTabs(replaced);
  require(replaced.size() <= text.size(), "replacing does not lengthen a string");
  require(replaced.find("\\n") == std::string::npos || text.find("\\") != std::string::npos,
          "replacing makes no escapes");
  require(vn::iwork13::getNumericCellValue(text).size() <= 16, "a number has six digits");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  FuzzInput input(data, size);
  const std::size_t tileSize = input.word();
  const std::string_view tileBytes = input.take(tileSize);
  const std::string listBytes(input.rest());
  TST::Tile tile;
  TST::TableDataList list;
  // What was read before a failure counts too.
  static_cast<void>(
      tile.ParsePartialFromArray(tileBytes.data(), static_cast<int>(tileBytes.size())));
  static_cast<void>(list.ParsePartialFromString(listBytes));
  checkTile(tile, &list);
  checkTile(tile, nullptr);
  checkPieces(listBytes);
  return 0;
}
