#include "looking/package.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "bytes/directory.h"
#include "looking/file_name.h"

namespace dorvex {
namespace {

constexpr std::array<std::string_view, 4> kIwork09Names = {"index.xml", "index.xml.gz",
                                                           "index.apxl", "index.apxl.gz"};
constexpr std::array<std::string_view, 2> kPasswordNames = {".iwpv2", ".iwph"};

bool isStream(std::string_view path) {
  return path.ends_with(".iwa") || path.ends_with("Index.zip");
}

template <typename Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void listInto(int parent, const char* folder, const std::string& prefix,
              std::vector<std::string>& names) {
  UniqueFd fd(::openat(parent, folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd) return;
  const Directory stream(::fdopendir(::dup(fd.get())));
  if (!stream) return;
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.push_back(prefix + entry->d_name);
  }
}

}  // namespace

void lookAtNames(const std::vector<std::string>& names, PackageLook& look) {
  for (const std::string& path : names) {
    const std::string_view name = fileName(path);
    look.iwork09 |= contains(kIwork09Names, name);
    look.passwordProtected |= contains(kPasswordNames, name);
    look.hasStreams |= isStream(path);
  }
}

void lookAtStart(ByteStore& store, PackageLook& look) {
  std::array<unsigned char, 4> start{};
  look.empty = store.size() == 0;
  if (store.readAt(0, start.data(), start.size()) != 4) return;
  const bool pk = start[0] == 'P' && start[1] == 'K';
  look.beginsLikeAZip =
      pk && ((start[2] == 3 && start[3] == 4) || (start[2] == 5 && start[3] == 6));
  look.beginsLikeAChunk = start[0] == 0;
}

std::vector<std::string> listDirectory(int directory) {
  std::vector<std::string> names;
  listInto(directory, ".", "", names);
  listInto(directory, "Index", "Index/", names);
  return names;
}

}  // namespace dorvex
