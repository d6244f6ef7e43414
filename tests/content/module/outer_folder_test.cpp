#include "module/outer_folder.h"

#include <gtest/gtest.h>

namespace dorvex::content::outer_folder_test {
namespace {

std::vector<std::string> stripped(const std::vector<std::string>& names) {
  std::vector<Package::Member> members;
  for (const std::string& name : names) members.push_back({name, 0});
  stripOuterFolder(members);
  std::vector<std::string> left;
  for (const Package::Member& member : members) left.push_back(member.name);
  return left;
}

using Names = std::vector<std::string>;

TEST(OuterFolder, IsTakenOffWhatLiesInIt) {
  EXPECT_EQ(stripped({"Deck.key/Data/a.png", "Deck.key/Index/Document.iwa", "other"}),
            (Names{"Data/a.png", "Index/Document.iwa", "other"}));
  EXPECT_EQ(stripped({"Deck.key/Index.zip/Index/Document.iwa"}),
            Names{"Index.zip/Index/Document.iwa"});
}

TEST(OuterFolder, IsNotSeenWhereThereIsNone) {
  for (const Names& names : {Names{"Index/Document.iwa", "Data/a.png"}, Names{"Document.iwa"},
                             Names{"a/b/Index/Document.iwa"}, Names{"Index.zip/Document.iwa"}})
    EXPECT_EQ(stripped(names), names);
}

TEST(OuterFolder, IsNotThatOfWhatMacOsAdds) {
  EXPECT_EQ(stripped({"__MACOSX/Index/._Document.iwa", "Deck.key/Index/Document.iwa"}),
            (Names{"__MACOSX/Index/._Document.iwa", "Index/Document.iwa"}));
}

}  // namespace
}  // namespace dorvex::content::outer_folder_test
