// write_documents FOLDER: the documents on which the programs outside the
// project are run. documents.h of the consumer knows what is in them.

#include <bit>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "support/package_writer.h"
#include "support/wire_writer.h"

namespace dorvex::testing {
namespace {

constexpr int kTileType = 6002;  // TST.Tile

// A cell record: type and flags, filled up to the value's position, then the value.
std::string cell(char type, std::uint32_t flags, std::size_t position, const std::string& value) {
  std::string record = std::string(2, '\0') + type + '\0' + encodeLittleEndian(flags, 4);
  record.resize(position);
  return record + value;
}

// One row of two cells: the text of key 5, and the number 2.5.
Archive tile(std::uint64_t identifier) {
  const std::string text = cell(3, 0x14, 16, encodeLittleEndian(5, 4));
  const std::string number =
      cell(2, 0x24, 16, encodeLittleEndian(std::bit_cast<std::uint64_t>(2.5), 8));
  std::string offsets = encodeLittleEndian(0, 2) + encodeLittleEndian(text.size(), 2);
  offsets.resize(510, '\xFF');
  const Wire row = Wire().varint(1, 0).varint(2, 2).bytes(3, text + number).bytes(4, offsets);
  return object(identifier, kTileType,
                Wire().varint(1, 1).varint(2, 0).varint(3, 2).varint(4, 1).message(5, row));
}

Archive texts(std::uint64_t identifier) {
  const Wire entry = Wire().varint(1, 5).varint(2, 1).bytes(3, "a cell");
  return object(identifier, kTableDataListType, Wire().varint(1, 1).varint(2, 6).message(3, entry));
}

void writeDocuments(const std::filesystem::path& folder) {
  const std::string member = iwa({storage(10, {"Hello", "world"}), tile(20), texts(21)});
  std::filesystem::create_directories(folder);
  writeFile(folder / "Document.iwa", member);
  writeFile(folder / "document.pages", zip({{"Index/Document.iwa", member}}));
}

}  // namespace
}  // namespace dorvex::testing

int main(int count, char** arguments) {
  if (count != 2) {
    std::cerr << "usage: " << arguments[0] << " FOLDER\n";
    return 2;
  }
  dorvex::testing::writeDocuments(arguments[1]);
  return EXIT_SUCCESS;
}
