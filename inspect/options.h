// The options of `dorvex inspect`, which two programs know: the tool offers
// them and starts the inspector, and the inspector follows them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace dorvex::cli {

struct InspectOptions {
  std::string path;
  bool json = false;
  std::optional<std::uint64_t> object;
  std::string application = "auto";
};

// Adds them to a command; options must outlive it.
void addInspectOptions(CLI::App& command, InspectOptions& options);

// Writes them as arguments again.
std::vector<std::string> argumentsOf(const InspectOptions& options);

// What the tool tells the inspector: those options, and how it is to be held.
struct InspectorArguments {
  InspectOptions inspect;
  std::string module;
  double timeout = 0;           // seconds, or 0 for no limit
  std::uint64_t maxMemory = 0;  // bytes, or 0 for no limit
  bool requireSandbox = false;
  bool noSandbox = false;
};

// Reads the inspector's command line. A status to end with at once, or none: help was asked
// for, or the line was faulty, which has been said then.
std::optional<int> readArguments(int count, char** values, InspectorArguments& arguments);

}  // namespace dorvex::cli
