#include "path_list.h"

#include <algorithm>
#include <array>
#include <system_error>

namespace dorvex::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 3> kEndings = {".pages", ".key", ".numbers"};

char lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

class WalkedPaths final : public PathList {
 public:
  WalkedPaths(std::vector<std::string> paths, bool allFiles) : allFiles_(allFiles) {
    for (auto& path : paths) waiting_.push_back({std::move(path), true});
  }

  std::optional<std::string> next() override {
    while (!waiting_.empty()) {
      const Waiting first = std::move(waiting_.front());
      waiting_.pop_front();
      if (isFolder(first)) {
        if (unfold(first.path)) continue;
        return first.path;
      }
      if (first.named || isDocument(first.path)) return first.path;
    }
    return std::nullopt;
  }

 private:
  struct Waiting {
    std::string path;
    bool named;  // by the user
  };

  static bool isFolder(const Waiting& waiting) {
    std::error_code ignored;
    const auto status = waiting.named ? fs::status(waiting.path, ignored)
                                      : fs::symlink_status(waiting.path, ignored);
    return fs::is_directory(status) && !isPackageDirectory(waiting.path);
  }

  // Of what a folder holds. Pipes, devices and sockets, also behind links, are
  // documents only for whoever names them. What leads nowhere or cannot be looked
  // at is taken by its name: reading it will say why.
  bool isDocument(const std::string& path) const {
    std::error_code ignored;
    switch (fs::status(path, ignored).type()) {
      case fs::file_type::block:
      case fs::file_type::character:
      case fs::file_type::fifo:
      case fs::file_type::socket:
        return false;
      case fs::file_type::directory:
        return isWanted(path) && isPackageDirectory(path);
      default:
        return isWanted(path);
    }
  }

  bool isWanted(const std::string& path) const { return allFiles_ || hasDocumentName(path); }

  // Puts what a folder holds in its place.
  bool unfold(const std::string& folder) {
    std::error_code error;
    std::vector<std::string> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      entries.push_back(entry->path());
    }
    if (error) return false;
    std::sort(entries.rbegin(), entries.rend());
    for (auto& entry : entries) waiting_.push_front({std::move(entry), false});
    return true;
  }

  std::deque<Waiting> waiting_;
  bool allFiles_;
};

class ReadPaths final : public PathList {
 public:
  ReadPaths(std::istream& list, char end) : list_(list), end_(end) {}

  std::optional<std::string> next() override {
    std::string path;
    while (std::getline(list_, path, end_)) {
      if (!path.empty()) return path;
    }
    return std::nullopt;
  }

 private:
  std::istream& list_;
  char end_;
};

}  // namespace

bool hasDocumentName(const fs::path& path) {
  std::string ending = path.extension();
  std::transform(ending.begin(), ending.end(), ending.begin(), lower);
  return std::find(kEndings.begin(), kEndings.end(), ending) != kEndings.end();
}

bool isPackageDirectory(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored) &&
         (hasDocumentName(path) || fs::exists(path / "Index.zip", ignored) ||
          fs::exists(path / "Index" / "Document.iwa", ignored));
}

std::unique_ptr<PathList> listPaths(std::vector<std::string> paths, bool allFiles) {
  return std::make_unique<WalkedPaths>(std::move(paths), allFiles);
}

std::unique_ptr<PathList> readPaths(std::istream& list, char end) {
  return std::make_unique<ReadPaths>(list, end);
}

}  // namespace dorvex::cli
