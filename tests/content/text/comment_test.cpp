#include "text/comment.h"

#include <gtest/gtest.h>

#include <vector>

#include "TSDArchives.h"
#include "TSKArchives.h"
#include "content/support/objects.h"

namespace dorvex::content::comment_test {
namespace {

using Storage = TSD::CommentStorageArchive;
using testing::Archive;
using testing::bitsOf;
using testing::object;
using testing::Objects;
using testing::reference;
using testing::Wire;

constexpr int kAuthor = 212;
constexpr int kComment = testing::kCommentStorageType;

Wire comment(const char* text, const std::vector<std::uint64_t>& replies = {}) {
  Wire wire;
  wire.bytes(Storage::text.number, text).message(Storage::author.number, reference(2));
  wire.message(Storage::creation_date.number, Wire().fixed64(1, bitsOf(60)));
  for (const auto reply : replies) wire.message(Storage::replies.number, reference(reply));
  return wire;
}

Archive author() {
  return object(2, kAuthor, Wire().bytes(TSK::AnnotationAuthorArchive::name.number, "Ada"));
}

Comment readFirst(Objects& objects) {
  return readComment(objects.reading(), objects.message<Storage>(10));
}

TEST(ReadComment, GivesTextAuthorAndDate) {
  Objects objects({author(), object(10, kComment, comment("one\xE2\x80\xA9two"))});
  const Comment read = readFirst(objects);
  EXPECT_EQ(read.text, "one\ntwo");
  EXPECT_EQ(read.author, "Ada");
  EXPECT_EQ(read.date, "2001-01-01T00:01:00Z");
  EXPECT_TRUE(read.replies.empty());
}

TEST(ReadComment, GivesRepliesInTheirOrder) {
  Objects objects({author(), object(10, kComment, comment("question", {11, 12})),
                   object(11, kComment, comment("answer")),
                   object(12, kComment, comment("thanks"))});
  const Comment read = readFirst(objects);
  ASSERT_EQ(read.replies.size(), 2U);
  EXPECT_EQ(read.replies[0].text, "answer");
  EXPECT_EQ(read.replies[1].text, "thanks");
}

TEST(ReadComment, EndsWhereRepliesAnswerEachOther) {
  Objects objects({author(), object(10, kComment, comment("a", {11, 11})),
                   object(11, kComment, comment("b", {12})),
                   object(12, kComment, comment("c", {11, 12}))});
  const Comment read = readFirst(objects);
  ASSERT_EQ(read.replies.size(), 1U);
  ASSERT_EQ(read.replies[0].replies.size(), 1U);
  EXPECT_TRUE(read.replies[0].replies[0].replies.empty());
}

TEST(ReadComment, LeavesDateAndAuthorEmptyWhereTheyAreNotThere) {
  Objects objects({object(10, kComment, Wire().bytes(Storage::text.number, "x"))});
  const Comment read = readFirst(objects);
  EXPECT_EQ(read.author, "");
  EXPECT_EQ(read.date, "");
}

TEST(SaysSomething, IsFalseForAMarking) {
  EXPECT_FALSE(saysSomething({}));
  EXPECT_TRUE(saysSomething({.author = "", .date = "", .text = "x", .replies = {}}));
}

TEST(SaysSomething, HearsReplies) {
  Comment marking;
  marking.replies.push_back({.author = "", .date = "", .text = "x", .replies = {}});
  EXPECT_TRUE(saysSomething(marking));
}

}  // namespace
}  // namespace dorvex::content::comment_test
