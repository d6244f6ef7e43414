#include "blocks.h"

#include <gtest/gtest.h>

#include <utility>

namespace dorvex::cli::blocks_test {
namespace {

TEST(Blocks, HoldWhatIsAppended) {
  Blocks blocks;
  EXPECT_EQ(blocks.joined(), "");
  std::string expected;
  for (const std::size_t size : {0, 1, 70'000, 3, 65'536, 200'000}) {
    const std::string bytes(size, static_cast<char>('a' + size % 26));
    blocks.append(bytes);
    expected += bytes;
    EXPECT_EQ(blocks.size(), expected.size());
  }
  EXPECT_EQ(blocks.joined(), expected);
}

TEST(Blocks, LeaveWhatIsThereWhereItIs) {
  Blocks blocks;
  blocks.append(std::string(100'000, 'x'));
  const char* const first = blocks.parts().front().data();
  for (int i = 0; i < 1000; ++i) blocks.append(std::string(1000, 'y'));
  EXPECT_EQ(blocks.parts().front().data(), first);
}

TEST(Blocks, TakeTheBlocksOfOthersOver) {
  Blocks some;
  some.append("some");
  Blocks others;
  others.append(std::string(100'000, 'o'));
  const char* const first = others.parts().front().data();
  some.append(std::move(others));
  EXPECT_EQ(some.size(), 100'004u);
  EXPECT_EQ(some.parts()[1].data(), first);
  some.append(" more");
  EXPECT_EQ(some.joined(), "some" + std::string(100'000, 'o') + " more");
}

}  // namespace
}  // namespace dorvex::cli::blocks_test
