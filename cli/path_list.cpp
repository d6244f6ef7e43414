#include "path_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <deque>
#include <system_error>
#include <utility>

#include "exit_status.h"
#include "line_reader.h"

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
    for (auto& path : paths) {
      const bool folder = path != "-" && isFolder(path);
      waiting_.push_back({std::move(path), true, folder});
    }
  }

  std::optional<ListedPath> next() override {
    while (!waiting_.empty()) {
      Waiting first = std::move(waiting_.front());
      waiting_.pop_front();
      if (first.fault) return ListedPath{first.path, false, first.fault};
      if (first.folder && !isPackageDirectory(first.path)) {
        unfold(first.path);
      } else if (first.named || isDocument(first.path)) {
        return ListedPath{first.path, first.named && first.path == "-"};
      }
    }
    return std::nullopt;
  }

 private:
  struct Waiting {
    std::string path;
    bool named;   // by the user
    bool folder;  // not through a link, unless named
    std::error_code fault = {};
  };

  static bool isFolder(const std::string& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
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

  // Puts what a folder holds in its place. The folder says of what kind its
  // entries are: they need not be entered for that.
  void unfold(const std::string& folder) {
    std::error_code error;
    std::vector<Waiting> entries;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
      std::error_code ignored;
      const bool isLink = entry->is_symlink(ignored);
      entries.push_back({entry->path(), false, !isLink && entry->is_directory(ignored)});
    }
    std::sort(entries.begin(), entries.end(),
              [](const Waiting& a, const Waiting& b) { return a.path > b.path; });
    if (error) waiting_.push_front({folder, false, false, error});
    for (auto& entry : entries) waiting_.push_front(std::move(entry));
  }

  std::deque<Waiting> waiting_;
  bool allFiles_;
};

class ReadPaths final : public PathList {
 public:
  ReadPaths(const std::string& file, char end)
      : name_(file == "-" ? "standard input" : file),
        end_(end),
        fd_(file == "-" ? STDIN_FILENO : ::open(file.c_str(), O_RDONLY | O_CLOEXEC)),
        lines_(fd_, end) {
    if (fd_ < 0) fail(std::strerror(errno));
  }
  ~ReadPaths() override {
    if (fd_ != STDIN_FILENO) ::close(fd_);
  }
  ReadPaths(const ReadPaths&) = delete;
  ReadPaths& operator=(const ReadPaths&) = delete;

  std::optional<ListedPath> next() override {
    try {
      while (auto line = lines_.next()) {
        if (end_ == '\n') checkLine(*line);
        if (!line->empty()) return ListedPath{std::move(*line)};
      }
      return std::nullopt;
    } catch (const std::system_error& error) {
      fail(error.code().message());
    }
  }

 private:
  void checkLine(std::string& line) const {
    if (line.ends_with('\r')) line.pop_back();
    if (line.find('\0') != std::string::npos) {
      fail("NUL in a line of the list: -0 is for paths that end with it");
    }
  }

  [[noreturn]] void fail(const std::string& why) const {
    throw EnvironmentError(name_ + ": " + why);
  }

  const std::string name_;
  const char end_;
  const int fd_;
  LineReader lines_;
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

std::unique_ptr<PathList> readPaths(const std::string& file, char end) {
  return std::make_unique<ReadPaths>(file, end);
}

std::unique_ptr<PathList> listOf(const InputOptions& options) {
  if (options.filesFrom.empty()) return listPaths(options.paths, options.allFiles);
  return readPaths(options.filesFrom, options.nul ? '\0' : '\n');
}

bool mayBeSeveral(const InputOptions& options) {
  std::error_code ignored;
  return options.paths.size() != 1 || (fs::is_directory(options.paths.front(), ignored) &&
                                       !isPackageDirectory(options.paths.front()));
}

}  // namespace dorvex::cli
