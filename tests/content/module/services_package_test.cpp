#include "module/services_package.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/bare_host.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::content::services_package_test {
namespace {

using testing::Member;

class ServicesPackageTest : public ::testing::Test {
 protected:
  ServicesPackageTest() { host.useContainerModule(DORVEX_CONTAINER_MODULE); }
  ~ServicesPackageTest() override {
    EXPECT_EQ(host.openStreams(), 0U);
    EXPECT_EQ(host.openContainers(), 0);
    EXPECT_EQ(host.loadedModules(), 0);
  }

  static std::vector<std::string> namesOf(const ServicesPackage& package) {
    std::vector<std::string> names;
    for (const Package::Member& member : package.members()) names.push_back(member.name);
    return names;
  }

  testing::BareHost host;
};

using Names = std::vector<std::string>;

TEST_F(ServicesPackageTest, GivesTheMembersOfAZipAndOfThoseInIt) {
  const std::string inner = testing::zip({{"Document.iwa", "b"}, {"Tables/", ""}});
  ServicesPackage package(*host.services());
  ASSERT_TRUE(package.openContainer(
      host.addDocument(testing::zip({{"Data/a.png", "aaa", true}, {"Index.zip", inner}}))));
  EXPECT_EQ(namesOf(package), (Names{"Data/a.png", "Index.zip/Document.iwa"}));
  EXPECT_EQ(package.read(0), "aaa");
  EXPECT_EQ(package.read(1), "b");
  EXPECT_TRUE(package.damaged().empty());
}

TEST_F(ServicesPackageTest, TellsOfAZipInsideThatIsNone) {
  ServicesPackage package(*host.services());
  ASSERT_TRUE(
      package.openContainer(host.addDocument(testing::zip({{"Index.zip", "none"}, {"a", "b"}}))));
  ASSERT_EQ(package.damaged().size(), 1U);
  EXPECT_EQ(package.damaged().front().name, "Index.zip");
  EXPECT_EQ(namesOf(package), Names{"a"});
}

TEST_F(ServicesPackageTest, GivesNothingOfAMemberThatIsNotWhole) {
  std::string bytes = testing::zip({{"a", std::string(1000, 'x')}});
  bytes[200] = 'y';
  ServicesPackage package(*host.services());
  ASSERT_TRUE(package.openContainer(host.addDocument(bytes)));
  EXPECT_EQ(package.read(0), std::nullopt);
}

TEST_F(ServicesPackageTest, OpensNothingThatIsNoContainer) {
  ServicesPackage package(*host.services());
  EXPECT_FALSE(package.openContainer(host.addDocument("nothing")));
  EXPECT_FALSE(package.openDirectory("/nonexistent"));
}

TEST_F(ServicesPackageTest, ReadsADirectoryInOrderAndFollowsNoLinks) {
  const testing::TemporaryDirectory folder;
  const auto root = folder.path() / "Deck.key";
  testing::writeFile(folder.path() / "secret", "secret");
  testing::writeDirectory(
      root,
      {{"Index/B.iwa", "b"}, {"Index/A.iwa", "a"}, {"Index.zip", testing::zip({{"C.iwa", "c"}})}});
  std::filesystem::create_symlink(folder.path() / "secret", root / "Index/L.iwa");
  ServicesPackage package(*host.services());
  ASSERT_TRUE(package.openDirectory(root.c_str()));
  EXPECT_EQ(namesOf(package), (Names{"Index.zip/C.iwa", "Index/A.iwa", "Index/B.iwa"}));
  EXPECT_EQ(package.read(2), "b");
}

TEST_F(ServicesPackageTest, OpensNothingWithoutTheContainerModule) {
  host.failAt(testing::Slot::kLoadDll, 1);
  ServicesPackage package(*host.services());
  EXPECT_FALSE(package.openContainer(host.addDocument(testing::zip({{"a", "b"}}))));
}

}  // namespace
}  // namespace dorvex::content::services_package_test
