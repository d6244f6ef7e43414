// How workers are used again and replaced, seen through the processes that read.

#include "isolation/worker_pool.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX
#include <sys/resource.h>
#include <sys/wait.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "fake_document.h"
#include "isolation/fd_channel.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::worker_pool_test {
namespace {

using namespace std::chrono_literals;
using testing::fakeReader;
using testing::Reading;
using testing::readTexts;
using testing::script;

struct Processes {
  pid_t worker = 0;
  pid_t server = 0;
};

Processes processesIn(const std::string& text) {
  Processes processes;
  std::istringstream(text) >> processes.worker >> processes.server;
  return processes;
}

// Which processes read a document.
Processes processesOf(const Host& host) {
  const Reading reading = readTexts(host, script("process\n"));
  EXPECT_EQ(reading.result.status, Status::kOk) << describe(reading.result);
  return reading.texts.empty() ? Processes{} : processesIn(reading.texts.front());
}

// Zero would be this test and all that belongs to it.
void killProcess(pid_t process) {
  ASSERT_GT(process, 1);
  ::kill(process, SIGKILL);
}

bool isGone(pid_t process) { return ::kill(process, 0) != 0 && errno == ESRCH; }

bool goesSoon(pid_t process) {
  for (int i = 0; i < 1000 && !isGone(process); ++i) std::this_thread::sleep_for(10ms);
  return isGone(process);
}

HostOptions options() { return fakeReader(Isolation::kWorkers); }

HostOptions forOneDocument() {
  HostOptions lone = options();
  lone.oneDocument = true;
  return lone;
}

TEST(WorkerPool, UsesAWorkerAgain) {
  const Host host(options());
  const Processes first = processesOf(host);
  const Processes second = processesOf(host);
  EXPECT_EQ(first.worker, second.worker);
  EXPECT_NE(first.worker, ::getpid());
  EXPECT_NE(first.server, ::getpid());
}

TEST(WorkerPool, ReplacesAWorkerThatHasReadItsNumberOfDocuments) {
  HostOptions recycling = options();
  recycling.documentsPerWorker = 3;
  const Host host(recycling);
  std::vector<pid_t> workers;
  for (int i = 0; i < 7; ++i) workers.push_back(processesOf(host).worker);
  EXPECT_EQ(workers[0], workers[2]);
  EXPECT_NE(workers[2], workers[3]);
  EXPECT_EQ(workers[3], workers[5]);
  EXPECT_NE(workers[5], workers[6]);
  EXPECT_TRUE(isGone(workers[0]));
}

TEST(WorkerPool, GivesEveryDocumentANewWorkerWhenAskedTo) {
  HostOptions recycling = options();
  recycling.documentsPerWorker = 0;
  const Host host(recycling);
  EXPECT_NE(processesOf(host).worker, processesOf(host).worker);
}

TEST(WorkerPool, ReplacesAWorkerThatCrashed) {
  const Host host(options());
  const Processes before = processesOf(host);
  EXPECT_EQ(readTexts(host, script("crash\n")).result.signal, SIGSEGV);
  const Processes after = processesOf(host);
  EXPECT_NE(after.worker, before.worker);
  EXPECT_EQ(after.server, before.server);
}

TEST(WorkerPool, PassesOverAWorkerThatDiedIdle) {
  const Host host(options());
  const Processes before = processesOf(host);
  killProcess(before.worker);
  EXPECT_NE(processesOf(host).worker, before.worker);
}

// A file of the kernel's; some kernels are built without it.
std::string childrenListOf(pid_t process) {
  const std::string number = std::to_string(process);
  return "/proc/" + number + "/task/" + number + "/children";
}

// Kills new processes of a fork server, as many as it is told to.
class Killer {
 public:
  explicit Killer(pid_t server) : server_(server), thread_([this] { run(); }) {}
  Killer(const Killer&) = delete;
  Killer& operator=(const Killer&) = delete;
  ~Killer() {
    ended_ = true;
    thread_.join();
  }

  void killUpTo(int count) { left_ = count; }

 private:
  void run() {
    while (!ended_) {
      std::ifstream children(childrenListOf(server_));
      for (pid_t child = 0; left_ > 0 && children >> child;) {
        if (killed_.insert(child).second && ::kill(child, SIGKILL) == 0) --left_;
      }
    }
  }

  pid_t server_;
  std::set<pid_t> killed_;
  std::atomic<int> left_ = 0;
  std::atomic<bool> ended_ = false;
  std::thread thread_;  // the last, since it uses the others
};

TEST(WorkerPool, GivesADocumentToAnotherWorkerWhereNewOnesDieBeforeTheyTakeIt) {
  if (!std::filesystem::exists(childrenListOf(::getpid()))) {
    GTEST_SKIP() << "this kernel does not list the children of a process";
  }
  HostOptions recycling = options();
  recycling.documentsPerWorker = 0;
  const Host host(recycling);
  Killer killer(processesOf(host).server);
  const auto isWhole = [](const Reading& reading) {
    return reading.texts == std::vector<std::string>{"whole"};
  };
  for (int i = 0; i < 50; ++i) {
    killer.killUpTo(5);
    const Reading reading = readTexts(host, script("text whole\n"));
    if (isWhole(reading)) continue;
    EXPECT_EQ(reading.result.signal, SIGKILL) << describe(reading.result);  // it had taken it
  }
  killer.killUpTo(0);
  EXPECT_TRUE(isWhole(readTexts(host, script("text whole\n"))));
}

TEST(WorkerPool, StartsItsForkServerAgain) {
  const Host host(options());
  const Processes before = processesOf(host);
  killProcess(before.server);
  EXPECT_TRUE(goesSoon(before.worker));
  EXPECT_NE(processesOf(host).server, before.server);
}

TEST(WorkerPool, HasAWorkerForEveryDocumentThatIsOpen) {
  const Host host(options());
  const std::string commands = "process\nbuffer\ntext end\n";
  std::vector<Document> documents;
  std::set<pid_t> workers;
  for (int i = 0; i < 4; ++i) {
    documents.push_back(host.open(script(commands)));
    workers.insert(processesIn(documents.back().nextText().value_or("")).worker);
  }
  EXPECT_EQ(workers.size(), 4u);
  for (Document& document : documents) EXPECT_EQ(document.result().status, Status::kOk);
}

TEST(WorkerPool, ReadsEveryDirectoryInAWorkerOfItsOwn) {
  const testing::TemporaryDirectory folder;
  std::filesystem::create_directories(folder.path() / "Index");
  testing::writeFile(folder.path() / "Index" / "Document.iwa", "process\n");
  const Host host(options());
  const pid_t forFiles = processesOf(host).worker;
  std::set<pid_t> workers{forFiles};
  for (int i = 0; i < 2; ++i) {
    const Reading reading = readTexts(host, Input::path(folder.path()));
    ASSERT_EQ(reading.texts.size(), 1u) << describe(reading.result);
    workers.insert(processesIn(reading.texts.front()).worker);
  }
  EXPECT_EQ(workers.size(), 3u);
  EXPECT_EQ(processesOf(host).worker, forFiles);
}

TEST(WorkerPool, CountsProcessorTimeForEachDocumentAnew) {
  HostOptions limited = options();
  limited.limits.processorTime = 1s;
  const Host host(limited);
  const pid_t first = processesOf(host).worker;
  EXPECT_EQ(readTexts(host, script("spin\n")).result.limit, Limit::kProcessorTime);
  EXPECT_NE(processesOf(host).worker, first);
}

TEST(WorkerPool, OutlivesItsHostForADocumentThatIsOpen) {
  const std::string commands = "text one\nbuffer\ntext two\n";
  Document document = Host(options()).open(script(commands));
  EXPECT_EQ(document.nextText(), "one");
  EXPECT_EQ(document.nextText(), "two");
  EXPECT_EQ(document.result().status, Status::kOk);
}

// What read a document of a program that was killed meanwhile.
Processes processesOfAKilledProgram(const HostOptions& options) {
  auto [mine, its] = makeChannel();
  const pid_t program = ::fork();
  if (program == 0) {
    const Host host(options);
    const std::string commands = "process\nbuffer\nhang\n";
    Document document = host.open(script(commands));
    const Processes processes = processesIn(document.nextText().value_or(""));
    sendBytes(its.get(), {reinterpret_cast<const unsigned char*>(&processes), sizeof processes});
    ::kill(::getpid(), SIGKILL);
  }
  Processes processes;
  EXPECT_TRUE(
      receiveBytes(mine.get(), {reinterpret_cast<unsigned char*>(&processes), sizeof processes}));
  ::waitpid(program, nullptr, 0);
  return processes;
}

TEST(WorkerPool, EndsWithTheProgramHoweverThatEnds) {
  const Processes processes = processesOfAKilledProgram(options());
  ASSERT_GT(processes.worker, 0);
  EXPECT_TRUE(goesSoon(processes.server));
  EXPECT_TRUE(goesSoon(processes.worker));
}

TEST(WorkerPool, EndsTheWorkerOfOneDocumentWithTheProgramHoweverThatEnds) {
  const Processes processes = processesOfAKilledProgram(forOneDocument());
  ASSERT_GT(processes.worker, 0);
  EXPECT_TRUE(goesSoon(processes.worker));
}

TEST(WorkerPool, ForksTheWorkerOfOneDocumentItself) {
  const Processes processes = processesOf(Host(forOneDocument()));
  EXPECT_EQ(processes.server, ::getpid());
  EXPECT_TRUE(isGone(processes.worker));
}

TEST(WorkerPool, OpensFurtherDocumentsBehindTheOneInNewWorkers) {
  const Host host(forOneDocument());
  const Processes first = processesOf(host);
  const Processes second = processesOf(host);
  const Processes third = processesOf(host);
  EXPECT_NE(second.server, ::getpid());
  EXPECT_EQ(second.server, third.server);
  EXPECT_EQ((std::set{first.worker, second.worker, third.worker}).size(), 3u);
}

TEST(WorkerPool, ConfinesTheWorkerOfOneDocument) {
  if (const auto missing = missingConfinement(); !missing.empty()) GTEST_SKIP() << missing.front();
  HostOptions confined = forOneDocument();
  confined.sandbox = Sandbox::kRequired;
  const Reading reading = readTexts(Host(confined), script("attempt open /etc/passwd\n"));
  EXPECT_EQ(reading.texts, std::vector<std::string>{"open: Operation not permitted"});
}

TEST(WorkerPool, TellsHowTheWorkerOfOneDocumentDied) {
  EXPECT_EQ(readTexts(Host(forOneDocument()), script("crash\n")).result.signal, SIGSEGV);
}

TEST(WorkerPool, ReadsTheOneDocumentInAnotherWorkerWhereItsOwnHasDied) {
  const Host host(forOneDocument());
  std::ifstream children(childrenListOf(::getpid()));
  pid_t lone = 0;
  if (!(children >> lone)) GTEST_SKIP() << "this kernel does not list the children of a process";
  killProcess(lone);
  const Processes processes = processesOf(host);
  EXPECT_NE(processes.worker, lone);
  EXPECT_NE(processes.server, ::getpid());
}

TEST(WorkerPool, ReportsAProcessThatDiesBeforeItIsReady) {
  HostOptions broken = options();
  broken.module = "/no/such/module.so";
  EXPECT_EQ(readTexts(Host(broken), script("")).result.failure, Failure::kModuleMissing);
}

TEST(WorkerPool, ServesManyDocumentsFromManyThreads) {
  HostOptions recycling = options();
  recycling.documentsPerWorker = 7;
  const Host host(recycling);
  std::vector<std::thread> threads;
  std::vector<int> read(4, 0);
  for (int& mine : read) {
    threads.emplace_back([&] {
      for (int i = 0; i < 50; ++i) {
        const std::string text = std::to_string(i);
        const Reading good = readTexts(host, script("text " + text + "\n"));
        mine += static_cast<int>(good.texts == std::vector{text});
        if (i % 10 == 0) readTexts(host, script("crash\n"));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(read, (std::vector<int>(4, 50)));
}

// No descriptors beyond those that are open, for as long as it lives.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    ::getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit none{0, before_.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
  }
  ~NoMoreDescriptors() { ::setrlimit(RLIMIT_NOFILE, &before_); }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;

 private:
  rlimit before_{};
};

TEST(WorkerPool, WaitsShortlyForWhatItHasJustWaitedForInVain) {
  WorkerPool pool(fakeReader(Isolation::kWorkers), 500ms);
  const UniqueFd document(::open("/dev/null", O_RDONLY));
  const auto timeOfOneStart = [&] {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(pool.start(Order::kReadFile, document.get()), nullptr);
    EXPECT_EQ(errno, EMFILE);
    return std::chrono::steady_clock::now() - start;
  };
  {
    const NoMoreDescriptors none;
    EXPECT_GE(timeOfOneStart(), 500ms);
    for (int i = 0; i < 10; ++i) EXPECT_LT(timeOfOneStart(), 400ms);
  }
  EXPECT_NE(pool.start(Order::kReadFile, document.get()), nullptr);
}

}  // namespace
}  // namespace dorvex::worker_pool_test
