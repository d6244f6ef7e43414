// Real documents through the built modules, against what each must give.
#include "support/corpus.h"

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <nlohmann/json.hpp>

#include "Readers/dorvexsr/dorvexglobals.h"
#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing::corpus_test {
namespace {

using nlohmann::json;

const json& allExpected() {
  static const json all = [] {
    json merged = json::object();
    for (const auto& file : corpusExpectations()) merged.update(json::parse(readFile(file)));
    return merged;
  }();
  return all;
}

const json& expectedOf(const std::string& document) { return allExpected().at(document); }

// The expected texts that make tokens. An empty value makes none, although the
// expectation of one document lists it.
std::vector<std::string> tokensOf(const json& expectedTexts) {
  auto texts = expectedTexts.get<std::vector<std::string>>();
  std::erase(texts, "");
  return texts;
}

std::string sha256(std::string_view bytes) {
  std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
  unsigned size = 0;
  EVP_Digest(bytes.data(), bytes.size(), digest.data(), &size, EVP_sha256(), nullptr);
  std::string hex;
  for (unsigned i = 0; i < size; ++i) {
    constexpr char kDigits[] = "0123456789abcdef";
    hex += kDigits[digest[i] >> 4];
    hex += kDigits[digest[i] & 15];
  }
  return hex;
}

// The bytes that a read may take so that no chunk header is cut or stands at its
// end: up to the beginning of the last chunk whose header would be.
std::uint32_t alignToChunks(const Stream& stream, std::uint32_t count) {
  const std::string& bytes = stream.contents;
  const std::size_t end = std::min(stream.position + count, bytes.size());
  if (end == bytes.size()) return count;
  std::size_t header = 0;
  while (header + 4 < end) {
    const auto at = [&](std::size_t i) {
      return std::size_t{static_cast<unsigned char>(bytes[header + i])};
    };
    header += 4 + (at(1) | at(2) << 8 | at(3) << 16);
  }
  return header < end && header > stream.position
             ? static_cast<std::uint32_t>(header - stream.position)
             : count;
}

int readAligned(Stream& stream, void* buffer, std::uint32_t count) {
  return readFromMemory(stream, buffer, alignToChunks(stream, count));
}

Pumped pumpDocument(BareHost& host, const std::string& document) {
  host.useContainerModule(containerModulePath());
  return pump(theReader().interface(), host, &addCorpusDocument(host, document));
}

class Corpus : public ::testing::TestWithParam<std::string> {};

TEST_P(Corpus, GivesTheExpectedResultObjectsTextsAndStream) {
  const json& expected = expectedOf(GetParam());
  BareHost host;
  host.useContainerModule(containerModulePath());
  ReaderSession session(theReader().interface(), host, &addCorpusDocument(host, GetParam()));
  const Fill fill = session.fill(kLargeBuffer);

  ASSERT_EQ(fill.result, expected.at("result").get<int>());
  const auto* context = static_cast<const TAG_VNDORVEXGlobals*>(session.context());
  EXPECT_EQ(context->messageMap->size(), expected.value("objects", std::size_t{0}));
  EXPECT_EQ(host.openStreams(), 0U);
  EXPECT_EQ(host.loadedModules(), 0);
  if (fill.result != 0) return;
  EXPECT_EQ(fill.percent, 100);
  if (expected.contains("texts")) {
    EXPECT_EQ(textsOf(fill.bytes), tokensOf(expected.at("texts")));
  }
  EXPECT_EQ(fill.bytes.size(), expected.at("stream_bytes").get<std::size_t>());
  EXPECT_EQ(sha256(fill.bytes), expected.at("stream_sha256").get<std::string>());
}

TEST_P(Corpus, GivesTheSameWhetherReadsEndInsideAChunkHeaderOrNot) {
  BareHost plain;
  BareHost aligned;
  aligned.onOpenFile = [](Stream& stream) { stream.onRead = readAligned; };
  const Pumped whole = pumpDocument(plain, GetParam());
  const Pumped shortened = pumpDocument(aligned, GetParam());
  EXPECT_EQ(whole.result(), shortened.result());
  EXPECT_EQ(whole.stream(), shortened.stream());
}

TEST_P(Corpus, GivesTheSameThroughTheEmulatedContainer) {
  BareHost emulating;
  BareHost real;
  const Pumped expected = pumpDocument(real, GetParam());
  const Pumped emulated =
      pump(theReader().interface(), emulating, &addCorpusDocument(emulating, GetParam()));
  EXPECT_EQ(emulated.result(), expected.result());
  EXPECT_EQ(emulated.stream(), expected.stream());
}

INSTANTIATE_TEST_SUITE_P(Documents, Corpus, ::testing::ValuesIn(corpusDocuments()),
                         [](const auto& info) { return testNameOf(info.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);

TEST(CorpusFolder, HoldsADocumentForEachExpectation) {
  if (!hasCorpus()) GTEST_SKIP() << corpusIsAbsent();
  std::vector<std::string> names;
  for (const auto& [name, expected] : allExpected().items()) names.push_back(name);
  EXPECT_EQ(names, corpusDocuments());
}

}  // namespace
}  // namespace dorvex::testing::corpus_test
