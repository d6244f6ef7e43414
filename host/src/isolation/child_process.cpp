#include "isolation/child_process.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "isolation/fd_channel.h"

namespace dorvex {
namespace {

void keepOnly(UniqueFd& channel) {
  constexpr int kChannel = 3;
  if (channel.get() != kChannel) {
    ::dup3(channel.get(), kChannel, O_CLOEXEC);
    channel = UniqueFd(kChannel);
  }
  ::close_range(kChannel + 1, ~0U, 0);
  const UniqueFd nowhere(::open("/dev/null", O_RDWR | O_CLOEXEC));
  ::dup2(nowhere.get(), STDIN_FILENO);
  ::dup2(nowhere.get(), STDOUT_FILENO);
}

// A key pressed at the terminal reaches every process there. Whether this one ends is
// up to the program that it works for.
void leaveSignalsToTheCaller() {
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) ::signal(number, SIG_IGN);
  ::signal(SIGCHLD, SIG_DFL);
}

}  // namespace

void partFromTheCaller(UniqueFd& channel) {
  leaveSignalsToTheCaller();
  keepOnly(channel);
}

void endWithParent(pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(EXIT_FAILURE);
}

int endChild(pid_t child) {
  ::kill(child, SIGKILL);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

WorkerChannel makeWorkerChannel() {
  auto [mine, its] = makeChannel();
  if (!mine || ::fcntl(mine.get(), F_SETFL, O_NONBLOCK) != 0) return {};
  return {std::move(mine), std::move(its)};
}

}  // namespace dorvex
