// A reader module that does what its document says, one command a line. It
// stands in for readers that crash, hang or break their contract.
//
//   text T        a text T
//   buffer        the next tokens go into another buffer
//   raw           the rest of the document as it stands, in place of tokens
//   return N      FillBuffer returns N
//   crash         dies by a signal, when this point of the stream is asked for
//   exit          ends the process
//   hang          sleeps for ever
//   nap           sleeps for half a second
//   spin          computes for ever
//   grow N PATH   adds a byte to a file of fewer than N
//   starve        allocates until there is no more
//   overrun       reports more bytes than its buffer has
//   never-done    answers with nothing for ever
//   process       a text with the process's number and its parent's
//   attempt X     a text with what came of it: open PATH, create PATH, connect,
//                 exec, fork, kill, state PATH, privileges, core
//   open PATH     opens a member; without it FillBuffer returns 2
//   read-on PATH  opens a member and reads behind its end for ever
// With FAKE_READER_NO_CONTEXT in the environment AllocateContext fails, and
// each shutdown adds a line to the file that FAKE_READER_SHUTDOWN_LOG names.

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "Readers/hostapi/reader_interface.h"
#include "Tools/vnexport.h"

namespace {

using namespace std::string_literals;

const std::string kPrologue =
    "\x0F\x0D\0\0\0\0\0\0\0\x0A\0\0\0\x10\x26\0\0\0\x02\xD0\x2F\0\0\xE0\x3D\0\0"s +
    "\xA0\x05\0\0\xA0\x05\0\0\xA0\x05\0\0\xA0\x05\0\0\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s;

struct Step {
  std::string tokens;
  std::string command;  // carried out before the tokens are handed over
};

struct Context {
  tag_TPVAPIServices* services;
  _VPTPIOobj* io = nullptr;
  std::vector<Step> steps = {};
  std::size_t next = 0;
};

std::string number(std::size_t value) {
  std::string bytes(4, '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(value & 0xFF);
    value >>= 8;
  }
  return bytes;
}

std::string textTokens(const std::string& text) {
  return "\0"s + number(text.size() + 9) + number(text.size()) + text + "\x0E"s + number(5);
}

std::string readAll(_VPTPIOobj* io) {
  std::string all;
  char block[4096];
  while (const int got = io->Read(io, block, sizeof block)) {
    all.append(block, static_cast<std::size_t>(got));
  }
  return all;
}

// Each attempt gives 0 or more for success, or -1 and errno.
int attemptExec() {
  char program[] = "/bin/true";
  char* arguments[] = {program, nullptr};
  return ::execv(program, arguments);
}

int attemptFork() {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(0);
  if (child > 0) ::waitpid(child, nullptr, 0);
  return child;
}

int attemptCore() {
  rlimit limit{};
  ::getrlimit(RLIMIT_CORE, &limit);
  return limit.rlim_max > 0 ? 0 : (errno = EFBIG, -1);
}

int attemptPrivileges() {
  return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0) == 0 ? 0 : (errno = EPERM, -1);
}

int attempt(const std::string& what, const char* path) {
  struct stat status {};
  if (what == "open") return ::open(path, O_RDONLY);
  if (what == "create") return ::open(path, O_WRONLY | O_CREAT, 0600);
  if (what == "state") return ::stat(path, &status);
  if (what == "connect") return ::socket(AF_INET, SOCK_STREAM, 0);
  if (what == "exec") return attemptExec();
  if (what == "fork") return attemptFork();
  if (what == "kill") return ::kill(::getppid(), 0);
  if (what == "privileges") return attemptPrivileges();
  if (what == "core") return attemptCore();
  std::abort();
}

std::string outcome(const std::string& argument) {
  const auto space = argument.find(' ');
  const std::string what = argument.substr(0, space);
  const std::string path = space == std::string::npos ? "" : argument.substr(space + 1);
  return what + ": " + (attempt(what, path.c_str()) >= 0 ? "done" : std::strerror(errno));
}

// A package directory has its script in the file that the document's path names.
std::string readScript(const Context& context) {
  const char* path = context.io->pathName;
  if (path == nullptr) return readAll(context.io);
  _VPTPIOobj* member = context.services->OpenFile(context.services, path, "rb");
  if (member == nullptr) return "";
  member->Open(member);
  std::string all = readAll(member);
  member->Close(member);
  return all;
}

void plan(Context& context) {
  std::istringstream script(readScript(context));
  context.steps.push_back({kPrologue, ""});
  for (std::string line; std::getline(script, line);) {
    if (line.rfind("text ", 0) == 0) {
      context.steps.back().tokens += textTokens(line.substr(5));
    } else if (line.rfind("attempt ", 0) == 0) {
      context.steps.back().tokens += textTokens(outcome(line.substr(8)));
    } else if (line == "process") {
      context.steps.back().tokens +=
          textTokens(std::to_string(::getpid()) + " " + std::to_string(::getppid()));
    } else if (line == "buffer") {
      context.steps.push_back({});
    } else if (line == "raw") {
      std::ostringstream rest;
      rest << script.rdbuf();
      context.steps.back().tokens = rest.str();
    } else {
      context.steps.back().command = line;
    }
  }
}

// As a crash in a module looks to its process, also where a sanitizer has taken
// the signal for itself.
[[noreturn]] void crash() {
  std::signal(SIGSEGV, SIG_DFL);
  std::raise(SIGSEGV);
  std::abort();
}

[[noreturn]] void spin() {
  volatile bool forEver = true;
  while (forEver) {
  }
  std::abort();
}

[[noreturn]] void starve() {
  for (;;) std::memset(new char[1 << 24], 1, 1 << 24);
}

// "N PATH"
void grow(const std::string& argument) {
  const auto space = argument.find(' ');
  struct stat status {};
  const std::string path = argument.substr(space + 1);
  const int fd = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  if (fd < 0 || ::fstat(fd, &status) != 0) std::abort();
  if (status.st_size < std::stol(argument)) static_cast<void>(!::write(fd, "x", 1));
  ::close(fd);
}

int openMember(Context& context, const std::string& path, bool readOn) {
  _VPTPIOobj* io = context.services->OpenFile(context.services, path.c_str(), "rb");
  if (io == nullptr) return 2;
  char block[4096];
  io->Open(io);
  try {
    while (readOn) io->Read(io, block, sizeof block);
  } catch (...) {
    io->Close(io);
    return 6;
  }
  io->Close(io);
  return 0;
}

int carryOut(Context& context, const std::string& command) {
  const auto space = command.find(' ');
  const std::string verb = command.substr(0, space);
  const std::string argument = space == std::string::npos ? "" : command.substr(space + 1);
  if (verb == "return") return std::stoi(argument);
  if (verb == "crash") crash();
  if (verb == "exit") ::_exit(0);
  if (verb == "hang") ::sleep(3600);
  if (verb == "grow") grow(argument);
  if (verb == "nap") ::usleep(500'000);
  if (verb == "spin") spin();
  if (verb == "starve") starve();
  if (verb == "open") return openMember(context, argument, false);
  if (verb == "read-on") return openMember(context, argument, true);
  return 0;
}

void* allocateContext(void*, void*, std::uint32_t* result, tag_TPVAPIServices* services,
                      std::uint32_t) {
  if (std::getenv("FAKE_READER_NO_CONTEXT") != nullptr) {
    services->lastError = 2;
    return nullptr;
  }
  *result = 1;
  return new Context{services};
}

int freeContext(void* context) {
  delete static_cast<Context*>(context);
  return 0;
}

int initDoc(void* context, adDocDesc*, long, _VPTPIOobj* io) {
  static_cast<Context*>(context)->io = io;
  return 0;
}

int fillBuffer(void* data, unsigned char* buffer, unsigned int* length, int* percent,
               unsigned int size) {
  auto& context = *static_cast<Context*>(data);
  if (context.steps.empty()) plan(context);
  const Step& step = context.steps[context.next];
  if (const int result = carryOut(context, step.command)) return result;
  *length = 0;
  if (step.command == "never-done") return 0;
  *length = static_cast<unsigned int>(step.tokens.size());
  if (step.command == "overrun") {
    *length = size + 100000;
    return 0;
  }
  std::memcpy(buffer, step.tokens.data(), step.tokens.size());
  *percent = ++context.next == context.steps.size() ? 100 : 1;
  return 0;
}

}  // namespace

extern "C" VN_API void dorvexGetReaderInterface(ReaderInterface* table) {
  *table = {allocateContext, freeContext, initDoc, fillBuffer, {}, nullptr, {}};
}

extern "C" VN_API bool vnDllInit() { return true; }

extern "C" VN_API void vnDllShutdown() {
  if (const char* log = std::getenv("FAKE_READER_SHUTDOWN_LOG")) {
    if (std::FILE* file = std::fopen(log, "a")) {
      std::fputs("shutdown\n", file);
      std::fclose(file);
    }
  }
}
