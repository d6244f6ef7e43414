// Where the rows of a table lie in its tiles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "TSTArchives.h"
#include "graph/reading.h"

namespace dorvex::content {

// A cell of a row. Its bytes are those up to the next cell; none where they cannot be
// told.
struct StoredCell {
  std::uint32_t column = 0;
  std::string_view bytes;
};

// The cells of a row, as they are stored.
class StoredRow {
 public:
  StoredRow() = default;  // one without cells
  explicit StoredRow(const Message<TST::TileRowInfo>& info);

  bool isOlder() const { return older_; }
  // The next cell by column; nothing behind the last one.
  std::optional<StoredCell> next();

 private:
  std::optional<std::size_t> offsetAt(std::size_t column) const;
  std::size_t nextPresent(std::size_t column) const;

  std::string_view cells_;
  std::string_view offsets_;  // a word for each column
  std::size_t unit_ = 1;      // of an offset, in bytes
  std::size_t column_ = 0;    // the next one
  bool older_ = false;
};

class RowIndex {
 public:
  RowIndex(Reading& reading, const Message<TST::DataStore>& store);

  // The cells of a row; none where the table stores none.
  StoredRow find(std::uint32_t row) const;
  // The numbers of the rows with a storage, ascending.
  std::vector<std::uint32_t> rows() const;

 private:
  struct Entry {
    std::uint32_t row;
    Message<TST::TileRowInfo> info;
  };

  void addTile(std::uint64_t firstRow, const Message<TST::Tile>& tile);

  std::vector<Entry> rows_;  // ascending
};

}  // namespace dorvex::content
