// Values that messages carry outside of the storage of cells.
#pragma once

#include <string>

#include "TSCEArchives.h"
#include "tables/format.h"

namespace dorvex::content {

// What the application shows of a value, by the format that comes with it.
std::string shownValue(const Message<TSCE::CellValueArchive>& value, Formatting& formatting);

}  // namespace dorvex::content
