#include "text_command.h"

#include <unistd.h>

#include <utility>

#include "document_run.h"
#include "print_documents.h"

namespace dorvex::cli {
namespace {

PrintDocument textPrinterOf(const TextOptions& options) {
  TextForm form;
  form.separator = options.nul ? std::string(1, '\0') : options.separator;
  form.tidy = options.tidy;
  form.withFilename = options.withFilename;
  form.forTerminal = isStandardOutput(options.output.target) && ::isatty(STDOUT_FILENO) == 1;
  return printTexts(form);
}

void setForm(DocumentRun& run, const TextOptions& options) {
  switch (options.format) {
    case Format::kText:
      run.print = textPrinterOf(options);
      run.ending = ".txt";
      run.headings = !options.withFilename;
      break;
    case Format::kJson:
      run.print = printRecord(options.tidy);
      run.ending = ".json";
      break;
    case Format::kTokens:
      run.print = options.raw ? printRawTokens() : printTokens();
      run.ending = ".tokens";
      break;
  }
}

}  // namespace

// One process has one reader.
int runText(const HostArguments& host, const TextOptions& options) {
  const Host reader(hostOptions(host, !mayBeSeveral(options.input)));
  DocumentRun run;
  run.input = options.input;
  run.output = options.output;
  run.jobs = host.inProcess ? 1 : options.jobs;
  run.showsNumbers = host.verbose;
  setForm(run, options);
  return printDocuments(reader, run);
}

}  // namespace dorvex::cli
