// The forms in which the tool gives a document.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "dorvex/host.h"
#include "path_list.h"
#include "record.h"
#include "side_files.h"

namespace dorvex::cli {

// Takes output as it comes.
using Write = std::function<void(std::string_view)>;

// Reads a document and prints it; what became of it is the result. Throws what
// write throws, and EnvironmentError.
using PrintDocument =
    std::function<Result(const Host& host, const ListedPath& document, const Write& write)>;

struct TextForm {
  std::string separator = "\n";  // behind each text
  bool tidy = false;
  bool withFilename = false;  // and a colon before each text, or each line of texts that end so
  bool forTerminal = false;   // which file names tell nothing
};
PrintDocument printTexts(TextForm form);
// One line for each token.
PrintDocument printTokens();
// The bytes of the token stream.
PrintDocument printRawTokens();
// The document's record, a line of JSON.
PrintDocument printRecord(bool tidy);

// The rendering that the host's options ask for, and the files beside it.
using SideFilesOf = std::function<SideFiles(const ListedPath& document)>;
PrintDocument printRendering(SideFilesOf sideFilesOf);

// Reads a document into its record, or what the host renders of it.
Record readRecord(const Host& host, const ListedPath& listed, bool tidy);

// What a host opens for a document that has no fault.
Input inputOf(const ListedPath& document);
// The result of one that has.
Result faultOf(const ListedPath& document);

// The document as people know it.
std::string nameForPeople(const ListedPath& document);

// What people are told about a document that was not read whole, with what they
// can do about it: a line, without its line feed. showsNumbers: with what the
// module returned.
std::string complaint(const ListedPath& document, const Result& result, bool showsNumbers);

}  // namespace dorvex::cli
