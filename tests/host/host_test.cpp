#include "dorvex/host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ranges>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "fake_document.h"

namespace dorvex::host_test {
namespace {

using testing::fakeReader;
using testing::readTexts;
using testing::script;
using Texts = std::vector<std::string>;

static_assert(std::ranges::input_range<TextRange>);

const std::string kTwoTexts = "text one\nbuffer\ntext two\n";

Host host() { return Host(fakeReader(Isolation::kInProcess)); }

TEST(Host, RefusesABufferSizeThatTheReaderCannotWorkWith) {
  HostOptions options = fakeReader(Isolation::kInProcess);
  for (const std::uint32_t size : {0u, 50u, 16u * 1024 * 1024 + 1}) {
    options.bufferSize = size;
    EXPECT_THROW(Host{options}, std::invalid_argument) << size;
  }
  options.bufferSize = 51;
  EXPECT_NO_THROW(Host{options});
}

TEST(Host, GivesAResultInsteadOfAnErrorForADocumentThatIsNotThere) {
  const auto reading = readTexts(host(), Input::path("/no/such/document"));
  EXPECT_EQ(reading.result.failure, Failure::kNoSuchFile);
  EXPECT_EQ(describe(reading.result), "No such file or directory");
}

TEST(Host, ReadsAStream) {
  std::istringstream stream(kTwoTexts);
  EXPECT_EQ(readTexts(host(), Input::stream(stream)).texts, (Texts{"one", "two"}));
}

TEST(Host, ReadsTheSameDocumentAgain) {
  const Host reader = host();
  EXPECT_EQ(readTexts(reader, script(kTwoTexts)).texts, (Texts{"one", "two"}));
  EXPECT_EQ(readTexts(reader, script(kTwoTexts)).texts, (Texts{"one", "two"}));
}

TEST(Host, ServesSeveralThreads) {
  const Host reader(fakeReader(Isolation::kWorkers));
  std::vector<std::thread> threads;
  std::vector<Texts> texts(8);
  for (Texts& mine : texts) {
    threads.emplace_back([&] { mine = readTexts(reader, script(kTwoTexts)).texts; });
  }
  for (std::thread& thread : threads) thread.join();
  for (const Texts& mine : texts) EXPECT_EQ(mine, (Texts{"one", "two"}));
}

TEST(Document, GivesItsTextsAsARange) {
  Document document = host().open(script(kTwoTexts));
  Texts texts;
  for (const std::string& text : document.texts()) texts.push_back(text);
  EXPECT_EQ(texts, (Texts{"one", "two"}));
  EXPECT_EQ(document.result().status, Status::kOk);
}

TEST(Document, WorksWithTheStandardRanges) {
  Document document = host().open(script(kTwoTexts));
  std::size_t bytes = 0;
  std::ranges::for_each(document.texts(), [&](const std::string& text) { bytes += text.size(); });
  EXPECT_EQ(bytes, 6u);
}

TEST(Document, JoinsThePiecesOfATextAcrossBuffers) {
  const std::string piece("\0\x0A\0\0\0\x01\0\0\0x", 10);
  const std::string commands = "buffer\nraw\n" + piece + piece + std::string("\x0E\5\0\0\0", 5);
  EXPECT_EQ(readTexts(host(), script(commands)).texts, Texts{"xx"});
}

TEST(Document, GivesItsTokensBufferByBuffer) {
  Document document = host().open(script(kTwoTexts));
  std::vector<std::size_t> sizes;
  while (const auto buffer = document.nextBuffer()) sizes.push_back(buffer->size());
  EXPECT_EQ(sizes, (std::vector<std::size_t>{51 + 17, 17}));
  EXPECT_EQ(document.result().tokenBytes, 85u);
}

TEST(Document, ChecksTokensThatAreTakenAsBuffers) {
  const std::string commands = "text one\nbuffer\nraw\nno token\n";
  Document document = host().open(script(commands));
  EXPECT_TRUE(document.nextBuffer().has_value());
  EXPECT_FALSE(document.nextBuffer().has_value());
  EXPECT_EQ(document.result().status, Status::kPartial);
  EXPECT_EQ(document.result().failure, Failure::kModuleUnusable);
}

TEST(Document, ReadsOnByItselfWhenOnlyTheResultIsWanted) {
  Document document = host().open(script(kTwoTexts));
  EXPECT_EQ(document.result().tokenBytes, 85u);
  EXPECT_EQ(document.nextText(), std::nullopt);
}

TEST(Document, SurvivesAMove) {
  Document first = host().open(script(kTwoTexts));
  EXPECT_EQ(first.nextText(), "one");
  Document second = std::move(first);
  EXPECT_EQ(second.nextText(), "two");
  EXPECT_EQ(second.nextText(), std::nullopt);
}

}  // namespace
}  // namespace dorvex::host_test
