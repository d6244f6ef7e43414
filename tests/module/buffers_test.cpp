// Whatever the size of the host's buffer, the stream is one and the same.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "Readers/dorvexsr/dorvexglobals.h"
#include "module/reader_module.h"
#include "support/corpus.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing::buffers_test {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kSizes[] = {51, 100, 4096, 4110, 65536, kLargeBuffer};

// The most that one buffer can come to hold.
unsigned bound(unsigned size) { return std::max(size + 14, 4110U); }

// The sizes of the buffers into which the writers' rules divide a stream.
std::vector<unsigned> expectedSizes(const std::string& stream, unsigned size) {
  std::vector<unsigned> sizes = {51};
  const auto require = [&sizes, size](unsigned needed) {
    if (sizes.back() >= size || needed > size - sizes.back()) sizes.push_back(0);
  };
  for (const std::string& text : textsOf(stream)) {
    const auto length = static_cast<unsigned>(text.size());
    for (unsigned cut = 0; cut < length; cut += 4096) {
      const unsigned piece = std::min(length - cut, 4096U);
      require(cut == 0 ? length + 13 : piece);
      sizes.back() += piece + 9;
    }
    sizes.back() += 5;
  }
  return sizes;
}

void expectSoundFills(const Pumped& pumped, const std::string& stream, unsigned size) {
  const std::vector<unsigned> sizes = expectedSizes(stream, size);
  ASSERT_EQ(pumped.fills.size(), sizes.size());
  int percent = 0;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const Fill& fill = pumped.fills[i];
    EXPECT_EQ(fill.length, sizes[i]);
    EXPECT_LE(fill.length, bound(size));
    EXPECT_TRUE(decodeTokens(fill.bytes).has_value())
        << "buffer " << i << " is no run of whole tokens";
    percent += static_cast<int>(fill.length * 100 / stream.size());
    EXPECT_EQ(fill.percent, i + 1 == sizes.size() ? 100 : percent);
  }
}

// Pumps one document with all sizes. addDocument gives a host its document.
void expectOneStream(const std::function<Stream&(BareHost&)>& addDocument) {
  const auto pumpWith = [&addDocument](BareHost& host, unsigned size) {
    host.useContainerModule(containerModulePath());
    return pump(theReader().interface(), host, &addDocument(host), size);
  };
  BareHost host;
  const Pumped whole = pumpWith(host, kLargeBuffer);
  const std::string stream = whole.stream();
  for (const unsigned size : kSizes) {
    SCOPED_TRACE("buffers of " + std::to_string(size));
    BareHost sized;
    const Pumped pumped = pumpWith(sized, size);
    ASSERT_EQ(pumped.result(), whole.result());
    if (pumped.result() != 0) continue;
    EXPECT_EQ(pumped.stream(), stream);
    expectSoundFills(pumped, stream, size);
    EXPECT_EQ(sized.liveBlocks(), 0U);
    EXPECT_EQ(sized.badFrees(), 0);
  }
}

TEST(Buffers, GiveOneStreamForTextsOfEveryLength) {
  std::vector<std::string> texts;
  for (std::size_t length = 0; length < 70000; length = length * 6 / 5 + 1)
    texts.emplace_back(length, 'x');
  for (const std::size_t length : {4082U, 4083U, 4084U, 4095U, 4096U, 4097U, 8192U, 8193U})
    texts.emplace_back(length, 'y');
  const std::string bytes = zip({{"Document.iwa", iwa({storage(1, texts)}), true}});
  expectOneStream([&bytes](BareHost& host) -> Stream& { return host.addDocument(bytes); });
}

class SampleBuffers : public ::testing::TestWithParam<std::string> {};

TEST_P(SampleBuffers, GiveOneStream) {
  const std::string bytes = readFile(fs::path(DORVEX_SAMPLES) / GetParam());
  expectOneStream([&bytes](BareHost& host) -> Stream& { return host.addDocument(bytes); });
}

INSTANTIATE_TEST_SUITE_P(Samples, SampleBuffers,
                         ::testing::Values("pages-sample.pages", "keynote-sample.key",
                                           "numbers-sample.numbers"),
                         [](const auto& info) { return testNameOf(info.param); });

class CorpusBuffers : public ::testing::TestWithParam<std::string> {};

TEST_P(CorpusBuffers, GiveOneStream) {
  expectOneStream([](BareHost& host) -> Stream& { return addCorpusDocument(host, GetParam()); });
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusBuffers, ::testing::ValuesIn(corpusDocuments()),
                         [](const auto& info) { return testNameOf(info.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusBuffers);

}  // namespace
}  // namespace dorvex::testing::buffers_test
