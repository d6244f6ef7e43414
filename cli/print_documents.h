// The forms in which the tool gives a document.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "dorvex/host.h"
#include "record.h"

namespace dorvex::cli {

// Takes output as it comes.
using Write = std::function<void(std::string_view)>;

// Reads a document, "-" for standard input, and prints it; what became of it is
// the result. Throws what write throws, and EnvironmentError.
using PrintDocument =
    std::function<Result(const Host& host, const std::string& path, const Write& write)>;

// Each text with the separator behind it, tidied on request.
PrintDocument printTexts(std::string separator, bool tidy);
// One line for each token.
PrintDocument printTokens();
// The bytes of the token stream.
PrintDocument printRawTokens();
// The document's record, a line of JSON.
PrintDocument printRecord(bool tidy);

// Reads a document into its record.
Record readRecord(const Host& host, const std::string& path, bool tidy);

// What people are told about a document that was not read whole: a line, without
// its line feed.
std::string complaint(const std::string& path, const Result& result);

}  // namespace dorvex::cli
