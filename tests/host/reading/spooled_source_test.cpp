#include "reading/spooled_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "fake_document.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::spooled_source_test {
namespace {

using namespace std::chrono_literals;
using testing::fakeReader;
using testing::Reading;
using testing::readTexts;
using Clock = std::chrono::steady_clock;

class SpooledSource : public ::testing::TestWithParam<Isolation> {
 protected:
  SpooledSource() { EXPECT_EQ(::mkfifo(pipe.c_str(), 0600), 0); }

  testing::TemporaryDirectory folder;
  std::string pipe = folder.path() / "pipe.pages";
  HostOptions options = fakeReader(GetParam());
};

TEST_P(SpooledSource, ReadsADocumentThatComesThroughAPipe) {
  std::thread writer([&] { testing::writeFile(pipe, "text piped\n"); });
  const Reading reading = readTexts(Host(options), Input::path(pipe));
  writer.join();
  EXPECT_EQ(reading.texts, std::vector<std::string>{"piped"}) << describe(reading.result);
  EXPECT_EQ(reading.result.inputBytes, 11u);
}

TEST_P(SpooledSource, EndsWithTheTimeThatADocumentMayTake) {
  options.limits.wallTime = 200ms;
  const auto start = Clock::now();
  const Reading reading = readTexts(Host(options), Input::path(pipe));
  EXPECT_EQ(reading.result.failure, Failure::kTimedOut);
  EXPECT_LT(Clock::now() - start, 10s);
}

TEST_P(SpooledSource, IsHeldToTheLimitOfInput) {
  options.limits.input = 100'000;
  const Reading reading = readTexts(Host(options), Input::path("/dev/zero"));
  EXPECT_EQ(reading.result.limit, Limit::kInput);
  EXPECT_EQ(reading.result.status, Status::kFailed);
}

TEST_P(SpooledSource, GoesOnAfterAWaitThatWasBrokenOff) {
  options.wait = 10ms;
  const Host host(options);
  Document document = host.open(Input::path(pipe));
  EXPECT_THROW(document.nextText(), WaitOver);
  EXPECT_THROW(document.result(), WaitOver);
  UniqueFd writer(::open(pipe.c_str(), O_WRONLY));
  EXPECT_EQ(::write(writer.get(), "text on", 7), 7);
  EXPECT_THROW(document.nextText(), WaitOver);
  EXPECT_EQ(::write(writer.get(), "e\n", 2), 2);
  writer.reset();
  std::optional<std::string> text;
  for (bool over = true; over;) {
    try {
      text = document.nextText();
      over = false;
    } catch (const WaitOver&) {
    }
  }
  EXPECT_EQ(text, "one");
}

INSTANTIATE_TEST_SUITE_P(Everywhere, SpooledSource,
                         ::testing::Values(Isolation::kWorkers, Isolation::kInProcess));

}  // namespace
}  // namespace dorvex::spooled_source_test
