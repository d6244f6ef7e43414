#include "graph/media_files.h"

#include <gtest/gtest.h>

#include "content/support/files.h"
#include "support/package_writer.h"

namespace dorvex::content::media_files_test {
namespace {

using testing::Wire;

Wire dataInfo(std::uint64_t identifier, std::string_view name, std::string_view fileName) {
  Wire info;
  info.varint(1, identifier).bytes(2, "digest").bytes(3, name);
  if (!fileName.empty()) info.bytes(4, fileName);
  return info;
}

class MediaFilesTest : public ::testing::Test {
 protected:
  // A package with these entries for media, and these members beside.
  void open(const std::vector<Wire>& infos, std::vector<testing::Member> members) {
    Wire metadata;
    for (const Wire& info : infos) metadata.message(4, info);
    members.push_back({"Index/Metadata.iwa", testing::iwa({testing::object(2, 11006, metadata)})});
    package_.emplace(members);
    graph_.emplace(*package_, leftOut_);
    media_.emplace(*package_, *graph_);
  }

  LeftOut leftOut_;
  std::optional<testing::MemoryPackage> package_;
  std::optional<Graph> graph_;
  std::optional<MediaFiles> media_;
};

TEST_F(MediaFilesTest, FindsAFileByItsIdentifier) {
  open({dataInfo(7, "pot.png", "pot-7.png")}, {{"Data/pot-7.png", "12345"}});
  const Media pot = media_->use(7);
  EXPECT_EQ(pot.name, "pot.png");
  ASSERT_NE(pot.file, nullptr);
  EXPECT_EQ(pot.file->name, "pot.png");
  EXPECT_EQ(pot.file->member, "Data/pot-7.png");
  EXPECT_EQ(pot.file->bytes, 5U);
}

TEST_F(MediaFilesTest, NumbersFilesInOrderOfTheirFirstUse) {
  open({dataInfo(7, "pot.png", "pot-7.png"), dataInfo(8, "cup.png", "cup-8.png")},
       {{"Data/pot-7.png", "1"}, {"Data/cup-8.png", "2"}});
  EXPECT_EQ(media_->use(8).index, 0U);
  EXPECT_EQ(media_->use(7).index, 1U);
  EXPECT_EQ(media_->use(8).index, 0U);
  ASSERT_EQ(media_->used().size(), 2U);
  EXPECT_EQ(media_->used()[0]->member, "Data/cup-8.png");
}

TEST_F(MediaFilesTest, FindsAMemberWhoseNameIsDecomposed) {
  open({dataInfo(7, "k\u00E4nnchen.png", "k\u00E4nnchen-7.png")},
       {{"Data/ka\u0308nnchen-7.png", "1"}});
  const Media pot = media_->use(7);
  ASSERT_NE(pot.file, nullptr);
  EXPECT_EQ(pot.file->member, "Data/ka\u0308nnchen-7.png");
  EXPECT_EQ(pot.file->name, "k\u00E4nnchen.png");
}

TEST_F(MediaFilesTest, FindsMembersBelowAnOuterFolder) {
  open({dataInfo(7, "pot.png", "pot-7.png")}, {{"Tea.key/Data/pot-7.png", "1"}});
  EXPECT_NE(media_->use(7).file, nullptr);
}

TEST_F(MediaFilesTest, TakesNoMemberOfAnotherFolder) {
  open({dataInfo(7, "pot.png", "pot-7.png")},
       {{"OldData/pot-7.png", "1"}, {"Data/small/pot-7.png", "1"}, {"pot-7.png", "1"}});
  EXPECT_EQ(media_->use(7).file, nullptr);
}

TEST_F(MediaFilesTest, KnowsTheNameOfAPictureThatThePackageDoesNotHold) {
  open({dataInfo(7, "leaves.jpg", ""), dataInfo(8, "lost.jpg", "lost-8.jpg")}, {});
  for (const std::uint64_t identifier : {7U, 8U}) {
    const Media media = media_->use(identifier);
    EXPECT_FALSE(media.name.empty());
    EXPECT_FALSE(media.index);
    EXPECT_EQ(media.file, nullptr);
  }
  EXPECT_TRUE(media_->used().empty());
}

TEST_F(MediaFilesTest, GivesNothingForAnUnknownIdentifier) {
  open({}, {});
  EXPECT_TRUE(media_->use(99).name.empty());
}

}  // namespace
}  // namespace dorvex::content::media_files_test
