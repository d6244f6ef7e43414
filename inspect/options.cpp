#include "inspect/options.h"

#include <CLI/CLI.hpp>
#include <limits>

#include "option_checks.h"

namespace dorvex::cli {
namespace {

const std::vector<std::string> kApplications = {"auto", "pages", "keynote", "numbers"};

std::string objectFault(const std::string& value) {
  return numberFault(value, 0, std::numeric_limits<std::uint64_t>::max());
}

std::string applicationFault(const std::string& value) { return wordFault(value, kApplications); }

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

}  // namespace dorvex::cli
