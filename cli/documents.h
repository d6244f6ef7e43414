// What the tool does with documents.
#pragma once

#include <string>
#include <vector>

#include "dorvex/host.h"
#include "output.h"

namespace dorvex::cli {

// Prints one document; what became of it is the result.
using PrintDocument = Result (*)(Document& document, Output& output);

Result printTextsByLine(Document& document, Output& output);  // each ended by a line feed
Result printTextsByNul(Document& document, Output& output);   // each ended by NUL
Result printTokens(Document& document, Output& output);       // one line each
Result printRawTokens(Document& document, Output& output);    // the bytes

// Prints each document; "-" stands for standard input. One that was not read
// whole gets its line on standard error, and the others are printed all the
// same. The exit status of the tool: 0, or 1 when one was not read whole.
// Throws OutputError.
int printDocuments(const Host& host, const std::vector<std::string>& paths, PrintDocument print);

}  // namespace dorvex::cli
