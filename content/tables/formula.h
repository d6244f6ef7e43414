// Formulas as English text, as the application writes them, without the equals sign.
#pragma once

#include <string>

#include "TSCEArchives.h"
#include "graph/reading.h"
#include "tables/references.h"

namespace dorvex::content {

struct FormulaText {
  std::string text;     // empty where it cannot be told
  std::string problem;  // why; empty where it can
};

// The formula of a cell; the host says from where its references count.
FormulaText formulaText(Reading& reading, const Message<TSCE::FormulaArchive>& formula,
                        const Host& host);

}  // namespace dorvex::content
