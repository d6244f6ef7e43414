// dorvex: reads the text of documents. command_line.h has what can be said to it,
// and each command is a file of its own.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>

#include "command_line.h"
#include "exit_status.h"
#include "output.h"
#include "printable.h"

namespace dorvex::cli {
namespace {

// A reader that has gone away (head, less) wants no message.
int report(const OutputError& error) {
  if (error.error != EPIPE) {
    std::cerr << "dorvex: cannot write the output: " << std::strerror(error.error) << '\n';
  }
  return kEnvironment;
}

// A descriptor that is closed from the start would be given to the next file
// that is opened, and read or written in its place. With O_PATH it stays a bad
// descriptor to whoever uses it.
void holdStandardDescriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) < 0) ::open("/dev/null", O_PATH);
  }
}

int runTool(int count, char** values) {
  holdStandardDescriptors();
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGCHLD, SIG_DFL);  // ignored, it would hide how a worker died
  try {
    return readCommandLine(count, values)();
  } catch (const OutputError& error) {
    return report(error);
  } catch (const UsageError& error) {
    std::cerr << printable(std::string("dorvex: ") + error.what()) << '\n';
    return kBadUsage;
  } catch (const std::exception& error) {
    std::cerr << printable(std::string("dorvex: ") + error.what()) << '\n';
    return kEnvironment;
  }
}

}  // namespace
}  // namespace dorvex::cli

// NOLINTNEXTLINE(bugprone-exception-escape): an error that cannot even be printed ends the tool
int main(int count, char** values) { return dorvex::cli::runTool(count, values); }
