// operator new fails once, at each allocation that the module makes.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "faults/packages.h"
#include "module/reader_module.h"
#include "support/failing_allocation.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

using Texts = std::vector<std::string>;

constexpr const char kAllocationFails[] = "operator new fails";

// What one call of the pump came to with one allocation failing.
struct Outcome {
  int result = 0;
  bool failed = false;  // the call made that many allocations
  std::vector<std::string> log;
  std::string bytes;
};

class MemoryFaults : public ::testing::TestWithParam<Shape> {
 protected:
  MemoryFaults() : package_(GetParam()) {}

  Outcome fillWithFailure(long index) {
    const std::size_t descriptors = openDescriptors();
    BareHost host;
    const ReaderInterface& reader = theReader().interface();
    ReaderSession session(reader, host, &package_.addTo(host));
    GuardedBuffer buffer(kBuffer);
    Outcome outcome;
    {
      const FailingAllocation failing(index, [&] {
        outcome.failed = true;
        host.note(kAllocationFails);
      });
      outcome.result = reader.FillBuffer(session.context(), buffer.data(), &session.length,
                                         &session.percent, kBuffer);
    }
    outcome.log = host.log();
    if (outcome.result == 0) outcome.bytes = buffer.view().substr(0, session.length);
    EXPECT_EQ(session.length == static_cast<unsigned>(ReaderSession::kUntouched),
              outcome.result != 0);
    EXPECT_EQ(host.openStreams(), 0U);
    EXPECT_EQ(host.openContainers(), 0);
    EXPECT_EQ(host.loadedModules(), 0);
    EXPECT_EQ(openDescriptors(), descriptors);
    session.free();
    EXPECT_EQ(host.liveBlocks(), 0U);
    return outcome;
  }

  bool isDirectory() const { return GetParam() == Shape::kDirectory; }

  // Compares with what is stated: within a member of a zip the failure costs that
  // member, or its rest; anywhere else it ends the document with 6, and what is
  // held is given back from the inside to the outside.
  void expectStated(const Outcome& outcome) {
    const StatedRun whole = package_.stated();
    std::vector<std::string> log = outcome.log;
    const auto failure = std::ranges::find(log, kAllocationFails);
    ASSERT_NE(failure, log.end());
    const auto before = static_cast<std::size_t>(failure - log.begin());
    const bool inMember = !isDirectory() && before > 0 && log[before - 1] == "Open scratch";
    log.erase(failure);
    // Up to the failure nothing is different.
    ASSERT_LE(before, whole.log.size());
    EXPECT_TRUE(std::equal(log.begin(), log.begin() + static_cast<std::ptrdiff_t>(before),
                           whole.log.begin()));
    if (inMember) {
      EXPECT_EQ(log, whole.log);
      expectTheOtherMembers(outcome, whole);
      return;
    }
    EXPECT_EQ(outcome.result, 6);
    EXPECT_EQ(std::vector(log.begin() + static_cast<std::ptrdiff_t>(before), log.end()),
              cleanUpAfter(log, before));
  }

 private:
  void expectTheOtherMembers(const Outcome& outcome, const StatedRun& whole) {
    ASSERT_EQ(outcome.result, 0);
    const Texts all = package_.textsOf(whole.members);
    const Texts texts = textsOf(outcome.bytes);
    EXPECT_GE(texts.size() + 1, all.size());
    EXPECT_TRUE(std::ranges::includes(all, texts));
  }

  // The calls that give back what the calls up to a place hold.
  static std::vector<std::string> cleanUpAfter(const std::vector<std::string>& log,
                                               std::size_t count) {
    std::vector<std::string> held;
    const auto release = [&] { held.pop_back(); };
    for (std::size_t i = 0; i < count; ++i) {
      const std::string& entry = log[i];
      if (entry.starts_with("LoadDll")) held.emplace_back("FreeDll");
      if (entry == "OpenContainer") held.emplace_back("CloseContainer");
      if (entry.starts_with("OpenFile ")) held.push_back("Close " + entry.substr(9));
      if (entry == "FreeDll" || entry == "CloseContainer" || entry.starts_with("Close ")) release();
    }
    std::ranges::reverse(held);
    return held;
  }

 protected:
  Package package_;
};

TEST_P(MemoryFaults, CostAMemberOfAZipOrTheDocumentAndLeaveNothingOpen) {
  ASSERT_EQ(fillWithFailure(1L << 40).result, 0);  // what is made once per process is made now
  long index = 0;
  for (;; ++index) {
    SCOPED_TRACE(index);
    const Outcome outcome = fillWithFailure(index);
    if (!outcome.failed) break;
    expectStated(outcome);
    if (HasFatalFailure()) return;
  }
  EXPECT_GT(index, 10) << "allocations that failed, one in each fill";
}

// A process in which the module has not yet read anything, for each allocation:
// also what is built once per process may fail, and the next document comes out.
TEST_P(MemoryFaults, LeaveAModuleThatReadsTheNextDocumentAlsoInItsFirst) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        bool failed = true;
        for (long index = 0; failed; ++index) {
          const pid_t child = ::fork();
          if (child == 0) {
            const Outcome first = fillWithFailure(index);
            const Outcome second = fillWithFailure(1L << 40);
            const bool good = (first.result == 0 || first.result == 4 || first.result == 6) &&
                              second.result == 0 && !::testing::Test::HasFailure() &&
                              textsOf(second.bytes) == package_.textsOf(package_.stated().members);
            std::_Exit(good ? first.failed ? 0 : 100 : 1);
          }
          int status = 0;
          ::waitpid(child, &status, 0);
          failed = status == 0;
          if (!failed && (!WIFEXITED(status) || WEXITSTATUS(status) != 100)) {
            std::fprintf(stderr, "allocation %ld: wait status %d\n", index, status);
            std::_Exit(1);
          }
          if (!failed && index < 20) std::_Exit(2);
        }
        std::_Exit(0);
      },
      ::testing::ExitedWithCode(0), "^$");
}

// A document whose messages are read by the rules and printed.
std::string printedDocument() {
  const Archive unknown = object(
      3, kStorageType,
      Wire().bytes(3, "third text: ").bytes(1000, Wire().varint(1, 5).str()).group(1001, Wire()));
  return zip(
      {{"Index/Document.iwa", iwa({storage(1, {"See text: "}), comment(2, "string: "), unknown})},
       {"Index/Slide.iwa", iwa({object(4, kStorageType, Wire().varint(1, 3).raw("\x36")),
                                storage(5, {"a string: ", "b"})})}});
}

struct PrintedFill {
  int result;
  bool failed;
  std::vector<std::string> texts;
};

PrintedFill fillPrinted(const std::string& document, long index) {
  BareHost host;
  ReaderSession session(theReader().interface(), host, &host.addDocument(document));
  GuardedBuffer buffer(kBuffer);
  PrintedFill fill{0, false, {}};
  {
    const FailingAllocation failing(index, [&fill] { fill.failed = true; });
    fill.result = theReader().interface().FillBuffer(session.context(), buffer.data(),
                                                     &session.length, &session.percent, kBuffer);
  }
  if (fill.result == 0) fill.texts = textsOf(buffer.view().substr(0, session.length));
  return fill;
}

// The first document of a process fails at an allocation, the next one at the same,
// and the one behind them comes out whole.
[[noreturn]] void failTwice(const std::string& document, long index) {
  const Texts whole = {
      "See text: ", "\n", "string: ",       "third text: ", "\n1000 {\n  1: 5\n}\n1001 {\n}\n",
      "a string: ", "b",  "\ntext: \"b\"\n"};
  const auto isStated = [](int result) { return result == 0 || result == 4 || result == 6; };
  const PrintedFill first = fillPrinted(document, index);
  const PrintedFill second = fillPrinted(document, index);
  const PrintedFill third = fillPrinted(document, 1L << 40);
  const bool holds = isStated(first.result) && isStated(second.result) && third.result == 0 &&
                     third.texts == whole;
  std::_Exit(!holds ? 1 : first.failed ? 0 : 100);
}

TEST(MemoryFaultsOfPrintedMessages, CostNoLaterDocumentOfTheProcessAnything) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        // Nothing is read in this process, so that each child begins afresh.
        const std::string document = printedDocument();
        long index = 0;
        int status = 0;
        for (; status == 0; ++index) {
          const pid_t child = ::fork();
          if (child == 0) failTwice(document, index);
          ::waitpid(child, &status, 0);
        }
        if (!WIFEXITED(status) || WEXITSTATUS(status) != 100) {
          std::fprintf(stderr, "allocation %ld: wait status %d\n", index - 1, status);
          std::_Exit(1);
        }
        if (index <= 30) std::fprintf(stderr, "only %ld allocations\n", index);
        std::_Exit(index > 30 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "^$");
}

INSTANTIATE_TEST_SUITE_P(Packages, MemoryFaults,
                         ::testing::Values(Shape::kZip, Shape::kNestedZip, Shape::kDirectory,
                                           Shape::kDirectoryWithZip),
                         [](const auto& info) { return nameOf(info.param); });

// The record from the host's allocator is lost then, and nothing else.
TEST(MemoryFaultsOfAContext, LeaveAllocateContextByException) {
  const ReaderInterface& reader = theReader().interface();
  long index = 0;
  for (;; ++index) {
    BareHost host;
    std::uint32_t result = 77;
    try {
      const FailingAllocation failing(index);
      void* context = reader.AllocateContext(nullptr, nullptr, &result, host.services(), 0);
      EXPECT_NE(context, nullptr);
      reader.FreeContext(context);
      break;
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(result, 77U);
      EXPECT_EQ(host.lastError(), 0);
      EXPECT_EQ(host.liveBlocks(), 1U);
    }
  }
  EXPECT_EQ(index, 3);  // two lists and the map
}

}  // namespace
}  // namespace dorvex::testing
