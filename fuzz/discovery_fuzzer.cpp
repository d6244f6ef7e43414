// Package discovery over a generated directory: which files are opened, in which
// order, and the path that a host gives.
//
// Input: one byte, the kind of the path; two words and twelve bytes, see below;
// then a program of one-byte instructions, some with operands, that makes the
// directory.
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "Readers/dorvexsr/dorvexutil.h"
#include "Tools/vennik/vnexcept/vnexcept.h"
#include "fuzz_host.h"
#include "fuzz_input.h"
#include "reader_document.h"
#include "support/package_writer.h"
#include "support/temporary_directory.h"

namespace dorvex::fuzz {
namespace {

namespace fs = std::filesystem;

constexpr const char* kNames[] = {
    "Index",
    "Tables",
    "Index.zip",
    "Document.iwa",
    "Slide-1.iwa",
    "Tile.iwa",
    ".iwa",
    "Metadata",
    "Data",
    "index",
    "Tables.iwa",
    "Index.zip.iwa",
    "Document.iw",
    "xIndex.zip",
    "DocumentStylesheet.iwa",
    "BuildVersionHistory.plist",
};

// What files hold. Nothing here makes the walk of objects endless.
std::vector<std::string> makeContents() {
  const std::string sound = testing::iwa({testing::storage(1, {"text"})});
  const std::string other = testing::iwa({testing::storage(2, {"more"}), testing::comment(3, "c")});
  return {sound,
          other,
          "",
          testing::damagedChunk(),
          sound + "x",
          sound + testing::damagedChunk(),
          testing::zip({{"Document.iwa", other}}),
          testing::zip({{"Index.zip", testing::zip({{"Slide.iwa", sound}})}}),
          "no zip"};
}

class DirectoryMaker {
 public:
  DirectoryMaker(FuzzInput& input, fs::path root) : input_(input), folder_(std::move(root)) {}

  void run() {
    for (int steps = 0; steps < kMostSteps && !input_.empty(); ++steps) step(input_.byte());
  }

 private:
  static constexpr int kMostSteps = 48;
  static constexpr std::size_t kLongestName = 255;

  // Fails where the system does, for a path that is too long or taken: then
  // there is one entry less.
  void step(std::uint8_t instruction) {
    std::error_code error;
    switch (instruction % 8) {
      case 0:
      case 1:
      case 2:
        makeFile();
        break;
      case 3:
      case 4: {
        const fs::path folder = folder_ / name();
        if (folder.native().size() < kLongestPath && fs::create_directory(folder, error)) {
          folder_ = folder;
          ++depth_;
        }
        break;
      }
      case 5:
        if (depth_ > 0) {
          folder_ = folder_.parent_path();
          --depth_;
        }
        break;
      case 6:
        fs::create_directory(folder_ / name(), error);
        break;
      default:
        fs::create_directory_symlink(input_.byte() % 2 == 0 ? "." : "/nowhere", folder_ / name(),
                                     error);
    }
  }

  void makeFile() {
    static const std::vector<std::string> contents = makeContents();
    const fs::path path = folder_ / name();
    const std::string& bytes = contents[input_.byte() % contents.size()];
    std::ofstream(path, std::ios::binary) << bytes;
  }

  // A name that counts, or any other.
  std::string name() {
    const std::uint8_t choice = input_.byte();
    if (choice < 0xC0) return kNames[choice % std::size(kNames)];
    std::string any;
    if (choice >= 0xE0) {
      any.assign(kLongestName, 'x');
    } else {
      any = input_.take(choice % 32);
      std::ranges::replace(any, '/', '_');
      std::ranges::replace(any, '\0', '_');
    }
    if (any.empty() || any == "." || any == "..") any = "_";
    return choice % 2 == 0 ? any : any.substr(0, kLongestName - 4) + ".iwa";
  }

  static constexpr std::size_t kLongestPath = 2048;

  FuzzInput& input_;
  fs::path folder_;
  int depth_ = 0;
};

// The paths that discovery opens in a folder, in the order of the system; false
// when nothing comes behind them. A symbolic link that leads back into its own
// folder ends when the system no longer follows it, as it does for the reader.
bool listPaths(const std::string& folder, std::vector<std::string>& paths) {
  std::error_code error;
  fs::directory_iterator entries(folder, error);
  if (error) return false;
  for (const auto& entry : entries) {
    const std::string name = entry.path().filename().string();
    std::string path = folder;
    path.append("/").append(name);
    if (name == "Index.zip") {
      paths.push_back(path.substr(0, kPathBufferSize - 1));
      return true;
    }
    if (name == "Index") return listPaths(path, paths);
    if (name.ends_with(".iwa"))
      paths.push_back(path.substr(0, kPathBufferSize - 1));
    else if (name == "Tables" && !listPaths(path, paths))
      return false;
  }
  return true;
}

std::size_t rootEndPlainly(const std::string& path) {
  const bool byDocument = path.find("Document.iwa") != std::string::npos;
  if (!byDocument && path.find("BuildVersionHistory.plist") == std::string::npos)
    return std::string::npos;
  const std::size_t found = path.find(byDocument ? "Index" : "Metadata");
  return found == std::string::npos || found == 0 ? found : found - 1;
}

void checkRoot(const std::string& path) {
  require(findVirtualDirectoryEnd(path) == rootEndPlainly(path), "the root is found by its rule");
}

void checkDiscovery(const std::string& root, const std::string& documentPath,
                    ReadLengths readLengths) {
  FuzzHost host(readLengths);
  const ReaderDocument document(host.services(), host.addDocument("", documentPath));
  bool failed = false;
  try {
    populateMessageMap(document.context());
  } catch (const std::exception&) {
    failed = true;
  } catch (const EndedByHost&) {
    failed = true;
  }
  host.requireAllClosed();
  std::vector<std::string> expected;
  const bool readable = listPaths(root, expected);
  const auto& opened = host.openedPaths();
  require(opened.size() <= expected.size() &&
              std::equal(opened.begin(), opened.end(), expected.begin()),
          "files are opened in the order of the system");
  require(failed || (readable && opened.size() == expected.size()),
          "discovery opens every file unless it fails");
}

}  // namespace
}  // namespace dorvex::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace dorvex::fuzz;
  static constexpr const char* kMarkers[] = {"/Index/Document.iwa",
                                             "/Metadata/BuildVersionHistory.plist"};
  FuzzInput input(data, size);
  const std::string marker = kMarkers[input.byte() % std::size(kMarkers)];
  const ReadLengths readLengths(input);
  checkRoot(std::string(reinterpret_cast<const char*>(data), size));
  const dorvex::testing::TemporaryDirectory package;
  DirectoryMaker(input, package.path()).run();
  checkDiscovery(package.path().string(), package.path().string() + marker, readLengths);
  return 0;
}
