#include "host_options.h"

#include <filesystem>
#include <iostream>

#include "exit_status.h"
#include "printable.h"
#include "record.h"

namespace dorvex::cli {
namespace {

Sandbox sandboxOf(const HostArguments& arguments) {
  if (arguments.requireSandbox) return Sandbox::kRequired;
  return arguments.noSandbox ? Sandbox::kOff : Sandbox::kWherePossible;
}

std::string joined(const std::vector<std::string>& phrases) {
  std::string text = phrases.front();
  for (std::size_t i = 1; i < phrases.size(); ++i) text += "; " + phrases[i];
  return text;
}

void trySandbox(Sandbox sandbox) {
  const auto missing = missingConfinement();
  if (missing.empty()) return;
  if (sandbox == Sandbox::kRequired) throw EnvironmentError("no sandbox: " + joined(missing));
  std::cerr << sandboxWarning(missing) << std::endl;
}

bool triesSandbox(const HostOptions& options) {
  if (options.isolation == Isolation::kInProcess || options.sandbox == Sandbox::kOff) return false;
  return options.sandbox == Sandbox::kRequired || !options.oneDocument;
}

std::string located(const char* what, const std::filesystem::path& file) {
  if (file.empty()) return std::string(what) + " (not looked for without /proc)\n";
  std::error_code ignored;
  const bool there = std::filesystem::exists(file, ignored);
  return std::string(what) + " " + file.string() + (there ? "\n" : " (missing)\n");
}

}  // namespace

HostOptions hostOptions(const HostArguments& arguments, bool oneDocument) {
  if (arguments.module.empty()) {
    throw EnvironmentError("cannot look for the reader module without /proc: use --module");
  }
  HostOptions options;
  options.module = arguments.module;
  options.isolation = arguments.inProcess ? Isolation::kInProcess : Isolation::kWorkers;
  options.sandbox = sandboxOf(arguments);
  options.limits.wallTime = std::chrono::ceil<std::chrono::milliseconds>(
      std::chrono::duration<double>(arguments.timeout));
  options.limits.memory = arguments.maxMemory;
  options.limits.output = arguments.maxOutput;
  options.limits.input = arguments.maxInput;
  options.documentsPerWorker = arguments.recycle;
  options.oneDocument = oneDocument;
  if (triesSandbox(options)) trySandbox(options.sandbox);
  return options;
}

std::string sandboxWarning(const std::vector<std::string>& missing) {
  if (missing.empty()) return "";
  return printable("dorvex: warning: documents are read with less of a sandbox: " +
                   joined(missing));
}

std::string versionText(const HostArguments& arguments) {
  const std::filesystem::path module = arguments.module;
  return "dorvex " DORVEX_VERSION "\n" + located("reader module", module) +
         located("container module", module.empty() ? module : module.parent_path() / "unzip.so") +
         "record version " + std::to_string(kRecordVersion) + "\n" + DORVEX_PROTOBUF_NOTE;
}

}  // namespace dorvex::cli
