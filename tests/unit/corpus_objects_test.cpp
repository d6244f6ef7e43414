// Counts the objects of real documents from the headers of their archives alone,
// without parsing a payload, and compares with what the reader stores.
#include <google/protobuf/message.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>

#include "TSPArchiveMessages.pb.h"
#include "Tools/formats/vniwork13/iwa_utils.h"
#include "Tools/formats/vniwork13/object_walk.h"
#include "Tools/formats/vniwork13/registry.h"
#include "Tools/formats/vniwork13/snappy_utils.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "support/bare_host.h"
#include "support/corpus.h"
#include "support/guarded_buffer.h"
#include "support/package_writer.h"

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;
using vn::iwork13::getPagesMessage;

bool isKnown(int type) {
  return std::unique_ptr<google::protobuf::Message>(getPagesMessage(type)) != nullptr;
}

// Adds the identifiers of all archives with a message of a known type. False if
// the stream is not a run of whole archives.
bool addIdentifiers(std::string_view stream, std::set<std::uint64_t>& identifiers) {
  const auto take = [&stream](std::size_t size) {
    const std::string_view taken = stream.substr(0, size);
    stream.remove_prefix(taken.size());
    return taken;
  };
  const auto takeVarint = [&] {
    std::uint64_t value = 0;
    for (int shift = 0; !stream.empty(); shift += 7) {
      const auto byte = static_cast<unsigned char>(take(1)[0]);
      value |= std::uint64_t{byte & 0x7FU} << shift;
      if (byte < 0x80) break;
    }
    return value;
  };
  while (!stream.empty()) {
    TSP::ArchiveInfo archive;
    if (!archive.ParsePartialFromString(std::string(take(takeVarint())))) return false;
    for (const TSP::MessageInfo& info : archive.message_infos()) {
      if (take(info.length()).size() != info.length()) return false;
      if (isKnown(static_cast<int>(info.type()))) identifiers.insert(archive.identifier());
    }
  }
  return true;
}

bool isZip(const std::string& bytes) {
  if (bytes.empty()) return false;  // libzip would take it for a zip of no members
  try {
    unzip(bytes);
    return true;
  } catch (const std::runtime_error&) {
    return false;
  }
}

bool isSelected(const std::string& name) {
  if (!name.ends_with(".iwa")) return false;
  const std::string inside = name.starts_with("Index/") ? name.substr(6) : name;
  for (const char* prefix : {"Document", "CalculationEngine", "Slide", "Tables/"}) {
    if (inside.starts_with(prefix)) return true;
  }
  return false;
}

void addIdentifiersOfZip(const std::string& zip, std::set<std::uint64_t>& identifiers) {
  for (const Member& member : unzip(zip)) {
    if (member.name.ends_with("Index.zip")) addIdentifiersOfZip(member.contents, identifiers);
    if (!isSelected(member.name)) continue;
    const auto stream = vn::iwork13::uncompressIwaBuffer(
        member.contents.data(), static_cast<std::uint32_t>(member.contents.size()));
    EXPECT_TRUE(addIdentifiers({stream.data(), stream.size()}, identifiers)) << member.name;
  }
}

class CorpusObjects : public ::testing::TestWithParam<std::string> {};

TEST_P(CorpusObjects, StoresOneObjectForEachIdentifierOfAKnownType) {
  const fs::path path = corpusPath(GetParam());
  const std::string bytes = readFile(fs::is_directory(path) ? path / "Index.zip" : path);
  BareHost host;
  GuardedBuffer buffer(4096);
  vn::iwork13::MessageMap map;
  const auto read = [&] {
    vn::iwork13::unzipFile(&host.addDocument(bytes), map, host.services(), buffer.data(), 4096,
                           getPagesMessage);
  };
  if (!isZip(bytes)) {
    EXPECT_THROW(read(), vn::except::reader_init_error);
    EXPECT_TRUE(map.empty());
    return;
  }
  std::set<std::uint64_t> expected;
  addIdentifiersOfZip(bytes, expected);

  read();
  std::set<std::uint64_t> stored;
  for (const auto& [identifier, message] : vn::iwork13::entriesOf(map)) stored.insert(identifier);
  EXPECT_EQ(stored, expected);
}

INSTANTIATE_TEST_SUITE_P(Documents, CorpusObjects, ::testing::ValuesIn(corpusDocuments()),
                         [](const auto& info) { return testNameOf(info.param); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(CorpusObjects);

}  // namespace
}  // namespace dorvex::testing
