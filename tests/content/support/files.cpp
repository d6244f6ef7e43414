#include "content/support/files.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace dorvex::testing {
namespace {

namespace fs = std::filesystem;

void add(std::vector<testing::Member> from, const std::string& prefix,
         std::vector<testing::Member>& to) {
  for (testing::Member& member : from) {
    member.name = prefix + member.name;
    if (member.name.ends_with('/')) continue;
    if (member.name == "Index.zip" || member.name.ends_with("/Index.zip")) {
      add(unzip(member.contents), member.name + "/", to);
    } else {
      to.push_back(std::move(member));
    }
  }
}

std::vector<testing::Member> membersOfDirectory(const fs::path& root) {
  std::vector<testing::Member> members;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    if (entry.is_regular_file())
      members.push_back({entry.path().lexically_relative(root).string(), readFile(entry.path())});
  }
  std::ranges::sort(members, {}, &testing::Member::name);
  return members;
}

// The folder that holds all members, with its slash; empty when there is none.
std::string outerFolder(const std::vector<testing::Member>& members) {
  if (members.empty()) return {};
  const std::string& first = members.front().name;
  const std::string folder = first.substr(0, first.find('/') + 1);
  const bool isPackage = folder == "Index/" || folder == "Data/" || folder == "Index.zip/";
  const bool holdsAll = std::ranges::all_of(members, [&](const testing::Member& member) {
    return member.name.starts_with(folder) || member.name.starts_with("__MACOSX/");
  });
  return holdsAll && !isPackage ? folder : "";
}

}  // namespace

MemoryPackage::MemoryPackage(const std::vector<testing::Member>& members) {
  for (const testing::Member& member : members) {
    members_.push_back({member.name, member.contents.size()});
    contents_.push_back(member.contents);
  }
}

MemoryPackage packageAt(const fs::path& path) {
  std::vector<testing::Member> members;
  add(fs::is_directory(path) ? membersOfDirectory(path) : unzip(readFile(path)), "", members);
  const std::string folder = outerFolder(members);
  for (testing::Member& member : members) {
    if (member.name.starts_with(folder)) member.name.erase(0, folder.size());
  }
  return MemoryPackage(members);
}

}  // namespace dorvex::testing
