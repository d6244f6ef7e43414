#include "program.h"

#include <fcntl.h>
#include <pty.h>
#include <seccomp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <set>
#include <utility>

#include "support/package_writer.h"
#include "support/temporary_directory.h"
#include "support/unconfined.h"

namespace dorvex::testing {
namespace {

constexpr int kCannotRun = 127;

bool reads(const std::vector<std::string>& arguments) {
  const std::set<std::string> commands{"text", "batch", "inspect"};
  return std::any_of(arguments.begin(), arguments.end(),
                     [&](const std::string& argument) { return commands.count(argument) != 0; });
}

void lead(int target, const char* path, int flags) {
  const int fd = ::open(path, flags, 0600);
  if (fd < 0 || ::dup2(fd, target) < 0) ::_exit(kCannotRun);
  ::close(fd);
}

void leadToClosedPipe() {
  int ends[2];
  if (::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) < 0) ::_exit(kCannotRun);
  ::close(ends[0]);
  ::close(ends[1]);
}

void letFail(int call) {
  const scmp_filter_ctx filter = seccomp_init(SCMP_ACT_ALLOW);
  if (seccomp_rule_add(filter, SCMP_ACT_ERRNO(EPERM), call, 0) != 0 || seccomp_load(filter) != 0)
    ::_exit(kCannotRun);
}

[[noreturn]] void become(const std::string& program, std::vector<char*>& arguments,
                         const Streams& streams, const std::string& errors) {
  std::signal(SIGPIPE, SIG_DFL);
  if (streams.failingCall >= 0) letFail(streams.failingCall);
  lead(STDIN_FILENO, streams.input.c_str(), O_RDONLY);
  lead(STDERR_FILENO, errors.c_str(), O_WRONLY | O_CREAT);
  if (streams.closedPipe) {
    leadToClosedPipe();
  } else {
    lead(STDOUT_FILENO, streams.output.c_str(), O_WRONLY | O_CREAT);
  }
  ::execv(program.c_str(), arguments.data());
  ::_exit(kCannotRun);
}

std::string readToTheEnd(int terminal) {
  std::string shown;
  char block[4096];
  for (ssize_t got = 0; (got = ::read(terminal, block, sizeof block)) > 0;) {
    shown.append(block, static_cast<std::size_t>(got));
  }
  ::close(terminal);
  std::erase(shown, '\r');
  return shown;
}

// Of which the pointers are good while it lives.
std::vector<char*> pointersTo(std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return pointers;
}

int statusOf(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string contentsOf(const std::string& path) {
  return std::filesystem::is_regular_file(path) ? readFile(path) : "";
}

std::vector<std::string> withOptions(std::vector<std::string> arguments) {
  if (unconfined() && reads(arguments)) arguments.insert(arguments.begin(), "--no-sandbox");
  return arguments;
}

}  // namespace

Finished runProgram(const std::string& program, const std::vector<std::string>& arguments,
                    const Streams& streams) {
  const TemporaryDirectory folder;
  const std::string errors = folder.path() / "errors";
  Streams used = streams;
  if (used.input.empty()) used.input = "/dev/null";
  if (used.output.empty()) used.output = folder.path() / "output";

  std::vector<std::string> all{program};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers = pointersTo(all);
  const pid_t child = ::fork();
  if (child == 0) become(program, pointers, used, errors);
  const int status = statusOf(child);
  return {status, contentsOf(used.output), contentsOf(errors)};
}

Finished runTool(const std::vector<std::string>& arguments, const Streams& streams) {
  return runProgram(DORVEX_PROGRAM, withOptions(arguments), streams);
}

Finished runToolAtTerminal(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = withOptions(arguments);
  all.insert(all.begin(), DORVEX_PROGRAM);
  std::vector<char*> pointers = pointersTo(all);
  int terminal = -1;
  const pid_t child = ::forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    ::execv(DORVEX_PROGRAM, pointers.data());
    ::_exit(kCannotRun);
  }
  std::string shown = readToTheEnd(terminal);
  return {statusOf(child), std::move(shown), ""};
}

}  // namespace dorvex::testing
