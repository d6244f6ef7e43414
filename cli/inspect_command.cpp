#include "inspect_command.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "exit_status.h"
#include "inspect/options.h"
#include "module_location.h"

namespace dorvex::cli {
namespace {

[[noreturn]] void becomeInspector(const std::vector<std::string>& arguments) {
  const std::string inspector = inspectorProgram().string();
  if (inspector.empty()) throw EnvironmentError("cannot look for the inspector without /proc");
  std::vector<char*> values = {const_cast<char*>(inspector.c_str())};
  for (const std::string& argument : arguments)
    values.push_back(const_cast<char*>(argument.c_str()));
  values.push_back(nullptr);
  ::execv(inspector.c_str(), values.data());
  throw EnvironmentError("cannot start " + inspector + ": " + std::strerror(errno));
}

}  // namespace

int runInspect(const HostArguments& host, const InspectOptions& options) {
  const HostOptions hosting = hostOptions(host);
  std::vector<std::string> arguments = {"--module",     host.module,
                                        "--timeout",    std::to_string(host.timeout),
                                        "--max-memory", std::to_string(host.maxMemory)};
  if (hosting.sandbox == Sandbox::kOff) arguments.emplace_back("--no-sandbox");
  if (hosting.sandbox == Sandbox::kRequired) arguments.emplace_back("--require-sandbox");
  for (std::string& argument : argumentsOf(options)) arguments.push_back(std::move(argument));
  becomeInspector(arguments);
}

}  // namespace dorvex::cli
