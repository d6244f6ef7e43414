#include "package.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

namespace dorvex {
namespace {

constexpr std::array<std::string_view, 4> kIwork09Names = {"index.xml", "index.xml.gz",
                                                           "index.apxl", "index.apxl.gz"};
constexpr std::array<std::string_view, 2> kPasswordNames = {".iwpv2", ".iwph"};

std::string_view file_name(std::string_view path) {
  const auto slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

bool is_stream(std::string_view path) {
  return path.ends_with(".iwa") || path.ends_with("Index.zip");
}

struct CloseDirectory {
  void operator()(DIR* stream) const { ::closedir(stream); }
};

template <typename Names>
bool contains(const Names& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void list_into(int parent, const char* folder, const std::string& prefix,
               std::vector<std::string>& names) {
  UniqueFd fd(::openat(parent, folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!fd) return;
  const std::unique_ptr<DIR, CloseDirectory> stream(::fdopendir(::dup(fd.get())));
  if (!stream) return;
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.push_back(prefix + entry->d_name);
  }
}

}  // namespace

void look_at_names(const std::vector<std::string>& names, PackageLook& look) {
  for (const std::string& path : names) {
    const std::string_view name = file_name(path);
    look.iwork09 |= contains(kIwork09Names, name);
    look.password_protected |= contains(kPasswordNames, name);
    look.has_streams |= is_stream(path);
  }
}

void look_at_start(ByteStore& store, PackageLook& look) {
  std::array<unsigned char, 4> start{};
  look.empty = store.size() == 0;
  if (store.read_at(0, start.data(), start.size()) != 4) return;
  const bool pk = start[0] == 'P' && start[1] == 'K';
  look.begins_like_a_zip =
      pk && ((start[2] == 3 && start[3] == 4) || (start[2] == 5 && start[3] == 6));
  look.begins_like_a_chunk = start[0] == 0;
}

std::vector<std::string> list_directory(int directory) {
  std::vector<std::string> names;
  list_into(directory, ".", "", names);
  list_into(directory, "Index", "Index/", names);
  return names;
}

}  // namespace dorvex
