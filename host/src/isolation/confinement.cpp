// No new privileges, a list of allowed system calls, and for package
// directories a Landlock domain. A call that is not on the list fails with
// EPERM and does not kill, so that a library that only asks goes on.

#include "isolation/confinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>

#include "bytes/unique_fd.h"
#include "dorvex/sandbox.h"

namespace dorvex {
namespace {

using Phrases = std::vector<std::string>;

constexpr const char kNoPrivileges[] = "the kernel cannot forbid new privileges";
constexpr const char kNoFilter[] = "the kernel does not filter system calls (seccomp)";
constexpr const char kNoLandlock[] =
    "the kernel does not confine a process to a directory (Landlock)";
constexpr const char kNoLimits[] = "the kernel does not limit a process (prlimit)";
constexpr const char kCannotTry[] = "the kernel lets no process be confined for a trial";

// --- The list of system calls ---

// Reading from descriptors that are held, memory, time, and the process's end.
constexpr int kForReading[] = {
    SCMP_SYS(read),
    SCMP_SYS(pread64),
    SCMP_SYS(write),
    SCMP_SYS(pwrite64),
    SCMP_SYS(lseek),
    SCMP_SYS(close),
    SCMP_SYS(fstat),
    SCMP_SYS(sendto),
    SCMP_SYS(sendmsg),
    SCMP_SYS(recvfrom),
    SCMP_SYS(recvmsg),
    SCMP_SYS(ftruncate),
    SCMP_SYS(brk),
    SCMP_SYS(mmap),
    SCMP_SYS(munmap),
    SCMP_SYS(mremap),
    SCMP_SYS(mprotect),
    SCMP_SYS(madvise),
    SCMP_SYS(futex),
    SCMP_SYS(sched_yield),
    SCMP_SYS(getrandom),
    SCMP_SYS(nanosleep),
    SCMP_SYS(clock_nanosleep),
    SCMP_SYS(clock_gettime),
    SCMP_SYS(gettimeofday),
    SCMP_SYS(time),
    SCMP_SYS(getrusage),
    SCMP_SYS(getpid),
    SCMP_SYS(gettid),
    SCMP_SYS(getppid),
    SCMP_SYS(rt_sigaction),
    SCMP_SYS(rt_sigprocmask),
    SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigaltstack),
    SCMP_SYS(restart_syscall),
    SCMP_SYS(exit),
    SCMP_SYS(exit_group),
};

// What a package directory needs on top; which files these reach is Landlock's
// part.
constexpr int kForDirectories[] = {
    SCMP_SYS(open),  SCMP_SYS(openat),     SCMP_SYS(getdents64),
    SCMP_SYS(fcntl), SCMP_SYS(newfstatat), SCMP_SYS(dup),
};

// What the run-time of the sanitizers needs to look at memory: without it every
// object seems to be none. Not in any other build.
#ifdef __SANITIZE_ADDRESS__
constexpr std::array kForSanitizers = {SCMP_SYS(pipe), SCMP_SYS(pipe2), SCMP_SYS(readlink)};
#else
constexpr std::array<int, 0> kForSanitizers{};
#endif

struct ReleaseFilter {
  void operator()(void* filter) const { seccomp_release(filter); }
};
using Filter = std::unique_ptr<void, ReleaseFilter>;

bool allow(const Filter& filter, std::span<const int> calls) {
  return std::ranges::all_of(calls, [&](int call) {
    return seccomp_rule_add(filter.get(), SCMP_ACT_ALLOW, call, 0) == 0;
  });
}

bool allowWhere(const Filter& filter, int call, unsigned argument, scmp_datum_t value) {
  const scmp_arg_cmp equal{argument, SCMP_CMP_EQ, value, 0};
  return seccomp_rule_add_array(filter.get(), SCMP_ACT_ALLOW, call, 1, &equal) == 0;
}

// Calls that are allowed for some arguments only: a signal to itself, limits of
// its own. The state of a file (newfstatat) is not among them, since no filter
// can tell a held descriptor from a path there.
bool allowForItself(const Filter& filter) {
  const auto self = static_cast<scmp_datum_t>(::getpid());
  return allowWhere(filter, SCMP_SYS(tgkill), 0, self) &&
         allowWhere(filter, SCMP_SYS(prlimit64), 0, 0);
}

bool filterSystemCalls(bool directories) {
  const Filter filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)));
  if (!filter || !allow(filter, kForReading) || !allow(filter, kForSanitizers)) return false;
  if (directories && !allow(filter, kForDirectories)) return false;
  return allowForItself(filter) && seccomp_load(filter.get()) == 0;
}

// --- Landlock, for which the C library has no functions ---

// The rights that exist since each version of the interface.
constexpr std::array<std::uint64_t, 3> kRightsSince = {
    (std::uint64_t{LANDLOCK_ACCESS_FS_MAKE_SYM} << 1) - 1,
    std::uint64_t{1} << 13,  // move or link a file to another directory
    std::uint64_t{1} << 14,  // truncate
};

int landlockVersion() {
  return static_cast<int>(
      ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION));
}

std::uint64_t rightsOf(int version) {
  std::uint64_t rights = 0;
  for (std::size_t since = 0; since < kRightsSince.size(); ++since) {
    if (static_cast<std::size_t>(version) > since) rights |= kRightsSince[since];
  }
  return rights;
}

bool addDirectory(int ruleset, int directory) {
  landlock_path_beneath_attr rule{};
  rule.allowed_access = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
  rule.parent_fd = directory;
  return ::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
}

bool restrictFilesTo(int directory) {
  const int version = landlockVersion();
  if (version < 1) return false;
  landlock_ruleset_attr attributes{};
  attributes.handled_access_fs = rightsOf(version);
  const UniqueFd ruleset(
      static_cast<int>(::syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0)));
  return ruleset && addDirectory(ruleset.get(), directory) &&
         ::syscall(SYS_landlock_restrict_self, ruleset.get(), 0) == 0;
}

// --- Together ---

// Nothing changes.
bool canLimit() {
  rlimit limit{};
  return ::getrlimit(RLIMIT_AS, &limit) == 0 && ::setrlimit(RLIMIT_AS, &limit) == 0;
}

void forbidCoreDumps() {
  const rlimit none{0, 0};
  ::setrlimit(RLIMIT_CORE, &none);
}

bool forbidNewPrivileges() { return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0; }

void note(bool applied, const char* phrase, Phrases& missing) {
  if (!applied) missing.emplace_back(phrase);
}

}  // namespace

Phrases confineToHeldFiles() {
  Phrases missing;
  note(canLimit(), kNoLimits, missing);
  forbidCoreDumps();
  note(forbidNewPrivileges(), kNoPrivileges, missing);
  note(filterSystemCalls(false), kNoFilter, missing);
  return missing;
}

// Landlock first: its own system calls are not on the list.
Phrases confineToDirectory(int directory) {
  Phrases missing;
  note(canLimit(), kNoLimits, missing);
  forbidCoreDumps();
  note(forbidNewPrivileges(), kNoPrivileges, missing);
  note(restrictFilesTo(directory), kNoLandlock, missing);
  note(filterSystemCalls(true), kNoFilter, missing);
  return missing;
}

// What a child sends back: a letter for each phrase.
constexpr std::array kTold = {kNoPrivileges, kNoFilter, kNoLandlock, kNoLimits};

[[noreturn]] void confineAndTell(int out) {
  const UniqueFd directory(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  const Phrases missing = confineToDirectory(directory.get());
  std::string told;
  for (std::size_t i = 0; i < kTold.size(); ++i) {
    if (std::ranges::find(missing, kTold[i]) != missing.end()) told += static_cast<char>('0' + i);
  }
  ::_exit(::write(out, told.data(), told.size()) < 0 ? EXIT_FAILURE : EXIT_SUCCESS);
}

// A kernel may have something and refuse it all the same, so it is tried, in a
// process of its own.
Phrases missingConfinement() {
  std::array<int, 2> ends{-1, -1};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return {kCannotTry};
  const UniqueFd in(ends[0]);
  UniqueFd out(ends[1]);
  const pid_t child = ::fork();
  if (child == 0) confineAndTell(out.get());
  out.reset();
  if (child < 0) return {kCannotTry};
  std::array<char, kTold.size()> told{};
  ssize_t got = 0;
  do got = ::read(in.get(), told.data(), told.size());
  while (got < 0 && errno == EINTR);
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (got < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS) return {kCannotTry};
  Phrases missing;
  for (ssize_t i = 0; i < got; ++i) {
    missing.emplace_back(
        kTold.at(static_cast<std::size_t>(told[static_cast<std::size_t>(i)] - '0')));
  }
  return missing;
}

}  // namespace dorvex
