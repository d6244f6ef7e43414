#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>
#include <vector>

#include "fake_document.h"
#include "reading/document_source.h"

namespace dorvex::worker_source_test {
namespace {

using namespace std::chrono_literals;
using testing::fakeReader;
using testing::Reading;
using testing::readTexts;
using testing::script;
using Texts = std::vector<std::string>;
using Clock = std::chrono::steady_clock;

HostOptions options() { return fakeReader(Isolation::kWorkers); }

Reading read(const std::string& commands, const HostOptions& with = options()) {
  return readTexts(Host(with), script(commands));
}

bool hasChildren() { return ::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD; }

std::size_t openFiles() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    ++count;
  }
  return count;
}

TEST(WorkerSource, ReportsACrashWithItsSignal) {
  const Reading reading = read("crash\n");
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kCrashed);
  EXPECT_EQ(reading.result.signal, SIGSEGV);
  EXPECT_EQ(reading.result.moduleResult, std::nullopt);
  EXPECT_EQ(reading.result.message, "the reader crashed: Segmentation fault");
}

TEST(WorkerSource, KeepsTheTextsBeforeACrashAndCallsThemPartial) {
  const Reading reading = read("text one\nbuffer\ncrash\n");
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.failure, Failure::kCrashed);
}

TEST(WorkerSource, ReportsAWorkerThatLeavesWithoutAWord) {
  const Reading reading = read("exit\n");
  EXPECT_EQ(reading.result.failure, Failure::kCrashed);
  EXPECT_EQ(reading.result.signal, 0);
}

TEST(WorkerSource, EndsADocumentThatHangsOrComputesForEver) {
  HostOptions limited = options();
  limited.limits.wallTime = 200ms;
  for (const char* command : {"hang\n", "spin\n"}) {
    const auto start = Clock::now();
    const Reading reading = read(command, limited);
    EXPECT_EQ(reading.result.status, Status::kFailed);
    EXPECT_EQ(reading.result.failure, Failure::kTimedOut);
    EXPECT_EQ(reading.result.limit, Limit::kWallTime);
    EXPECT_GE(Clock::now() - start, 200ms);
    EXPECT_LT(Clock::now() - start, 10s);
    EXPECT_FALSE(hasChildren());
  }
}

TEST(WorkerSource, DoesNotChargeTheTimeThatTheCallerTakes) {
  HostOptions limited = options();
  limited.limits.wallTime = 500ms;
  const Host host(limited);
  const std::string commands = "text one\nbuffer\ntext two\n";
  Document document = host.open(script(commands));
  EXPECT_EQ(document.nextText(), "one");
  std::this_thread::sleep_for(700ms);
  EXPECT_EQ(document.nextText(), "two");
  EXPECT_EQ(document.result().status, Status::kOk);
}

TEST(WorkerSource, EndsADocumentThatUsesUpItsProcessorTime) {
  HostOptions limited = options();
  limited.limits.processorTime = 1s;
  const Reading reading = read("spin\n", limited);
  EXPECT_EQ(reading.result.failure, Failure::kTimedOut);
  EXPECT_EQ(reading.result.limit, Limit::kProcessorTime);
  EXPECT_EQ(reading.result.signal, SIGXCPU);
}

TEST(WorkerSource, EndsADocumentThatUsesUpItsMemory) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "AddressSanitizer ends a process by itself where memory is out";
#endif
  HostOptions limited = options();
  limited.limits.memory = std::uint64_t{512} << 20;
  const Reading reading = read("text one\nstarve\n", limited);
  EXPECT_EQ(reading.texts, Texts{});
  EXPECT_EQ(reading.result.status, Status::kFailed);
  EXPECT_EQ(reading.result.failure, Failure::kOutOfMemory);
  EXPECT_EQ(reading.result.limit, Limit::kMemory);
}

TEST(WorkerSource, EndsADocumentThatGivesMoreThanItMay) {
  HostOptions limited = options();
  limited.limits.output = 51 + 17;
  EXPECT_EQ(read("text one\n", limited).result.status, Status::kOk);
  const Reading reading = read("text one\nbuffer\ntext two\n", limited);
  EXPECT_EQ(reading.texts, Texts{"one"});
  EXPECT_EQ(reading.result.status, Status::kPartial);
  EXPECT_EQ(reading.result.failure, Failure::kLimitPassed);
  EXPECT_EQ(reading.result.limit, Limit::kOutput);
}

TEST(WorkerSource, LeavesNoProcessAndNoDescriptorBehind) {
  const std::size_t before = openFiles();
  read("text one\n");
  read("crash\n");
  read("return 4\n");
  EXPECT_EQ(openFiles(), before);
  EXPECT_FALSE(hasChildren());
}

TEST(WorkerSource, EndsTheWorkerOfADocumentThatIsGivenUp) {
  const std::string commands = "text one\nbuffer\nhang\n";
  {
    Document document = Host(options()).open(script(commands));
    EXPECT_EQ(document.nextText(), "one");
  }
  EXPECT_FALSE(hasChildren());
}

TEST(WorkerSource, NoticesACrashWhileAnotherWorkerIsBusy) {
  const Host host(options());
  const std::string crashing = "text one\nbuffer\ncrash\n";
  const std::string hanging = "text two\nbuffer\nhang\n";
  Document first = host.open(script(crashing));
  Document second = host.open(script(hanging));
  EXPECT_EQ(second.nextText(), "two");
  const auto start = Clock::now();
  EXPECT_EQ(first.nextText(), "one");
  EXPECT_EQ(first.result().failure, Failure::kCrashed);
  EXPECT_LT(Clock::now() - start, 10s);
}

TEST(WorkerSource, CarriesMoreThanAPipeHolds) {
  std::string commands;
  Texts expected;
  for (int i = 0; i < 200; ++i) {
    expected.push_back(std::string(4000, static_cast<char>('a' + i % 26)));
    commands += "text " + expected.back() + "\nbuffer\n";
  }
  const Reading reading = read(commands + "text end\n");
  expected.push_back("end");
  EXPECT_EQ(reading.texts, expected);
  EXPECT_EQ(reading.result.status, Status::kOk);
}

TEST(OwnedBufferSize, IsWhatTheLooserRoomTestsOfTheReaderNeed) {
  EXPECT_EQ(ownedBufferSize(51), 4110u);
  EXPECT_EQ(ownedBufferSize(4096), 4110u);
  EXPECT_EQ(ownedBufferSize(4097), 4111u);
  EXPECT_EQ(ownedBufferSize(65536), 65550u);
}

}  // namespace
}  // namespace dorvex::worker_source_test
