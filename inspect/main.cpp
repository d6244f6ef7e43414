// dorvex-inspect: shows what a package holds. `dorvex inspect` starts it.

#include <sys/resource.h>
#include <sys/time.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>

#include "exit_status.h"
#include "inspect/listing.h"
#include "inspect/options.h"
#include "inspect/report.h"
#include "isolation/confinement.h"
#include "output.h"
#include "printable.h"
#include "reading/io_object.h"

namespace dorvex::cli {
namespace {

[[noreturn]] void endForTime(int) {
  constexpr char kMessage[] = "dorvex: inspect: stopped at the time limit\n";
  static_cast<void>(!::write(STDERR_FILENO, kMessage, sizeof kMessage - 1));
  ::_exit(kNotAllRead);
}

void limitTime(double seconds) {
  if (seconds <= 0) return;
  std::signal(SIGALRM, endForTime);
  const double whole = std::floor(seconds);
  itimerval timer{};
  timer.it_value.tv_sec = static_cast<time_t>(whole);
  timer.it_value.tv_usec =
      std::max<suseconds_t>(1, static_cast<suseconds_t>((seconds - whole) * 1e6));
  ::setitimer(ITIMER_REAL, &timer, nullptr);
}

// AddressSanitizer reserves more address space than any limit allows.
void limitMemory([[maybe_unused]] std::uint64_t bytes) {
#ifndef __SANITIZE_ADDRESS__
  const rlimit limit{bytes, bytes};
  if (bytes > 0) ::setrlimit(RLIMIT_AS, &limit);
#endif
}

// The tool has said what the kernel lacks.
void confine(const InspectorArguments& arguments, int directory) {
  if (arguments.noSandbox) return;
  const auto missing = directory >= 0 ? confineToDirectory(directory) : confineToHeldFiles();
  if (arguments.requireSandbox && !missing.empty())
    throw EnvironmentError("not read, since it cannot be confined: " + missing.front());
}

void complain(const std::string& path, const std::string& fault) {
  std::cerr << printable("dorvex: " + path + ": " + fault) << '\n';
}

// Nothing when there is no such object.
std::optional<std::string> print(const Listing& listing, const InspectOptions& options) {
  if (options.object) {
    return (options.json ? printObjectAsJson : printObject)(listing, *options.object);
  }
  return (options.json ? printListingAsJson : printListing)(listing);
}

int inspect(const InspectorArguments& arguments) {
  const InspectOptions& options = arguments.inspect;
  const auto moduleFolder = std::filesystem::absolute(arguments.module).parent_path();
  Listing listing = listDocument(options.path, moduleFolder, options.object,
                                 [&](int directory) { confine(arguments, directory); });
  if (options.application != "auto") listing.classes = kindNamed(options.application);
  Output output;
  const auto printed = print(listing, options);
  output.write(printed.value_or(""));
  output.flush();
  for (const std::string& fault : listing.faults) complain(options.path, fault);
  if (!printed) complain(options.path, "there is no object " + std::to_string(*options.object));
  return printed && listing.faults.empty() ? 0 : kNotAllRead;
}

int report(const OutputError& error) {
  if (error.error != EPIPE)
    std::cerr << "dorvex: cannot write to standard output: " << std::strerror(error.error) << '\n';
  return kNotAllRead;
}

int runInspector(int count, char** values) {
  std::signal(SIGPIPE, SIG_IGN);
  InspectorArguments arguments;
  try {
    if (const auto status = readArguments(count, values, arguments)) return *status;
    limitTime(arguments.timeout);
    limitMemory(arguments.maxMemory);
    return inspect(arguments);
  } catch (const OutputError& error) {
    return report(error);
  } catch (const EnvironmentError& error) {
    complain(arguments.inspect.path, error.what());
    return kEnvironment;
  } catch (const EndlessRead&) {
    complain(arguments.inspect.path, "stopped: reading it would never end");
  } catch (const std::bad_alloc&) {
    complain(arguments.inspect.path, "memory is out");
  } catch (const std::exception& error) {
    complain(arguments.inspect.path, error.what());
  }
  return kNotAllRead;
}

}  // namespace
}  // namespace dorvex::cli

// NOLINTNEXTLINE(bugprone-exception-escape): an error that cannot even be printed ends the tool
int main(int count, char** values) {
  const int status = dorvex::cli::runInspector(count, values);
  // Nothing is taken down: that would take time, and LeakSanitizer needs system
  // calls that a confined process has not.
  ::_exit(status);
}
