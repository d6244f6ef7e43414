// dorvex: prints the texts or the tokens of documents.

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "documents.h"
#include "module_location.h"
#include "output.h"

namespace dorvex::cli {
namespace {

constexpr int kNotAllRead = 1;
constexpr int kBadUsage = 2;
constexpr double kLongestTimeout = 1e6;

constexpr const char kExamples[] =
    "Examples:\n"
    "  dorvex text Letter.pages             the texts, one to a line\n"
    "  dorvex text -0 *.key | xargs -0 -n1  the texts, whatever they hold\n"
    "  dorvex text - < Budget.numbers       from standard input\n"
    "  dorvex tokens Letter.pages           the reader's token stream, readably\n"
    "  dorvex tokens --raw Letter.pages     the same as bytes\n"
    "\n"
    "Exit status: 0 every document was read whole, 1 some were not, 2 bad usage.";

struct Arguments {
  std::vector<std::string> textPaths;
  std::string tokenPath;
  bool nul = false;
  bool raw = false;
  bool inProcess = false;
  double timeout = std::chrono::duration<double>(Limits{}.wallTime).count();
  std::string module = defaultModule().string();
};

HostOptions hostOptions(const Arguments& arguments) {
  HostOptions options;
  options.module = arguments.module;
  options.isolation = arguments.inProcess ? Isolation::kInProcess : Isolation::kChildProcess;
  options.limits.wallTime = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(arguments.timeout));
  return options;
}

void addTextCommand(CLI::App& app, Arguments& arguments) {
  auto* command = app.add_subcommand("text", "Print the texts of documents as UTF-8");
  command
      ->add_option("documents", arguments.textPaths,
                   "Files, package directories, or - for standard input")
      ->required()
      ->type_name("FILE|DIRECTORY");
  command->add_flag("-0,--null", arguments.nul, "End each text with NUL instead of a line feed");
}

void addTokensCommand(CLI::App& app, Arguments& arguments) {
  auto* command = app.add_subcommand("tokens", "Print the token stream of one document");
  command
      ->add_option("document", arguments.tokenPath,
                   "File, package directory, or - for standard input")
      ->required()
      ->type_name("FILE|DIRECTORY");
  command->add_flag("--raw", arguments.raw, "Print the stream's bytes as they are");
}

void addCommonOptions(CLI::App& app, Arguments& arguments) {
  app.add_option("--module", arguments.module, "The reader module's file")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout,
                 "Seconds that one document may take, 0 for no limit")
      ->check(CLI::Range(0.0, kLongestTimeout).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  app.add_flag("--in-process", arguments.inProcess,
               "Read in the tool's own process: faster, but a crash ends everything and there is "
               "no time limit");
  app.set_version_flag("--version", "dorvex " DORVEX_VERSION);
}

int run(const CLI::App& app, const Arguments& arguments) {
  const Host host(hostOptions(arguments));
  if (app.got_subcommand("tokens")) {
    return printDocuments(host, {arguments.tokenPath},
                          arguments.raw ? printRawTokens : printTokens);
  }
  return printDocuments(host, arguments.textPaths,
                        arguments.nul ? printTextsByNul : printTextsByLine);
}

// A reader that has gone away (head, less) wants no message.
int report(const OutputError& error) {
  if (error.error != EPIPE) {
    std::cerr << "dorvex: cannot write to standard output: " << std::strerror(error.error) << '\n';
  }
  return kNotAllRead;
}

int runTool(int count, char** values) {
  std::signal(SIGPIPE, SIG_IGN);
  Arguments arguments;
  CLI::App app("Reads the text of Pages, Keynote and Numbers documents.", "dorvex");
  app.footer(kExamples);
  app.require_subcommand(1);
  app.fallthrough();
  addCommonOptions(app, arguments);
  addTextCommand(app, arguments);
  addTokensCommand(app, arguments);
  try {
    app.parse(count, values);
    return run(app, arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  } catch (const OutputError& error) {
    return report(error);
  } catch (const std::exception& error) {
    std::cerr << "dorvex: " << error.what() << '\n';
    return kNotAllRead;
  }
}

}  // namespace
}  // namespace dorvex::cli

// NOLINTNEXTLINE(bugprone-exception-escape): an error that cannot even be printed ends the tool
int main(int count, char** values) { return dorvex::cli::runTool(count, values); }
