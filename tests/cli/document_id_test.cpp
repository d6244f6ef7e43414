#include "document_id.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace dorvex::cli::document_id_test {
namespace {

TEST(DocumentId, IsTheBeginningOfTheSha256OfThePath) {
  EXPECT_EQ(documentId(""), "e3b0c44298fc1c149afbf4c8996fb924");
  EXPECT_EQ(documentId("abc"), "ba7816bf8f01cfea414140de5dae2223");
}

TEST(Shard, DealsEveryIdToOnePart) {
  std::vector<int> counts(7, 0);
  for (int i = 0; i < 7000; ++i) {
    int holders = 0;
    for (std::uint64_t part = 0; part < 7; ++part) {
      const bool holds = Shard{part, 7}.holds(documentId(std::to_string(i)));
      holders += holds ? 1 : 0;
      counts[part] += holds ? 1 : 0;
    }
    ASSERT_EQ(holders, 1);
  }
  for (const int count : counts) EXPECT_NEAR(count, 1000, 150);
}

TEST(Shard, IsWrittenAsAPartBelowTheirNumber) {
  EXPECT_EQ(parseShard("0/1").count, 1u);
  EXPECT_EQ(parseShard("3/10").index, 3u);
  for (const char* text : {"", "1", "/", "1/", "/1", "1/1", "2/1", "-1/2", "a/2", "1/0", "1/2x"}) {
    EXPECT_THROW(parseShard(text), std::invalid_argument) << text;
  }
}

}  // namespace
}  // namespace dorvex::cli::document_id_test
