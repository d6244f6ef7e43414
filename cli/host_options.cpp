#include "host_options.h"

#include <filesystem>
#include <iostream>

#include "exit_status.h"
#include "record.h"

namespace dorvex::cli {
namespace {

constexpr double kLongestTimeout = 1e6;

Sandbox sandboxOf(const HostArguments& arguments) {
  if (arguments.requireSandbox) return Sandbox::kRequired;
  return arguments.noSandbox ? Sandbox::kOff : Sandbox::kWherePossible;
}

void lookAtSandbox(Sandbox sandbox) {
  if (sandbox == Sandbox::kOff) return;
  const auto missing = missingConfinement();
  if (missing.empty()) return;
  std::string text = missing.front();
  for (std::size_t i = 1; i < missing.size(); ++i) text += "; " + missing[i];
  if (sandbox == Sandbox::kRequired) throw EnvironmentError("no sandbox: " + text);
  std::cerr << "dorvex: warning: documents are read with less of a sandbox: " << text << std::endl;
}

std::string located(const char* what, const std::filesystem::path& file) {
  if (file.empty()) return std::string(what) + " (not looked for without /proc)\n";
  std::error_code ignored;
  const bool there = std::filesystem::exists(file, ignored);
  return std::string(what) + " " + file.string() + (there ? "\n" : " (missing)\n");
}

void addSizeOption(CLI::App& app, const char* name, std::uint64_t& size, const char* help) {
  app.add_option(name, size, help)
      ->transform(CLI::AsSizeValue(false))
      ->type_name("SIZE")
      ->capture_default_str();
}

}  // namespace

void addHostOptions(CLI::App& app, HostArguments& arguments) {
  app.add_option("--module", arguments.module, "The reader module's file")
      ->type_name("FILE")
      ->capture_default_str();
  app.add_option("--timeout", arguments.timeout,
                 "Seconds that one document may take, 0 for no limit")
      ->check(CLI::Range(0.0, kLongestTimeout).description(""))
      ->type_name("SECONDS")
      ->capture_default_str();
  addSizeOption(app, "--max-memory", arguments.maxMemory,
                "Memory that one document may take, such as 512MB, 0 for no limit");
  addSizeOption(app, "--max-output", arguments.maxOutput,
                "Bytes of tokens that one document may give, 0 for no limit");
  addSizeOption(app, "--max-input", arguments.maxInput,
                "Bytes that are read from a pipe or a device, 0 for no limit");
  app.add_option("--recycle", arguments.recycle,
                 "Documents that a worker process reads before it is replaced")
      ->type_name("NUMBER")
      ->capture_default_str();
  auto* require = app.add_flag("--require-sandbox", arguments.requireSandbox,
                               "Read nothing where the kernel lacks a part of the sandbox");
  app.add_flag("--no-sandbox", arguments.noSandbox, "Read in workers without a sandbox")
      ->excludes(require);
  app.add_flag("--in-process", arguments.inProcess,
               "Read in the tool's own process: a crash ends everything, and nothing limits time "
               "or memory");
}

HostOptions hostOptions(const HostArguments& arguments) {
  if (arguments.module.empty()) {
    throw EnvironmentError("cannot look for the reader module without /proc: use --module");
  }
  HostOptions options;
  options.module = arguments.module;
  options.isolation = arguments.inProcess ? Isolation::kInProcess : Isolation::kWorkers;
  options.sandbox = sandboxOf(arguments);
  options.limits.wallTime = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(arguments.timeout));
  options.limits.memory = arguments.maxMemory;
  options.limits.output = arguments.maxOutput;
  options.limits.input = arguments.maxInput;
  options.documentsPerWorker = arguments.recycle;
  if (!arguments.inProcess) lookAtSandbox(options.sandbox);
  return options;
}

std::string versionText(const HostArguments& arguments) {
  const std::filesystem::path module = arguments.module;
  return "dorvex " DORVEX_VERSION "\n" + located("reader module", module) +
         located("container module", module.empty() ? module : module.parent_path() / "unzip.so") +
         "record version " + std::to_string(kRecordVersion) + "\n";
}

}  // namespace dorvex::cli
