#include "package/authors.h"

#include <gtest/gtest.h>

#include "content/support/objects.h"

namespace dorvex::content::authors_test {
namespace {

using testing::object;
using testing::reference;
using testing::Wire;

enum Type : int { kAuthor = 212, kComment = 3056, kChange = 2060, kSession = 2062 };

using Names = std::vector<std::string>;

Names read(const std::vector<testing::Archive>& objects) {
  testing::MemoryPackage package({{"Index/Document.iwa", testing::iwa(objects)}});
  LeftOut leftOut;
  const Graph graph(package, leftOut);
  Names names = readAuthors(graph);
  EXPECT_EQ(leftOut.dangling, 0U);
  return names;
}

testing::Archive author(std::uint64_t identifier, std::string_view name) {
  return object(identifier, kAuthor, Wire().bytes(1, name));
}

testing::Archive comment(std::uint64_t identifier, std::string_view text, std::uint64_t author) {
  return object(identifier, kComment, Wire().bytes(1, text).message(3, reference(author)));
}

TEST(Authors, AreThoseWhoWroteACommentOrAChange) {
  EXPECT_EQ(read({author(10, "Ann"), author(11, "Bob"), author(12, "Cleo"),
                  comment(20, "Silver?", 11), object(21, kChange, Wire().message(2, reference(22))),
                  object(22, kSession, Wire().message(2, reference(12)))}),
            (Names{"Bob", "Cleo"}));
}

TEST(Authors, AreNamedOnce) {
  EXPECT_EQ(read({author(10, "Ann"), author(11, "Ann"), comment(20, "a", 10), comment(21, "b", 10),
                  comment(22, "c", 11)}),
            Names{"Ann"});
}

TEST(Authors, AreNotThoseOfMarkingsOrWithoutAName) {
  EXPECT_EQ(read({author(10, "Ann"), author(11, ""), comment(20, "", 10), comment(21, "b", 11),
                  comment(22, "c", 99)}),
            Names{});
}

}  // namespace
}  // namespace dorvex::content::authors_test
