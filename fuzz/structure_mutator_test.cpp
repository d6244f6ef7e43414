#include "structure_mutator.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

#include "support/package_writer.h"

namespace dorvex::fuzz {
namespace {

constexpr std::array kTypes = {2001, 3056, 6005};
constexpr std::uint32_t kRounds = 500;

std::string flipABit(std::string bytes) {
  if (!bytes.empty()) bytes[bytes.size() / 2] ^= 1;
  return bytes;
}

StructureMutator mutator(std::uint32_t seed) { return {seed, flipABit, kTypes}; }

std::string stream() {
  return testing::objectStream({testing::storage(1, {"one", "two"}), testing::comment(2, "three")});
}

std::string package() {
  const std::string member = testing::iwa(stream());
  return testing::zip({{"Index/Document.iwa", member},
                       {"Index.zip", testing::zip({{"Slide.iwa", member}})},
                       {"preview.jpg", "picture"}});
}

bool isZip(const std::string& bytes) {
  try {
    testing::unzip(bytes);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

TEST(StructureMutator, GivesTheSameForTheSameSeed) {
  for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
    EXPECT_EQ(mutator(seed).mutate(Level::kPackage, package()),
              mutator(seed).mutate(Level::kPackage, package()));
  }
}

TEST(StructureMutator, GivesManyDifferentMutations) {
  std::set<std::string> mutations;
  for (std::uint32_t seed = 0; seed < kRounds; ++seed)
    mutations.insert(mutator(seed).mutate(Level::kObjectStream, stream()));
  EXPECT_GT(mutations.size(), kRounds / 2);
}

TEST(StructureMutator, BuildsSoundArchivesAroundMostChanges) {
  std::uint32_t sound = 0;
  for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
    const StreamParts parts =
        StreamParts::decode(mutator(seed).mutate(Level::kObjectStream, stream()));
    sound += !parts.archives.empty() && parts.tail.empty() ? 1 : 0;
  }
  EXPECT_GT(sound, kRounds / 2);
}

TEST(StructureMutator, BuildsSoundChunksAroundMostChanges) {
  std::uint32_t sound = 0;
  for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
    const MemberParts parts =
        MemberParts::decode(mutator(seed).mutate(Level::kMember, testing::iwa(stream())));
    sound += parts.unpack() && parts.tail.empty() ? 1 : 0;
  }
  EXPECT_GT(sound, kRounds / 2);
}

TEST(StructureMutator, BuildsSoundZipsAroundMostChanges) {
  std::uint32_t sound = 0;
  for (std::uint32_t seed = 0; seed < kRounds; ++seed)
    sound += isZip(mutator(seed).mutate(Level::kPackage, package())) ? 1 : 0;
  EXPECT_GT(sound, kRounds / 2);
}

TEST(StructureMutator, MutatesWhatIsNothingItKnows) {
  for (const Level level :
       {Level::kMessage, Level::kObjectStream, Level::kMember, Level::kPackage}) {
    for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
      mutator(seed).mutate(level, "");
      mutator(seed).mutate(level, "\xFF\xFF\xFF");
    }
  }
}

TEST(StructureMutator, CrossesTwoStreamsIntoOneThatHasObjectsOfBoth) {
  const std::string other = testing::objectStream({testing::storage(9, {"other"})});
  for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
    const StreamParts parts =
        StreamParts::decode(mutator(seed).cross(Level::kObjectStream, stream(), other));
    EXPECT_EQ(parts.archives.size(), 3U);
    EXPECT_EQ(parts.tail, "");
  }
}

TEST(StructureMutator, CrossesTwoPackagesIntoOneThatHasAMemberMore) {
  const std::string other = testing::zip({{"Slide.iwa", "x"}});
  for (std::uint32_t seed = 0; seed < kRounds; ++seed) {
    EXPECT_EQ(testing::unzip(mutator(seed).cross(Level::kPackage, package(), other)).size(), 4U);
  }
}

}  // namespace
}  // namespace dorvex::fuzz
