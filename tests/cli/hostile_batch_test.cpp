// Documents on which the reader would run for ever: among good ones, and rendered.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "program.h"
#include "support/package_writer.h"
#include "support/self_containing_zip.h"
#include "support/temporary_directory.h"

namespace dorvex::hostile_batch_test {
namespace {

using namespace testing;
using nlohmann::json;

constexpr int kGoodDocuments = 1000;
constexpr double kTimeoutSeconds = 2;

std::string packageOf(const std::string& stream) { return zip({{"Index/Document.iwa", stream}}); }

std::string bytesBehindTheLastChunk(std::size_t count) {
  return packageOf(iwa({storage(1, {"lost"})}) + std::string(count, '\0'));
}

// The stated size is a lie of the central directory; the local header and the
// data are those of a smaller member.
std::string statedSizeLargerThanTheStream() {
  std::string bytes = packageOf(iwa({storage(1, {"lost"})}));
  constexpr std::size_t kSizeInEntry = 24;
  const std::size_t entry = bytes.find("PK\x01\x02");
  bytes[entry + kSizeInEntry] = static_cast<char>(bytes[entry + kSizeInEntry] + 1);
  return bytes;
}

std::string unreadableLengthPrefix() { return packageOf(iwa(std::string(10, '\xFF'))); }

std::string objectStreamOver64MiB() {
  return zip({{"Index/Document.iwa", iwa(std::string((std::size_t{64} << 20) + 1, '\0')), true}});
}

std::string nestedWithoutEnd() {
  std::string bytes = zip({});
  for (int i = 0; i < 200; ++i) bytes = zip({{"Index.zip", bytes}});
  return bytes;
}

struct Expected {
  std::string status;
  bool atOnce;
};

class HostileBatch : public ::testing::Test {
 protected:
  void add(const std::string& name, const std::string& bytes, const Expected& becomes) {
    writeFile(folder.path() / name, bytes);
    expected[folder.path() / name] = becomes;
  }

  // A size that is not true never reaches the reader: the container module and the
  // host compare it, and the document is damaged.
  void addHostile() {
    for (std::size_t count = 1; count <= 3; ++count)
      add("behind-" + std::to_string(count), bytesBehindTheLastChunk(count), {"limit", true});
    add("stated-size", statedSizeLargerThanTheStream(), {"corrupt", true});
    add("prefix", unreadableLengthPrefix(), {"timeout", false});
    add("over-64-mib", objectStreamOver64MiB(), {"limit", true});
    add("nested", nestedWithoutEnd(), {"limit", true});
    add("itself", selfContainingZip(), {"limit", true});
  }

  std::map<std::string, json> read() {
    const Finished run = runTool({"batch", "--all-files", "--jobs", "2", "--timeout",
                                  std::to_string(kTimeoutSeconds), folder.path()});
    EXPECT_EQ(run.status, 1);
    std::map<std::string, json> records;
    std::istringstream lines(run.output);
    for (std::string line; std::getline(lines, line);) {
      json record = json::parse(line);
      EXPECT_TRUE(records.emplace(record["path"], record).second) << line;
    }
    return records;
  }

  TemporaryDirectory folder;
  std::map<std::string, Expected> expected;
};

TEST_F(HostileBatch, EachGetsItsRecordAndEveryGoodDocumentComesOutWhole) {
  addHostile();
  for (int i = 0; i < kGoodDocuments; ++i) {
    writeFile(folder.path() / std::to_string(i),
              packageOf(iwa({storage(1, {"text " + std::to_string(i)})})));
  }

  auto records = read();
  EXPECT_EQ(records.size(), expected.size() + kGoodDocuments);
  for (const auto& [path, becomes] : expected) {
    const json& record = records[path];
    EXPECT_EQ(record["status"], becomes.status) << record;
    const double milliseconds = record["milliseconds"];
    EXPECT_LT(milliseconds, becomes.atOnce ? 1000 * kTimeoutSeconds : 10'000 * kTimeoutSeconds)
        << record;
  }
  for (int i = 0; i < kGoodDocuments; ++i) {
    const json& record = records[folder.path() / std::to_string(i)];
    EXPECT_EQ(record["status"], "ok") << record;
    EXPECT_EQ(record["texts"], json::array({"text " + std::to_string(i)}));
  }
}

// What ends at once has time enough to, on a busy machine too.
TEST_F(HostileBatch, NoneIsRenderedAndAllAreToldOfAsWhenTheirTextIsRead) {
  addHostile();
  for (const auto& [path, becomes] : expected) {
    const std::string timeout = becomes.atOnce ? "60" : std::to_string(kTimeoutSeconds);
    const Finished text = runTool({"text", "--timeout", timeout, path});
    const Finished rendered = runTool({"convert", "--to", "json", "--timeout", timeout, path});
    EXPECT_EQ(rendered.status, 1);
    EXPECT_EQ(rendered.output, "");
    EXPECT_EQ(rendered.errors, text.errors);
    EXPECT_EQ(std::ranges::count(rendered.errors, '\n'), 1) << rendered.errors;
  }
}

}  // namespace
}  // namespace dorvex::hostile_batch_test
