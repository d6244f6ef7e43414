#include "graph/media_files.h"

#include <utility>

#include "TSPArchiveMessages.h"
#include "TSPMessages.h"
#include "graph/message.h"
#include "graph/plain_text.h"
#include "graph/types.h"

namespace dorvex::content {
namespace {

constexpr std::uint64_t kPackageMetadata = 2;  // the identifier of its object
constexpr std::string_view kFolder = "Data/";

// The file's name of a member in the folder of media; empty for any other member.
std::string_view nameInFolder(std::string_view member) {
  const auto slash = member.rfind('/');
  if (slash == std::string_view::npos) return {};
  const std::string_view folder = member.substr(0, slash + 1);
  if (!folder.ends_with(kFolder)) return {};
  const bool whole =
      folder.size() == kFolder.size() || folder[folder.size() - kFolder.size() - 1] == '/';
  return whole ? member.substr(slash + 1) : std::string_view();
}

}  // namespace

void MediaFiles::load() {
  using Info = TSP::DataInfo;
  if (std::exchange(loaded_, true)) return;
  const Object* metadata = graph_.find(kPackageMetadata);
  if (metadata == nullptr || !Types<TSP::PackageMetadata>::hold(metadata->type)) return;
  const Message<TSP::PackageMetadata> package(metadata->payload);
  for (const Message<Info>& info : package.all(TSP::PackageMetadata::datas)) {
    entries_.emplace(info.get(Info::identifier),
                     Entry{info.get(Info::preferred_file_name), info.get(Info::file_name)});
  }
  const auto& members = package_.members();
  for (std::size_t i = 0; i < members.size(); ++i) {
    const std::string_view name = nameInFolder(members[i].name);
    if (!name.empty()) members_.emplace(composed(name), i);
  }
}

std::size_t MediaFiles::number(std::size_t member, std::string name) {
  const auto [place, isNew] = numbers_.emplace(member, used_.size());
  if (isNew) {
    const Package::Member& file = package_.members()[member];
    used_.push_back(std::make_shared<MediaFile>(MediaFile{std::move(name), file.name, file.bytes}));
  }
  return place->second;
}

Media MediaFiles::use(std::uint64_t identifier) {
  load();
  Media media;
  const auto entry = entries_.find(identifier);
  if (entry == entries_.end()) return media;
  const auto& [name, fileName] = entry->second;
  media.name = composed(name.empty() ? fileName : name);
  if (fileName.empty()) return media;  // a picture of the application's own
  const auto member = members_.find(composed(fileName));
  if (member == members_.end()) return media;
  media.index = number(member->second, media.name);
  media.file = used_[*media.index];
  return media;
}

}  // namespace dorvex::content
