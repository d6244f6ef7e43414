// What the host gets from the pump of the built module, document by document and
// failure by failure.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "Readers/dorvexsr/dorvexglobals.h"
#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"
#include "support/token_decoder.h"

namespace dorvex::testing::fill_buffer_test {
namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

enum Result : int { kSuccess = 0, kOutOfMemory = 2, kBadInput = 4, kFailure = 6 };

Member document(const std::vector<Archive>& archives) {
  return {"Index/Document.iwa", iwa(archives)};
}

std::string zipOf(const std::vector<Archive>& archives) { return zip({document(archives)}); }

// A reader that has been given one document.
class FillBuffer : public ::testing::Test {
 protected:
  ReaderSession& open(const std::string& bytes) { return open(host_.addDocument(bytes)); }
  ReaderSession& open(Stream& stream) {
    session_ = std::make_unique<ReaderSession>(theReader().interface(), host_, &stream);
    return *session_;
  }
  ReaderSession& openDirectory() {
    return open(host_.addDirectoryDocument((folder_.path() / "Index" / "Document.iwa").string()));
  }

  // A first call that fails writes neither length nor percent, and leaves the
  // host with nothing open.
  void expectFailure(ReaderSession& session, int result) {
    const Fill fill = session.fill(kLargeBuffer);
    EXPECT_EQ(fill.result, result);
    EXPECT_EQ(fill.length, static_cast<unsigned>(ReaderSession::kUntouched));
    EXPECT_EQ(fill.percent, ReaderSession::kUntouched);
    expectNothingOpen();
  }

  void expectNothingOpen() const {
    EXPECT_EQ(host_.openStreams(), 0U);
    EXPECT_EQ(host_.openContainers(), 0);
    EXPECT_EQ(host_.loadedModules(), 0);
    EXPECT_EQ(host_.logged("Close document"), 0);
    EXPECT_EQ(host_.lastError(), 0);
  }

  BareHost host_;
  TemporaryDirectory folder_;
  std::unique_ptr<ReaderSession> session_;
};

// ---------------------------------------------------------------------------
// Documents

TEST_F(FillBuffer, GivesThePrologueAndTheTokensOfADocumentWithText) {
  const Fill fill = open(zipOf({storage(1, {"Tea", "for two"}), comment(2, "note")})).fill(1000);
  EXPECT_EQ(fill.result, kSuccess);
  EXPECT_EQ(fill.percent, 100);
  EXPECT_EQ(fill.bytes,
            prologue() + textTokens("Tea") + textTokens("for two") + textTokens("note"));
  expectNothingOpen();
}

TEST_F(FillBuffer, GivesThePrologueAloneForADocumentWithoutText) {
  const Fill fill = open(zipOf({storage(1, {})})).fill(1000);
  EXPECT_EQ(fill.result, kSuccess);
  EXPECT_EQ(fill.length, 51U);
  EXPECT_EQ(fill.percent, 100);
  EXPECT_EQ(fill.bytes, prologue());
}

TEST_F(FillBuffer, GivesNothingMoreAfterTheEndAnyNumberOfTimes) {
  ReaderSession& session = open(zipOf({storage(1, {"x"})}));
  EXPECT_EQ(session.fill(1000).percent, 100);
  for (int i = 0; i < 3; ++i) {
    const Fill fill = session.fill(1000);
    EXPECT_EQ(fill.result, kSuccess);
    EXPECT_EQ(fill.length, 0U);
    EXPECT_EQ(fill.percent, 100);
  }
}

TEST_F(FillBuffer, ReadsTheDocumentInTheFirstCallAlone) {
  ReaderSession& session = open(zipOf({storage(1, {std::string(1000, 'x')})}));
  EXPECT_TRUE(host_.log().empty());  // nothing before the first call
  session.fill(100);
  const std::size_t calls = host_.log().size();
  while (session.percent != 100) session.fill(100);
  EXPECT_EQ(host_.log().size(), calls);
}

TEST_F(FillBuffer, ReportsBadInputForADocumentWithoutStreams) {
  expectFailure(open(zip({{"Metadata/x.plist", "x"}})), kBadInput);
  expectFailure(open(zip({})), kBadInput);
  expectFailure(open(zipOf({object(1, kUnknownType, "x")})), kBadInput);
  expectFailure(open(zip({{"Index/Document.iwa", damagedChunk()}})), kBadInput);
}

TEST_F(FillBuffer, ReportsBadInputForAnEmptyDirectoryAgainAndAgain) {
  ReaderSession& session = openDirectory();
  expectFailure(session, kBadInput);
  expectFailure(session, kBadInput);
}

TEST_F(FillBuffer, ReportsFailureForAPackageThatCannotBeOpened) {
  expectFailure(open("no zip"), kFailure);
  expectFailure(open(host_.addDirectoryDocument("/nowhere/at/all/Index/Document.iwa")), kFailure);
  expectFailure(open(host_.addDirectoryDocument("Index/Document.iwa")), kFailure);  // an empty root
  writeDirectory(folder_.path(), {{"Index", "a plain file"}});
  expectFailure(openDirectory(), kFailure);
}

TEST_F(FillBuffer, ReportsFailureWithoutTheContainerModule) {
  for (const Slot slot : {Slot::kLoadDll, Slot::kGetDllSymbol, Slot::kOpenContainer}) {
    host_.failAt(slot, host_.calls(slot) + 1);
    expectFailure(open(zipOf({storage(1, {"x"})})), kFailure);
  }
}

TEST_F(FillBuffer, ReportsOutOfMemoryForAMemberOfADirectoryThatCannotBeOpened) {
  writeDirectory(folder_.path(), {document({storage(1, {"x"})})});
  host_.failAt(Slot::kOpenFile, 1);
  expectFailure(openDirectory(), kOutOfMemory);
}

TEST_F(FillBuffer, ReportsFailureForACorruptStreamOfADirectory) {
  writeDirectory(folder_.path(), {{"Index/Document.iwa", damagedChunk()}});
  expectFailure(openDirectory(), kFailure);
}

TEST_F(FillBuffer, SkipsACorruptStreamOfAZip) {
  const Fill fill = open(zip({{"Index/Document.iwa", damagedChunk()},
                              {"Index/Slide.iwa", iwa({storage(1, {"rest"})})}}))
                        .fill(1000);
  EXPECT_EQ(fill.result, kSuccess);
  EXPECT_EQ(textsOf(fill.bytes), Texts{"rest"});
}

TEST_F(FillBuffer, ReportsTheStatusOfTheContainerByItsClass) {
  const std::pair<int, int> results[] = {{8, kFailure},  {33, kFailure},    {21, kFailure},
                                         {43, kFailure}, {2, kOutOfMemory}, {4, kBadInput},
                                         {6, kFailure},  {-1, kFailure},    {1000, kFailure}};
  for (const Slot slot : {Slot::kGetEntryInfo, Slot::kExtractEntry}) {
    for (const auto& [status, result] : results) {
      host_.failAt(slot, host_.calls(slot) + 1, status);
      expectFailure(open(zipOf({storage(1, {"x"})})), result);
    }
  }
}

TEST_F(FillBuffer, ReportsOutOfMemoryWithoutAScratchStream) {
  host_.failAt(Slot::kOpenFile, 1);
  expectFailure(open(zipOf({storage(1, {"x"})})), kOutOfMemory);
}

TEST_F(FillBuffer, ReportsBadInputForAScratchStreamThatDoesNotOpen) {
  host_.failAt(Slot::kOpen, 1);
  expectFailure(open(zipOf({storage(1, {"x"})})), kBadInput);
  host_.onOpenFile = [](Stream& stream) { stream.Open = nullptr; };
  expectFailure(open(zipOf({storage(1, {"x"})})), kBadInput);
}

TEST_F(FillBuffer, LetsNoExceptionOfAnyTypeThrough) {
  host_.onOpenFile = [](Stream& stream) {
    stream.onRead = [](Stream&, void*, std::uint32_t) -> int { throw 42; };
  };
  expectFailure(open(zipOf({storage(1, {"x"})})), kFailure);
  writeDirectory(folder_.path(), {document({storage(1, {"x"})})});
  host_.onOpenFile = [](Stream& stream) {
    stream.onRead = [](Stream&, void*, std::uint32_t) -> int { throw std::bad_alloc(); };
  };
  expectFailure(openDirectory(), kFailure);
}

// ---------------------------------------------------------------------------
// Overflow and progress

TEST_F(FillBuffer, HandsOverOneStoredBufferACall) {
  const Texts texts = {std::string(90, 'a'), std::string(90, 'b'), std::string(90, 'c')};
  ReaderSession& session = open(zipOf({storage(1, texts)}));
  session.percent = 0;
  const Fill first = session.fill(100);
  EXPECT_EQ(first.bytes, prologue());
  EXPECT_EQ(first.length, 51U);
  const unsigned total = 51 + 3 * 104;
  EXPECT_EQ(first.percent, static_cast<int>(51 * 100 / total));
  int percent = first.percent;
  for (const std::string& text : texts) {
    const Fill fill = session.fill(100);
    EXPECT_EQ(fill.bytes, textTokens(text));
    percent += static_cast<int>(104 * 100 / total);
    EXPECT_EQ(fill.percent, text == texts.back() ? 100 : percent);
  }
  EXPECT_LT(percent, 100);  // truncation has left the running sum below the end
}

TEST_F(FillBuffer, AddsToThePercentThatTheHostKeeps) {
  ReaderSession& session = open(zipOf({storage(1, Texts(4, std::string(90, 'x')))}));
  session.fill(100);
  const int increment = 104 * 100 / (51 + 4 * 104);
  for (int call = 0; call < 3; ++call) {
    session.percent = 0;
    EXPECT_EQ(session.fill(100).percent, increment);
  }
  session.percent = 0;
  EXPECT_EQ(session.fill(100).percent, 100);
}

TEST_F(FillBuffer, DoesNotTestTheSizeOfALaterCall) {
  ReaderSession& session = open(zipOf({storage(1, {std::string(90, 'x')})}));
  session.fill(100);
  const Fill fill = session.fill(1);
  EXPECT_EQ(fill.bytes, textTokens(std::string(90, 'x')));
  EXPECT_EQ(fill.percent, 100);
}

TEST_F(FillBuffer, WritesThePrologueIntoABufferOfAnySize) {
  ReaderSession& session = open(zipOf({storage(1, {"x"})}));
  session.percent = 0;
  EXPECT_EQ(session.fill(0).bytes, prologue());  // the host's memory is larger
  EXPECT_EQ(session.fill(0).bytes, textTokens("x"));
  EXPECT_EQ(session.percent, 100);
}

TEST_F(FillBuffer, FreesEveryBufferThatItHandsOver) {
  ReaderSession& session = open(zipOf({storage(1, Texts(50, std::string(90, 'x')))}));
  session.percent = 0;
  while (session.percent != 100) ASSERT_EQ(session.fill(100).result, kSuccess);
  EXPECT_EQ(host_.liveBlocks(), 1U);  // the record
  session.free();
  EXPECT_EQ(host_.liveBlocks(), 0U);
  EXPECT_EQ(host_.badFrees(), 0);
}

TEST_F(FillBuffer, PassesAMemoryFailureOfTheOutputOffAsAGeneralOne) {
  ReaderSession& session = open(zipOf({storage(1, Texts(4, std::string(90, 'x')))}));
  host_.failAt(Slot::kAlloc, host_.calls(Slot::kAlloc) + 1);
  const Fill fill = session.fill(100);
  EXPECT_EQ(fill.result, kFailure);
  EXPECT_EQ(fill.length, static_cast<unsigned>(ReaderSession::kUntouched));
}

TEST_F(FillBuffer, SurvivesAFailureOfEveryAllocationInTurn) {
  const std::string bytes = zipOf({storage(1, Texts(4, std::string(90, 'x')))});
  for (int call = 1; call <= 8; ++call) {
    ReaderSession& session = open(bytes);
    host_.failAt(Slot::kAlloc, host_.calls(Slot::kAlloc) + call);
    EXPECT_EQ(session.fill(100).result, kFailure) << call;
    session.free();
    EXPECT_EQ(host_.badFrees(), 0);
  }
  ReaderSession& session = open(bytes);
  host_.failAt(Slot::kAlloc, host_.calls(Slot::kAlloc) + 9);
  EXPECT_EQ(session.fill(100).result, kSuccess);
}

// ---------------------------------------------------------------------------
// After a failure

TEST_F(FillBuffer, StartsOverAfterAFailureThatLeftTheMapEmpty) {
  ReaderSession& session = open(zipOf({storage(1, {"second attempt"})}));
  host_.failAt(Slot::kLoadDll, 1);
  expectFailure(session, kFailure);
  const Fill fill = session.fill(1000);
  EXPECT_EQ(fill.result, kSuccess);
  EXPECT_EQ(fill.bytes, prologue() + textTokens("second attempt"));
}

TEST_F(FillBuffer, ReportsAnEmptySuccessAfterAFailureThatLeftObjects) {
  ReaderSession& session = open(
      zip({document({storage(1, {"forgotten"})}), {"Index/Slide.iwa", iwa({storage(2, {"x"})})}}));
  host_.failAt(Slot::kExtractEntry, 2);
  expectFailure(session, kFailure);
  const Fill fill = session.fill(1000);
  EXPECT_EQ(fill.result, kSuccess);
  EXPECT_EQ(fill.length, 0U);
  EXPECT_EQ(fill.percent, 100);
}

TEST_F(FillBuffer, DrainsWhatASweepThatFailedHadStaged) {
  ReaderSession& session = open(zipOf({storage(1, Texts(4, std::string(90, 'x')))}));
  // Each overflow buffer takes two allocations: the fifth is the third buffer's.
  host_.failAt(Slot::kAlloc, host_.calls(Slot::kAlloc) + 5);
  EXPECT_EQ(session.fill(100).result, kFailure);
  session.percent = 0;
  const Fill first = session.fill(100);
  EXPECT_EQ(first.result, kSuccess);
  EXPECT_EQ(first.bytes, textTokens(std::string(90, 'x')));
  const Fill second = session.fill(100);
  EXPECT_EQ(second.result, kSuccess);
  EXPECT_EQ(second.length, 0U);  // never closed, so of size 0
  EXPECT_EQ(second.percent, 100);
}

TEST_F(FillBuffer, LeavesTheContextGoodForFreeingAfterAnyFailure) {
  ReaderSession& session = open("no zip");
  expectFailure(session, kFailure);
  session.free();
  EXPECT_EQ(host_.liveBlocks(), 0U);
  EXPECT_EQ(host_.badFrees(), 0);
}

// ---------------------------------------------------------------------------
// Whole packages

TEST_F(FillBuffer, ReadsADirectoryPackage) {
  writeDirectory(folder_.path(), {document({storage(1, {"first"})}),
                                  {"Index/Tables/Tile.iwa", iwa({storage(2, {"second"})})},
                                  {"Metadata/BuildVersionHistory.plist", ""}});
  const Fill fill = openDirectory().fill(1000);
  EXPECT_EQ(textsOf(fill.bytes), (Texts{"first", "second"}));
  const Fill byHistory =
      open(host_.addDirectoryDocument(
               (folder_.path() / "Metadata" / "BuildVersionHistory.plist").string()))
          .fill(1000);
  EXPECT_EQ(byHistory.bytes, fill.bytes);
  expectNothingOpen();
}

TEST_F(FillBuffer, ReadsANestedIndexZip) {
  const std::string inner = zip({{"Document.iwa", iwa({storage(1, {"inner"})})}});
  EXPECT_EQ(textsOf(open(zip({{"Index.zip", inner}})).fill(1000).bytes), Texts{"inner"});
  writeDirectory(folder_.path(), {{"Index.zip", inner}});
  EXPECT_EQ(textsOf(openDirectory().fill(1000).bytes), Texts{"inner"});
}

TEST_F(FillBuffer, ReadsThroughTheContainerModuleBesideIt) {
  host_.useContainerModule(containerModulePath());
  std::vector<Member> members = {
      document({storage(1, {std::string(20000, 'x')})}),
      {"Index.zip", zip({{"Document.iwa", iwa({storage(2, {"nested"})}), true}})}};
  members[0].deflated = true;
  const Fill fill = open(zip(members)).fill(kLargeBuffer);
  EXPECT_EQ(fill.result, kSuccess);
  EXPECT_EQ(textsOf(fill.bytes), (Texts{std::string(20000, 'x'), "nested"}));
  expectNothingOpen();
}

TEST_F(FillBuffer, ReadsAnyDocumentThroughThePagesRegistry) {
  // 7 is a placeholder of each application; 1 and 2 belong to the others alone.
  const Fill fill =
      open(zipOf({object(1, 1, "x"), object(2, 2, "x"), object(3, 7, ""), storage(4, {"text"})}))
          .fill(1000);
  EXPECT_EQ(textsOf(fill.bytes), Texts{"text"});
  EXPECT_EQ(static_cast<const TAG_VNDORVEXGlobals*>(session_->context())->messageMap->size(), 2U);
}

TEST_F(FillBuffer, PumpsTwoDocumentsInTurns) {
  BareHost other;
  ReaderSession& first = open(zipOf({storage(1, Texts(3, std::string(90, 'a')))}));
  ReaderSession second(theReader().interface(), other,
                       &other.addDocument(zipOf({storage(1, Texts(3, std::string(90, 'b')))})));
  std::string streams[2];
  for (int call = 0; call < 4; ++call) {
    streams[0] += first.fill(100).bytes;
    streams[1] += second.fill(100).bytes;
  }
  EXPECT_EQ(textsOf(streams[0]), Texts(3, std::string(90, 'a')));
  EXPECT_EQ(textsOf(streams[1]), Texts(3, std::string(90, 'b')));
}

}  // namespace
}  // namespace dorvex::testing::fill_buffer_test
