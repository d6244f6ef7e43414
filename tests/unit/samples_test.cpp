#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "Readers/dorvexsr/dorvexsr.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "samples/sample_writer.h"
#include "support/corpus.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

samples::Sample describe(const std::string& name) {
  return samples::makeSample(readFile(fs::path(DORVEX_SAMPLES) / name));
}

// Releases of Snappy compress otherwise: what counts is what comes out.
std::string uncompressed(const Member& member) {
  using namespace vn::iwork13;
  if (!member.name.ends_with(".iwa")) return member.contents;
  std::string_view rest = member.contents;
  std::vector<char> stream;
  while (rest.size() >= kChunkHeaderSize) {
    const auto length = getChunkLength(reinterpret_cast<const unsigned char*>(rest.data()));
    rest.remove_prefix(kChunkHeaderSize);
    appendUncompressedChunk(rest.data(), length, stream);
    rest.remove_prefix(length);
  }
  return {stream.begin(), stream.end()};
}

using Texts = std::vector<std::string>;

Texts textsOfDocument(BareHost& host, Stream& document) {
  ReaderInterface reader;
  dorvexGetReaderInterface(&reader);
  const Pumped pumped = pump(reader, host, &document);
  EXPECT_EQ(pumped.result(), 0);
  return textsOf(pumped.stream());
}

class Samples : public ::testing::TestWithParam<const char*> {};

TEST_P(Samples, AreWhatTheirDescriptionsGive) {
  const samples::Sample sample = describe(GetParam());
  const auto committed = unzip(readFile(fs::path(DORVEX_SAMPLES) / sample.fileName));
  ASSERT_EQ(committed.size(), sample.members.size());
  for (std::size_t i = 0; i < committed.size(); ++i) {
    EXPECT_EQ(committed[i].name, sample.members[i].name);
    EXPECT_EQ(uncompressed(committed[i]), uncompressed(sample.members[i])) << committed[i].name;
  }
}

TEST_P(Samples, GiveTheSameTextsAsADirectoryPackage) {
  samples::Sample sample = describe(GetParam());
  // A directory is read whole, so what a zip passes over goes first.
  std::erase_if(sample.members, [](const Member& member) {
    return member.name.starts_with("Index/ViewState") ||
           member.name.starts_with("Index/MasterSlide");
  });
  const TemporaryDirectory folder;
  writeDirectory(folder.path(), sample.members);
  BareHost host;
  const Texts fromDirectory = textsOfDocument(
      host, host.addDirectoryDocument(
                (folder.path() / "Metadata" / "BuildVersionHistory.plist").string()));
  EXPECT_EQ(fromDirectory, textsOfDocument(host, host.addDocument(zip(sample.members))));
  EXPECT_FALSE(fromDirectory.empty());
}

INSTANTIATE_TEST_SUITE_P(Descriptions, Samples, ::testing::ValuesIn(samples::kDescriptions),
                         [](const auto& info) { return testNameOf(info.param); });

Texts textsOfSample(const std::string& name) {
  BareHost host;
  return textsOfDocument(host, host.addDocument(readFile(fs::path(DORVEX_SAMPLES) / name)));
}

TEST(NumbersSample, GivesItsTextsInAscendingOrderOfTheObjects) {
  EXPECT_EQ(textsOfSample("numbers-sample.numbers"),
            (Texts{"Lamp oil, by the gallon", "Counted on the last day of the month",
                   "Order more when the red mark shows.", "The cask behind the stairs is vinegar.",
                   "Carried forward", "Month", "Burnt", "Left", "January", "February", "spilt",
                   "not used any more", "Spilt on the stairs:\nmind the third one."}));
}

TEST(KeynoteSample, GivesTitlesBodiesNotesAndComments) {
  const Texts texts = textsOfSample("keynote-sample.key");
  EXPECT_EQ(texts.front(), "A Pot of Tea");
  EXPECT_NE(std::ranges::find(texts, "Pause. Let them smell it."), texts.end());
  EXPECT_NE(std::ranges::find(texts, "Say \"four\", not \"4\": it's a talk, not a table."),
            texts.end());
  EXPECT_EQ(std::ranges::find(texts, "A master slide is not read."), texts.end());
  EXPECT_EQ(texts.back(), "Lapsang souchong");
}

TEST(PagesSample, GivesALongBodyAsOneText) {
  const Texts texts = textsOfSample("pages-sample.pages");
  EXPECT_GT(texts.front().size(), 4096U);
  EXPECT_TRUE(texts.front().starts_with("The Light on Tallow Point\n\n"));
  EXPECT_TRUE(texts.front().ends_with("quiet night\xE2\x80\xA6 \xF0\x9F\x8D\xB5\xEF\xBF\xBC"));
  EXPECT_EQ(texts.back(), "struck out in pencil");
}

}  // namespace
}  // namespace dorvex::testing
