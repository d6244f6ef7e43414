#include "inspect/options.h"

#include <CLI/CLI.hpp>
#include <limits>

#include "exit_status.h"
#include "option_checks.h"

namespace dorvex::cli {
namespace {

const std::vector<std::string> kApplications = {"auto", "pages", "keynote", "numbers"};

std::string objectFault(const std::string& value) {
  return numberFault(value, 0, std::numeric_limits<std::uint64_t>::max());
}

std::string applicationFault(const std::string& value) { return wordFault(value, kApplications); }

void addInspectorOptions(CLI::App& app, InspectorArguments& arguments) {
  addInspectOptions(app, arguments.inspect);
  app.add_option("--module", arguments.module, "The reader module's file")->required();
  app.add_option("--timeout", arguments.timeout, "Seconds that the document may take");
  app.add_option("--max-memory", arguments.maxMemory, "Bytes of memory that it may take");
  app.add_flag("--require-sandbox", arguments.requireSandbox,
               "Read nothing with less of a sandbox");
  app.add_flag("--no-sandbox", arguments.noSandbox, "Read without a sandbox");
}

}  // namespace

void addInspectOptions(CLI::App& command, InspectOptions& options) {
  command.add_option("document", options.path, "File, package directory, or - for standard input")
      ->required()
      ->type_name("FILE|DIRECTORY");
  command.add_flag("--json", options.json, "Print one JSON object");
  command.add_option("--object", options.object, "Print the messages of one object in text form")
      ->check(CLI::Validator(objectFault, ""))
      ->type_name("ID");
  command
      .add_option("--app", options.application,
                  "Name types as this application does; auto is what the package tells")
      ->check(CLI::Validator(applicationFault, ""))
      ->type_name("auto|pages|keynote|numbers")
      ->capture_default_str();
}

std::vector<std::string> argumentsOf(const InspectOptions& options) {
  std::vector<std::string> arguments = {"--app", options.application};
  if (options.json) arguments.emplace_back("--json");
  if (options.object) {
    arguments.insert(arguments.end(), {"--object", std::to_string(*options.object)});
  }
  arguments.insert(arguments.end(), {"--", options.path});
  return arguments;
}

std::optional<int> readArguments(int count, char** values, InspectorArguments& arguments) {
  CLI::App app("Shows what a package holds; `dorvex inspect` starts it.", "dorvex-inspect");
  addInspectorOptions(app, arguments);
  try {
    app.parse(count, values);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kBadUsage;
  }
}

}  // namespace dorvex::cli
