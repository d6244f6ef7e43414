// Two documents on two threads. Built with every preset, and meant for the preset
// tsan, which sees what two threads touch at the same time.
#include <gtest/gtest.h>

#include <barrier>
#include <string>
#include <thread>
#include <vector>

#include "dorvex/host.h"
#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/temporary_directory.h"
#include "support/token_decoder.h"

namespace dorvex::testing {
namespace {

using Texts = std::vector<std::string>;

constexpr int kThreads = 2;
constexpr int kRounds = 20;

// A document of each kind of object that the reader treats its own way: one that
// it scans, one that it has to print, one that does not parse, a nested zip.
std::string documentOf(int thread) {
  const std::string name = std::to_string(thread);
  const std::string inner = zip({{"Document.iwa", iwa({comment(9, "inner " + name)})}});
  return zip({{"Index/Document.iwa",
               iwa({storage(1, {"first " + name, std::string(200, 'x')}), storage(2, {"a text: "}),
                    object(3, kStorageType, std::string("\x1A\x7F", 2))})},
              {"Index.zip", inner},
              {"Index/Slide.iwa", damagedChunk()}});
}

// A value that ends as a field begins yields the rest of the printed message too.
Texts textsOf(int thread) {
  const std::string name = std::to_string(thread);
  return {"first " + name, std::string(200, 'x'), "a text: ", "\n", "inner " + name};
}

// Runs the same on each thread, all starting at once.
template <typename Function>
void runOnThreads(Function function) {
  std::barrier start(kThreads);
  std::vector<std::thread> threads;
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([&, thread] {
      start.arrive_and_wait();
      function(thread);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// Also the very first documents of the process, each thread with a host, a
// context and a loaded container module of its own.
TEST(TwoContextsOnTwoThreads, ReadTheirOwnDocuments) {
  const ReaderInterface& reader = theReader().interface();
  runOnThreads([&](int thread) {
    const std::string bytes = documentOf(thread);
    for (int round = 0; round < kRounds; ++round) {
      BareHost host;
      if (round % 2 == 0) host.useContainerModule(containerModulePath());
      const Pumped pumped = pump(reader, host, &host.addDocument(bytes), 100);
      EXPECT_EQ(pumped.result(), 0);
      EXPECT_EQ(testing::textsOf(pumped.stream()), textsOf(thread));
    }
  });
}

TEST(TwoContextsOnTwoThreads, ReadDirectoryPackages) {
  const ReaderInterface& reader = theReader().interface();
  runOnThreads([&](int thread) {
    const TemporaryDirectory folder;
    writeDirectory(folder.path(),
                   {{"Index/Document.iwa", iwa({storage(1, {std::to_string(thread)})})}});
    for (int round = 0; round < kRounds; ++round) {
      BareHost host;
      Stream& document = host.addDirectoryDocument(folder.path() / "Index" / "Document.iwa");
      const Pumped pumped = pump(reader, host, &document, 1000);
      EXPECT_EQ(testing::textsOf(pumped.stream()), Texts{std::to_string(thread)});
    }
  });
}

// One context may go from thread to thread, one call at a time.
TEST(AContext, MayBePumpedByOneThreadAfterAnother) {
  BareHost host;
  const Texts texts(4, std::string(90, 'x'));
  ReaderSession session(theReader().interface(), host,
                        &host.addDocument(zip({{"Index/Document.iwa", iwa({storage(1, texts)})}})));
  session.percent = 0;
  std::string stream;
  while (session.percent != 100) std::thread([&] { stream += session.fill(100).bytes; }).join();
  EXPECT_EQ(testing::textsOf(stream), texts);
}

TEST(AHostOnTwoThreads, ReadsTheirDocumentsInProcess) {
  HostOptions options;
  options.module = ReaderModule::path();
  options.isolation = Isolation::kInProcess;
  const Host host(options);
  runOnThreads([&](int thread) {
    const std::string bytes = documentOf(thread);
    for (int round = 0; round < kRounds; ++round) {
      Texts texts;
      const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
      const Result result =
          host.forEachText(Input::memory({data, bytes.size()}),
                           [&](std::string_view text) { texts.emplace_back(text); });
      EXPECT_EQ(result.status, Status::kPartial);
      EXPECT_EQ(texts, textsOf(thread));
    }
  });
}

}  // namespace
}  // namespace dorvex::testing
