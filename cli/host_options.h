// The options that every command shares.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "dorvex/host.h"
#include "module_location.h"

namespace dorvex::cli {

struct HostArguments {
  std::string module = defaultModule().string();
  double timeout = std::chrono::duration<double>(Limits{}.wallTime).count();
  std::uint64_t maxMemory = Limits{}.memory;
  std::uint64_t maxOutput = Limits{}.output;
  std::uint64_t maxInput = Limits{}.input;
  std::uint32_t recycle = HostOptions{}.documentsPerWorker;
  bool inProcess = false;
  bool requireSandbox = false;
  bool noSandbox = false;
  bool verbose = false;
};

// The options for a host. Says on standard error, once, what the kernel lacks
// for the sandbox; throws EnvironmentError where the sandbox is required.
//
// oneDocument: one is all that will be opened. Its worker tells what it lacks, so that
// nothing is tried ahead, unless the sandbox is required.
HostOptions hostOptions(const HostArguments& arguments, bool oneDocument = false);

// A line on what documents are read without, or nothing where nothing is missing. The
// phrases may come from a process that a document has taken over.
std::string sandboxWarning(const std::vector<std::string>& missing);

// The tool's version, and what it works with: a few lines.
std::string versionText(const HostArguments& arguments);

}  // namespace dorvex::cli
