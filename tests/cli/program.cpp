#include "program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>

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

[[noreturn]] void become(const std::string& program, std::vector<char*>& arguments,
                         const Streams& streams, const std::string& errors) {
  std::signal(SIGPIPE, SIG_DFL);
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

std::string contentsOf(const std::string& path) {
  return std::filesystem::is_regular_file(path) ? readFile(path) : "";
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
  std::vector<char*> pointers;
  for (std::string& argument : all) pointers.push_back(argument.data());
  pointers.push_back(nullptr);

  const pid_t child = ::fork();
  if (child == 0) become(program, pointers, used, errors);
  int status = 0;
  ::waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), contentsOf(used.output),
          contentsOf(errors)};
}

Finished runTool(const std::vector<std::string>& arguments, const Streams& streams) {
  if (!unconfined() || !reads(arguments)) return runProgram(DORVEX_PROGRAM, arguments, streams);
  std::vector<std::string> all{"--no-sandbox"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return runProgram(DORVEX_PROGRAM, all, streams);
}

}  // namespace dorvex::testing
