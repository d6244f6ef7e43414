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

}  // namespace dorvex::cli
