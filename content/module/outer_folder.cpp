#include "module/outer_folder.h"

#include <string_view>

namespace dorvex::content {
namespace {

constexpr std::string_view kStreams[] = {"Index/", "Index.zip"};

// What stands before the object streams in the name of one, with its slash; at most
// one folder.
std::string folderBefore(std::string_view name) {
  const auto slash = name.find('/');
  if (slash == std::string_view::npos) return {};
  const std::string_view rest = name.substr(slash + 1);
  for (const std::string_view streams : kStreams) {
    if (name.starts_with(streams)) return {};
    if (rest.starts_with(streams)) return std::string(name.substr(0, slash + 1));
  }
  return {};
}

}  // namespace

void stripOuterFolder(std::vector<Package::Member>& members) {
  std::string folder;
  for (const Package::Member& member : members) {
    if (!member.name.ends_with(".iwa") || member.name.starts_with("__MACOSX/")) continue;
    folder = folderBefore(member.name);
    break;
  }
  if (folder.empty()) return;
  for (Package::Member& member : members) {
    if (member.name.starts_with(folder)) member.name.erase(0, folder.size());
  }
}

}  // namespace dorvex::content
