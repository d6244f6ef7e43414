// Damaged documents through the whole module: a stated return value every time,
// or one of the loops that are stated to have no end.
//
// DORVEX_DAMAGE_VARIANTS is the number of variants of each document,
// DORVEX_DAMAGE_FIRST the first of them.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): kill is POSIX
#include <sys/wait.h>
#include <time.h>  // NOLINT(modernize-deprecated-headers): the clock of a process is POSIX
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>

#include "damage/variants.h"
#include "module/reader_module.h"
#include "support/corpus.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t kUsualVariants = 20;
// Read by one process: the reader gives no memory back.
constexpr std::uint64_t kBatch = 50;
// Processor time in which a variant is read, many times over.
constexpr std::chrono::seconds kPatience{3};

enum Outcome : int {
  kCrashed = -2,
  kEndless = -1,
  kUnstated = 100,
  kLeftOpen = 101,
  kBadTokens = 102
};

std::uint64_t setting(const char* name, std::uint64_t otherwise) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::strtoull(value, nullptr, 10) : otherwise;
}

// Reads a document to its end in this process: what the module returned last, or
// why that will not do.
int readWhole(const DamagedDocument& document) {
  BareHost host;
  host.useContainerModule(containerModulePath());
  host.onOpenFile = [](Stream& stream) { stream.onRead = readToTheEndOnce; };
  TemporaryDirectory folder;
  writeDirectory(folder.path(), document.files);
  Stream& stream = document.files.empty()
                       ? host.addDocument(document.zip)
                       : host.addDirectoryDocument(folder.path() / "Index" / "Document.iwa");
  const Pumped pumped = pump(theReader().interface(), host, &stream, 65536);
  const int result = pumped.result();
  if (host.openStreams() != 0 || host.openContainers() != 0 || host.loadedModules() != 0 ||
      host.badFrees() != 0) {
    return kLeftOpen;
  }
  if (result != 0 && result != 2 && result != 4 && result != 6) return kUnstated;
  return decodeTokens(pumped.stream()) ? result : kBadTokens;
}

struct Report {
  std::uint64_t variant;
  int outcome;
};

// A process that reads some variants one after the other and reports each. It
// writes no more than a pipe takes, so it never waits for its parent.
class Reading {
 public:
  Reading(const Variants& variants, std::uint64_t first, std::uint64_t end) {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    child_ = ::fork();
    if (child_ == 0) {
      ::close(ends[0]);
      for (std::uint64_t variant = first; variant < end; ++variant) {
        const Report report{variant, readWhole(variants.make(variant))};
        if (::write(ends[1], &report, sizeof report) != sizeof report) ::_exit(1);
      }
      ::_exit(0);
    }
    ::close(ends[1]);
    pipe_ = ends[0];
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
  ~Reading() {
    ::kill(child_, SIGKILL);
    ::waitpid(child_, nullptr, 0);
    ::close(pipe_);
  }

  // The outcome of the next variant.
  int next() {
    pollfd source{pipe_, POLLIN, 0};
    const auto start = processorTime();
    constexpr int kStep = 100;  // milliseconds
    while (::poll(&source, 1, kStep) == 0) {
      if (processorTime() - start > kPatience) return kEndless;
    }
    Report report{};
    return ::read(pipe_, &report, sizeof report) == sizeof report ? report.outcome : kCrashed;
  }

 private:
  // Not the time that passes: the machine may have other work.
  std::chrono::nanoseconds processorTime() const {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(child_, &clock) == 0) ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
  }

  pid_t child_ = -1;
  int pipe_ = -1;
};

// Whether the objects of a document can send the walk round for ever: a stream
// beyond 64 MiB, or ten bytes in a row that ask for more, where a length stands.
bool mayNeverEnd(const DamagedDocument& document) {
  constexpr std::size_t kMostReadable = std::size_t{64} << 20;
  for (const std::string& stream : Variants::objectStreams(document)) {
    if (stream.size() > kMostReadable) return true;
    int run = 0;
    for (const char byte : stream) {
      run = (byte & 0x80) != 0 ? run + 1 : 0;
      if (run == 10) return true;
    }
  }
  return false;
}

std::vector<fs::path> documents() {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(DORVEX_SAMPLES)) {
    const std::string extension = entry.path().extension();
    if (extension == ".pages" || extension == ".key" || extension == ".numbers")
      paths.push_back(entry.path());
  }
  std::ranges::sort(paths);
  for (const std::string& name : corpusDocuments()) paths.push_back(corpusPath(name));
  return paths;
}

class Damage : public ::testing::TestWithParam<fs::path> {};

TEST_P(Damage, GivesAStatedResultOrALoopThatIsStatedNotToEnd) {
  const Variants variants(GetParam());
  const std::uint64_t first = setting("DORVEX_DAMAGE_FIRST", 0);
  const std::uint64_t end = first + setting("DORVEX_DAMAGE_VARIANTS", kUsualVariants);
  theReader();  // before the processes that read
  std::map<int, int> outcomes;
  for (std::uint64_t next = first; next < end;) {
    const std::uint64_t batchEnd = std::min(next + kBatch, end);
    Reading reading(variants, next, batchEnd);
    for (int outcome = 0; next < batchEnd && outcome >= 0; ++next) {
      outcome = reading.next();
      ++outcomes[outcome];
      EXPECT_NE(outcome, kCrashed) << "variant " << next;
      EXPECT_NE(outcome, kUnstated) << "variant " << next;
      EXPECT_NE(outcome, kLeftOpen) << "variant " << next;
      EXPECT_NE(outcome, kBadTokens) << "variant " << next;
      if (outcome == kEndless) {
        EXPECT_TRUE(mayNeverEnd(variants.make(next))) << "variant " << next;
      }
    }
  }
  std::printf("%s:", GetParam().filename().c_str());
  for (const auto& [outcome, count] : outcomes) {
    if (outcome == kEndless)
      std::printf(" endless %d", count);
    else
      std::printf(" %d: %d", outcome, count);
  }
  std::printf("\n");
}

INSTANTIATE_TEST_SUITE_P(Documents, Damage, ::testing::ValuesIn(documents()),
                         [](const auto& info) { return testNameOf(info.param.filename()); });

TEST(DamageOfRealDocuments, NeedsThem) {
  if (!hasCorpus()) GTEST_SKIP() << corpusIsAbsent();
  EXPECT_GT(documents().size(), corpusDocuments().size());
}

TEST(Variants, AreTheSameEachTimeAndDifferFromEachOther) {
  const Variants variants(documents().front());
  const Variants again(documents().front());
  for (const std::uint64_t number : {0U, 1U, 2U, 999U}) {
    EXPECT_EQ(variants.make(number).zip, again.make(number).zip);
    EXPECT_NE(variants.make(number).zip, variants.make(number + 3).zip);
  }
}

}  // namespace
}  // namespace dorvex::testing
