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
  std::vector<std::string> text_paths;
  std::string token_path;
  bool nul = false;
  bool raw = false;
  bool in_process = false;
  double timeout = std::chrono::duration<double>(Limits{}.wall_time).count();
  std::string module = default_module().string();
};

HostOptions host_options(const Arguments& arguments) {
  HostOptions options;
  options.module = arguments.module;
  options.isolation = arguments.in_process ? Isolation::in_process : Isolation::child_process;
  options.limits.wall_time = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(arguments.timeout));
  return options;
}

void add_text_command(CLI::App& app, Arguments& arguments) {
  auto* command = app.add_subcommand("text", "Print the texts of documents as UTF-8");
  command
      ->add_option("documents", arguments.text_paths,
                   "Files, package directories, or - for standard input")
      ->required()
      ->type_name("FILE|DIRECTORY");
  command->add_flag("-0,--null", arguments.nul, "End each text with NUL instead of a line feed");
}

void add_tokens_command(CLI::App& app, Arguments& arguments) {
  auto* command = app.add_subcommand("tokens", "Print the token stream of one document");
  command
      ->add_option("document", arguments.token_path,
                   "File, package directory, or - for standard input")
      ->required()
      ->type_name("FILE|DIRECTORY");
  command->add_flag("--raw", arguments.raw, "Print the stream's bytes as they are");
}

void add_common_options(CLI::App& app, Arguments& arguments) {
  app.add_option("--module", arguments.module, "The reader module's file")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout,
                 "Seconds that one document may take, 0 for no limit")
      ->type_name("SECONDS")
      ->check(CLI::Range(0.0, 1e6))
      ->capture_default_str();
  app.add_flag("--in-process", arguments.in_process,
               "Read in the tool's own process: faster, but a crash ends everything and there is "
               "no time limit");
  app.set_version_flag("--version", "dorvex " DORVEX_VERSION);
}

int run(const CLI::App& app, const Arguments& arguments) {
  const Host host(host_options(arguments));
  if (app.got_subcommand("tokens")) {
    return print_documents(host, {arguments.token_path},
                           arguments.raw ? print_raw_tokens : print_tokens);
  }
  return print_documents(host, arguments.text_paths,
                         arguments.nul ? print_texts_by_nul : print_texts_by_line);
}

// A reader that has gone away (head, less) wants no message.
int report(const OutputError& error) {
  if (error.error != EPIPE) {
    std::cerr << "dorvex: cannot write to standard output: " << std::strerror(error.error) << '\n';
  }
  return kNotAllRead;
}

int run_tool(int count, char** values) {
  std::signal(SIGPIPE, SIG_IGN);
  Arguments arguments;
  CLI::App app("Reads the text of Pages, Keynote and Numbers documents.", "dorvex");
  app.footer(kExamples);
  app.require_subcommand(1);
  app.fallthrough();
  add_common_options(app, arguments);
  add_text_command(app, arguments);
  add_tokens_command(app, arguments);
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

int main(int count, char** values) { return dorvex::cli::run_tool(count, values); }
