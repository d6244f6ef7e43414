// Printing documents, many at a time: in their order into one output, or each
// into a file of its own. What text, tokens and other commands of the kind share.
#pragma once

#include <string>

#include "dorvex/host.h"
#include "output_options.h"
#include "path_list.h"
#include "print_documents.h"

namespace dorvex::cli {

struct DocumentRun {
  InputOptions input;
  OutputOptions output;
  unsigned jobs = 1;
  PrintDocument print;
  std::string ending;         // of the files of -o DIRECTORY, such as ".txt"
  bool headings = false;      // between documents, where they go to a terminal
  bool showsNumbers = false;  // what the module returned
};

// Prints them, with a line on standard error for each that was not read whole.
// Gives the exit status. Throws OutputError, EnvironmentError and UsageError.
int printDocuments(const Host& host, const DocumentRun& run);

}  // namespace dorvex::cli
