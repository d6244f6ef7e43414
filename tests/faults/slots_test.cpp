// Every slot of the host fails once, at each call that a document makes of it.
#include <gtest/gtest.h>

#include "faults/packages.h"
#include "module/reader_module.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

using Texts = std::vector<std::string>;

class SlotFaults : public ::testing::TestWithParam<Shape> {
 protected:
  SlotFaults() : package_(GetParam()) {}

  // Runs the reader and compares everything that the host sees. False when the
  // document never comes to the faulty call.
  bool runWith(const Faults& faults) {
    const StatedRun stated = package_.stated(faults);
    const std::size_t descriptors = openDescriptors();
    BareHost host;
    if (faults.fault) host.failAt(faults.fault->slot, faults.fault->call, faults.fault->status);
    int streams = 0;
    if (faults.nullSlot) {
      host.onOpenFile = [&](Stream& stream) {
        if (++streams == faults.nullSlot->stream) removeSlot(stream, faults.nullSlot->which);
      };
    }
    ReaderSession session(theReader().interface(), host, &package_.addTo(host));
    const Fill first = session.fill(kBuffer);
    EXPECT_EQ(host.log(), stated.log);
    EXPECT_EQ(first.result, stated.result);
    EXPECT_EQ(first.length == static_cast<unsigned>(ReaderSession::kUntouched), first.result != 0);
    if (first.result == 0) {
      EXPECT_EQ(textsOf(first.bytes), package_.textsOf(stated.members));
    }
    expectAllReturned(host, stated, descriptors);
    expectStatedSecondCall(session, stated);
    session.free();
    EXPECT_EQ(host.liveBlocks(), 0U);
    EXPECT_EQ(host.badFrees(), 0);
    return stated.faultHappened;
  }

  // Each call of the slot fails in turn. Gives the number of calls.
  int failEachCall(Slot slot, int status = VN_CONTAINER_DAMAGED) {
    for (int call = 1;; ++call) {
      SCOPED_TRACE("call " + std::to_string(call) + ", status " + std::to_string(status));
      if (!runWith({.fault = Fault{slot, call, status}})) return call - 1;
    }
  }

  int removeFromEachStream(NullSlot::Which which) {
    for (int stream = 1;; ++stream) {
      SCOPED_TRACE("stream " + std::to_string(stream));
      if (!runWith({.nullSlot = NullSlot{which, stream}})) return stream - 1;
    }
  }

  bool isDirectory() const {
    return GetParam() == Shape::kDirectory || GetParam() == Shape::kDirectoryWithZip;
  }

  Package package_;

 private:
  static void removeSlot(Stream& stream, NullSlot::Which which) {
    switch (which) {
      case NullSlot::kOpen:
        stream.Open = nullptr;
        break;
      case NullSlot::kSeek:
        stream.Seek = nullptr;
        break;
      case NullSlot::kTell:
        stream.Tell = nullptr;
        break;
      case NullSlot::kClose:
        stream.Close = nullptr;
        break;
    }
  }

  static void expectAllReturned(BareHost& host, const StatedRun& stated, std::size_t descriptors) {
    EXPECT_EQ(host.openStreams(), stated.unclosed);
    host.forgetStreams();
    EXPECT_EQ(host.openContainers(), 0);
    EXPECT_EQ(host.loadedModules(), 0);
    EXPECT_EQ(host.logged("Close document"), 0);
    EXPECT_EQ(host.lastError(), 0);
    EXPECT_EQ(host.liveBlocks(), 1U);           // the record of the context
    EXPECT_EQ(openDescriptors(), descriptors);  // no directory is left open
  }

  // After a failure that left objects the pump reports an empty success, after
  // one that left none it starts over: with a host that fails no more.
  void expectStatedSecondCall(ReaderSession& session, const StatedRun& stated) {
    const Fill second = session.fill(kBuffer);
    EXPECT_EQ(second.result, 0);
    EXPECT_EQ(second.percent, 100);
    const Texts expected =
        stated.members.empty() ? package_.textsOf(package_.stated().members) : Texts{};
    EXPECT_EQ(stated.members.empty() ? textsOf(second.bytes) : textsOf(prologue() + second.bytes),
              expected);
  }
};

TEST_P(SlotFaults, MakeNoDifferenceWhereThereAreNone) {
  EXPECT_FALSE(runWith({}));
  EXPECT_EQ(package_.stated().result, 0);
}

TEST_P(SlotFaults, OfLoadDllEndTheDocument) {
  EXPECT_EQ(failEachCall(Slot::kLoadDll), GetParam() == Shape::kDirectory   ? 0
                                          : GetParam() == Shape::kNestedZip ? 2
                                                                            : 1);
}

TEST_P(SlotFaults, OfGetDllSymbolEndTheDocumentAndGiveTheModuleBack) {
  EXPECT_EQ(failEachCall(Slot::kGetDllSymbol) > 0, GetParam() != Shape::kDirectory);
}

TEST_P(SlotFaults, OfOpenFileAreOutOfMemory) {
  EXPECT_EQ(failEachCall(Slot::kOpenFile), GetParam() == Shape::kNestedZip ? 5 : 3);
}

TEST_P(SlotFaults, OfOpenEndAZipAndAreIgnoredInADirectory) {
  EXPECT_GT(failEachCall(Slot::kOpen), 0);
}

TEST_P(SlotFaults, OfOpenContainerEndTheDocument) {
  EXPECT_EQ(failEachCall(Slot::kOpenContainer) > 0, GetParam() != Shape::kDirectory);
}

TEST_P(SlotFaults, OfTheContainersCallsEndTheDocumentByTheNumberOfTheirClass) {
  std::vector<int> numbers = {-1, 50, 1000, INT32_MIN, INT32_MAX};
  for (int number = 1; number <= 49; ++number) numbers.push_back(number);
  for (const int number : numbers) {
    for (const Slot slot : {Slot::kGetEntryInfo, Slot::kExtractEntry})
      EXPECT_EQ(failEachCall(slot, number) > 0, GetParam() != Shape::kDirectory);
  }
}

TEST_P(SlotFaults, OfANullOpenEndAZipAndAreIgnoredInADirectory) {
  EXPECT_GT(removeFromEachStream(NullSlot::kOpen), 0);
}

TEST_P(SlotFaults, OfANullSeekOrTellEmptyAStreamOfADirectoryAndNothingElse) {
  EXPECT_GT(removeFromEachStream(NullSlot::kSeek), 0);
  EXPECT_GT(removeFromEachStream(NullSlot::kTell), 0);
}

TEST_P(SlotFaults, OfANullCloseLeaveTheStreamToTheHost) {
  EXPECT_GT(removeFromEachStream(NullSlot::kClose), 0);
}

INSTANTIATE_TEST_SUITE_P(Packages, SlotFaults,
                         ::testing::Values(Shape::kZip, Shape::kNestedZip, Shape::kDirectory,
                                           Shape::kDirectoryWithZip),
                         [](const auto& info) { return nameOf(info.param); });

// --- The allocator ---

std::string documentOf(const Texts& texts) {
  return zip({{"Index/Document.iwa", iwa({storage(1, texts)})}});
}

TEST(AllocFaults, OfTheContextGiveNullAndTheNumberInLastError) {
  BareHost host;
  host.failAt(Slot::kAlloc, 1);
  std::uint32_t result = 77;
  EXPECT_EQ(theReader().interface().AllocateContext(nullptr, nullptr, &result, host.services(), 0),
            nullptr);
  EXPECT_EQ(host.lastError(), 2);
  EXPECT_EQ(result, 77U);
  EXPECT_EQ(host.liveBlocks(), 0U);
}

// With a buffer of 100 bytes each text of 90 takes one overflow buffer and its
// node: two allocations. A node that cannot be had gives its buffer back; what
// was staged before stays on the list and is drained, the last of it empty.
TEST(AllocFaults, OfTheOutputAreGeneralFailuresAndLoseNoBlock) {
  const Texts texts(5, std::string(90, 'x'));
  const int allocations = 2 * static_cast<int>(texts.size());
  for (int call = 1; call <= allocations + 1; ++call) {
    SCOPED_TRACE(call);
    BareHost host;
    ReaderSession session(theReader().interface(), host, &host.addDocument(documentOf(texts)));
    host.failAt(Slot::kAlloc, 1 + call);
    const Fill fill = session.fill(100);
    EXPECT_EQ(fill.result, call <= allocations ? 6 : 0);
    EXPECT_EQ(host.openStreams() + static_cast<std::size_t>(host.openContainers()), 0U);
    const int staged = std::min((call - 1) / 2, static_cast<int>(texts.size()));
    EXPECT_EQ(host.liveBlocks(), 1U + 2 * static_cast<unsigned>(staged));
    session.percent = 0;
    for (int left = staged; left > 0; --left) {
      const Fill drained = session.fill(100);
      EXPECT_EQ(drained.result, 0);
      const bool neverClosed = left == 1 && call <= allocations;
      EXPECT_EQ(drained.bytes, neverClosed ? "" : textTokens(texts[0]));
    }
    EXPECT_EQ(session.fill(100).length, 0U);
    session.free();
    EXPECT_EQ(host.liveBlocks(), 0U);
    EXPECT_EQ(host.badFrees(), 0);
  }
}

TEST(ContainerFaults, OfACountOfNoneAreAnEmptyDocument) {
  for (const int count : {0, -1, INT32_MIN}) {
    BareHost host;
    host.entryCount = count;
    EXPECT_EQ(pump(theReader().interface(), host, &host.addDocument(documentOf({"x"}))).result(),
              4);
    EXPECT_EQ(host.openContainers(), 0);
    EXPECT_EQ(host.loadedModules(), 0);
  }
}

}  // namespace
}  // namespace dorvex::testing
