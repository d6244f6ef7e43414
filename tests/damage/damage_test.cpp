// Damaged documents through the whole module: a stated return value every time,
// or one of the loops that are stated to have no end.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "damage/readings.h"
#include "damage/variants.h"
#include "module/reader_module.h"
#include "support/corpus.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

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
  return decodeTokens(pumped.stream()) ? result : kBadOutput;
}

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

// Of what a read takes, a hundred times.
constexpr std::chrono::seconds kPatience{3};

class Damage : public ::testing::TestWithParam<fs::path> {};

TEST_P(Damage, GivesAStatedResultOrALoopThatIsStatedNotToEnd) {
  const Variants variants(GetParam());
  theReader();  // before the processes that read
  OutcomeCounts counts;
  readVariants(variants, readWhole, kPatience, [&](std::uint64_t variant, int outcome) {
    counts.add(outcome);
    EXPECT_NE(outcome, kCrashed) << "variant " << variant;
    EXPECT_NE(outcome, kUnstated) << "variant " << variant;
    EXPECT_NE(outcome, kLeftOpen) << "variant " << variant;
    EXPECT_NE(outcome, kBadOutput) << "variant " << variant;
    if (outcome == kEndless) {
      EXPECT_TRUE(mayNeverEnd(variants.make(variant))) << "variant " << variant;
    }
  });
  counts.print(GetParam());
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
