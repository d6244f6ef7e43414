// dorvex: reads the text of documents. Each command is a file of its own.

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>

#include "batch_command.h"
#include "exit_status.h"
#include "host_options.h"
#include "inspect_command.h"
#include "output.h"
#include "text_command.h"

namespace dorvex::cli {
namespace {

constexpr const char kExamples[] =
    "Examples:\n"
    "  dorvex text Letter.pages             the texts, one to a line\n"
    "  dorvex text -0 *.key | xargs -0 -n1  the texts, whatever they hold\n"
    "  dorvex text - < Budget.numbers       from standard input\n"
    "  dorvex text -o texts/ *.pages        a file for each document\n"
    "  dorvex batch ~/Documents -o out.jsonl\n"
    "                                       a folder, a record for each document\n"
    "  dorvex inspect Letter.pages          what a package holds\n"
    "  dorvex tokens Letter.pages           the reader's token stream, readably\n"
    "\n"
    "Exit status: 0 every document was read whole, 1 some were not, 2 bad usage, 3 nothing can be\n"
    "read or written at all.";

// A reader that has gone away (head, less) wants no message.
int report(const OutputError& error) {
  if (error.error != EPIPE) {
    std::cerr << "dorvex: cannot write the output: " << std::strerror(error.error) << '\n';
  }
  return kEnvironment;
}

// A descriptor that is closed from the start would be given to the next file
// that is opened, and read or written in its place. With O_PATH it stays a bad
// descriptor to whoever uses it.
void holdStandardDescriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_PATH);
  }
}

int runTool(int count, char** values) {
  holdStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);
  HostArguments host;
  int status = kAllRead;
  CLI::App app("Reads the text of Pages, Keynote and Numbers documents.", "dorvex");
  app.footer(kExamples);
  app.require_subcommand(1);
  app.fallthrough();
  addHostOptions(app, host);
  app.set_version_flag("--version", [&host] { return versionText(host); });
  addTextCommand(app, host, status);
  addTokensCommand(app, host, status);
  addBatchCommand(app, host, status);
  addInspectCommand(app, host);
  try {
    app.parse(count, values);
    return status;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kAllRead : kBadUsage;
  } catch (const OutputError& error) {
    return report(error);
  } catch (const std::exception& error) {
    std::cerr << "dorvex: " << error.what() << '\n';
    return kEnvironment;
  }
}

}  // namespace
}  // namespace dorvex::cli

// NOLINTNEXTLINE(bugprone-exception-escape): an error that cannot even be printed ends the tool
int main(int count, char** values) { return dorvex::cli::runTool(count, values); }
