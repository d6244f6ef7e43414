// Rows of table cells, as tiles store them, from descriptions that people can read.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace dorvex::samples {

// The buffer of a row's cells, and where in it each column's cell begins.
struct RowBuffers {
  std::string cells;
  std::string offsets;
  unsigned count = 0;  // of cells
  bool older = false;  // of versions before 5, which have buffers of their own
};

// A row is a list with a cell or null for each column. A cell has a type ("text",
// "number", ...), a version where that is not 5, and fields by name, as cell_buffer.cpp
// lists them. Either all cells of a row are older ones, or none is.
RowBuffers makeRow(const nlohmann::json& row);

}  // namespace dorvex::samples
