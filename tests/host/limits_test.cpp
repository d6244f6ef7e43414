// The limits of what a document may hold, through the real reader: with the real
// container module, and with one that keeps to none.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "dorvex/host.h"
#include "support/package_writer.h"
#include "support/self_containing_zip.h"
#include "support/temporary_directory.h"

namespace dorvex::limits_test {
namespace {

using namespace testing;

class DocumentLimits : public ::testing::Test {
 protected:
  DocumentLimits() {
    options.module = DORVEX_READER_MODULE;
    options.isolation = Isolation::kInProcess;
  }

  // A module folder of its own: the reader, and the container module without limits.
  void useEndlessContainer() {
    std::filesystem::create_symlink(DORVEX_READER_MODULE, folder_.path() / "dorvexsr.so");
    std::filesystem::create_symlink(ENDLESS_CONTAINER_MODULE, folder_.path() / "unzip.so");
    options.module = folder_.path() / "dorvexsr.so";
  }

  Result read(const std::string& bytes) {
    texts.clear();
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    return Host(options).forEachText(Input::memory({data, bytes.size()}),
                                     [this](auto text) { texts.emplace_back(text); });
  }

  void expectStopped(const std::string& bytes, Limit limit, const std::string& message) {
    const Result result = read(bytes);
    EXPECT_EQ(result.status, Status::kFailed);
    EXPECT_EQ(result.failure, Failure::kLimitPassed);
    EXPECT_EQ(result.limit, limit);
    EXPECT_EQ(result.message, message);
    EXPECT_EQ(result.moduleResult, 6);
    EXPECT_TRUE(texts.empty());
  }

  HostOptions options;
  std::vector<std::string> texts;

 private:
  TemporaryDirectory folder_;
};

std::string large(std::size_t length, std::uint64_t identifier = 1) {
  return iwa({storage(identifier, {std::string(length, 'x')})});
}

std::string nested(int depth) {
  std::string bytes = zip({{"Document.iwa", large(10)}});
  for (; depth > 1; --depth) bytes = zip({{"Index.zip", bytes}});
  return bytes;
}

TEST_F(DocumentLimits, OfMembersHoldForTheDocumentAndForANestedZip) {
  options.limits.container.members = 2;
  const std::string two = zip({{"Document.iwa", large(10)}, {"b", ""}});
  const std::string three = zip({{"Document.iwa", large(10)}, {"b", ""}, {"c", ""}});
  EXPECT_EQ(read(two).status, Status::kOk);
  expectStopped(three, Limit::kMembers, "stopped: the zip has more than 2 members");
  expectStopped(zip({{"Index.zip", three}}), Limit::kMembers,
                "stopped: the zip member Index.zip has more than 2 members");
}

TEST_F(DocumentLimits, OfDepthCountTheDocumentItself) {
  options.limits.container.depth = 3;
  EXPECT_EQ(read(nested(3)).status, Status::kOk);
  expectStopped(
      nested(4), Limit::kDepth,
      "stopped: the zip member Index.zip/Index.zip/Index.zip lies in more than 3 containers");
  options.limits.container.depth = 0;
  EXPECT_EQ(read(nested(30)).status, Status::kOk);
}

TEST_F(DocumentLimits, OfDepthEndAZipThatContainsItself) {
  std::string name = "Index.zip";
  for (int depth = 1; depth < 16; ++depth) name += "/Index.zip";
  expectStopped(selfContainingZip(), Limit::kDepth,
                "stopped: the zip member " + name + " lies in more than 16 containers");
}

TEST_F(DocumentLimits, OfDepthAre16UnlessSet) {
  EXPECT_EQ(read(nested(16)).status, Status::kOk);
  EXPECT_EQ(read(nested(17)).limit, Limit::kDepth);
}

TEST_F(DocumentLimits, OfMemberBytes) {
  const std::string member = large(1000);
  options.limits.container.memberBytes = member.size();
  EXPECT_EQ(read(zip({{"Document.iwa", member}})).status, Status::kOk);
  options.limits.container.memberBytes = member.size() - 1;
  expectStopped(zip({{"Document.iwa", member}}), Limit::kMemberBytes,
                "stopped: the zip member Document.iwa expands to more than " +
                    std::to_string(member.size() - 1) + " bytes");
}

TEST_F(DocumentLimits, DoNotCountMembersThatTheReaderPassesOver) {
  options.limits.container.memberBytes = 1000;
  EXPECT_EQ(read(zip({{"Document.iwa", large(10)}, {"Data/movie", std::string(5000, 'x')}})).status,
            Status::kOk);
}

TEST_F(DocumentLimits, OfTotalBytesCountAcrossNestedContainers) {
  const std::string inner = zip({{"Document.iwa", large(10)}});
  const std::string outer = zip({{"Index.zip", inner}, {"Document.iwa", large(20, 2)}});
  const std::size_t all = inner.size() + large(10).size() + large(20, 2).size();
  options.limits.container.totalBytes = all;
  EXPECT_EQ(read(outer).status, Status::kOk);
  options.limits.container.totalBytes = all - 1;
  expectStopped(outer, Limit::kTotalBytes,
                "stopped: with the zip member Document.iwa the members expand to more than " +
                    std::to_string(all - 1) + " bytes");
}

TEST_F(DocumentLimits, OfExpansion) {
  options.limits.container.expansion = 10;
  const std::string member =
      iwa({storage(1, {"text"})}) + chunk(literalBlock(std::string(20000, '\0')));
  expectStopped(zip({{"Index/a.txt", "x"}, {"Index/Document.iwa", member, true}}),
                Limit::kExpansion,
                "stopped: the zip member Index/Document.iwa expands beyond 10 to 1");
  EXPECT_EQ(read(zip({{"Index/Document.iwa", large(10000), false}})).status, Status::kOk);
}

TEST_F(DocumentLimits, OfScratchCountStreamsThatAreOpenAtATime) {
  const std::string member = large(1000);
  const std::string flat = zip({{"Document-1.iwa", member}, {"Document-2.iwa", large(1000, 2)}});
  options.limits.scratch = member.size();
  EXPECT_EQ(read(flat).status, Status::kOk);
  const std::string inner = zip({{"Document.iwa", member}});
  options.limits.scratch = inner.size() + member.size();
  EXPECT_EQ(read(zip({{"Index.zip", inner}})).status, Status::kOk);
  options.limits.scratch = inner.size() + member.size() - 1;
  expectStopped(zip({{"Index.zip", inner}}), Limit::kScratch,
                "stopped: with the zip member Index.zip/Document.iwa more than " +
                    std::to_string(options.limits.scratch) + " bytes of scratch space are in use");
}

TEST_F(DocumentLimits, HoldForAZipThatNeverBottomsOutAndAModuleThatKnowsNone) {
  useEndlessContainer();
  options.limits.container.depth = 3;
  expectStopped(
      "n", Limit::kDepth,
      "stopped: the zip member Index.zip/Index.zip/Index.zip lies in more than 3 containers");
}

TEST_F(DocumentLimits, HoldForBytesWithoutEndAndAModuleThatKnowsNone) {
  useEndlessContainer();
  options.limits.container.memberBytes = 1 << 20;
  expectStopped("b", Limit::kMemberBytes,
                "stopped: the zip member Document.iwa expands to more than 1048576 bytes");
  options.limits.container.memberBytes = 0;
  options.limits.container.totalBytes = 1 << 20;
  expectStopped("b", Limit::kTotalBytes,
                "stopped: with the zip member Document.iwa the members expand to more than "
                "1048576 bytes");
  options.limits.container.totalBytes = 0;
  options.limits.scratch = 1 << 20;
  expectStopped("b", Limit::kScratch,
                "stopped: with the zip member Document.iwa more than 1048576 bytes of scratch "
                "space are in use");
}

TEST_F(DocumentLimits, HoldForMembersWithoutEndAndAModuleThatKnowsNone) {
  useEndlessContainer();
  expectStopped("m", Limit::kMembers, "stopped: the zip has more than 100000 members");
}

TEST_F(DocumentLimits, HoldForTheIndexZipOfADirectory) {
  TemporaryDirectory package;
  writeDirectory(package.path(), {{"Index.zip", nested(3)}});
  options.limits.container.depth = 3;
  EXPECT_EQ(Host(options).forEachText(Input::path(package.path()), [](auto) {}).status,
            Status::kOk);
  options.limits.container.depth = 2;
  const Result result = Host(options).forEachText(Input::path(package.path()), [](auto) {});
  EXPECT_EQ(result.limit, Limit::kDepth);
  EXPECT_EQ(result.message,
            "stopped: the zip member Index.zip/Index.zip/Index.zip lies in more than 2 containers");
}

// Names that are no plain member paths: the reader selects by how a name begins,
// and nobody opens a file by it.
TEST_F(DocumentLimits, DoNotConcernNamesThatLookLikePaths) {
  const std::string member = large(10);
  EXPECT_EQ(read(zip({{"/Index/Document.iwa", member}})).failure, Failure::kNothingRecognised);
  EXPECT_EQ(read(zip({{"../Index/Document.iwa", member}})).failure, Failure::kNothingRecognised);
  EXPECT_EQ(read(zip({{"Document/../../a.iwa", member}})).status, Status::kOk);
  EXPECT_EQ(read(zip({{"../../Index.zip", zip({{"Document.iwa", member}})}})).status, Status::kOk);
}

}  // namespace
}  // namespace dorvex::limits_test
