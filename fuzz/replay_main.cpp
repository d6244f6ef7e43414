// The main of the fuzz targets in builds without a fuzzer: runs every file of
// the given folders, as a test.
//
//   <layer>_fuzzer FOLDER_OR_FILE...
//
// A folder that is missing is an error, and so is no file at all.
#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz_input.h"

namespace {

namespace fs = std::filesystem;

// Known to the signal handler, which may only write.
std::string running;

void nameTheInput(int signal) {
  std::fputs("died on ", stderr);
  std::fputs(running.c_str(), stderr);
  std::fputs("\n", stderr);
  std::signal(signal, SIG_DFL);
  std::raise(signal);
}

std::vector<fs::path> filesOf(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(place)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::ranges::sort(files);
  return files;
}

void replay(const fs::path& path) {
  running = path.string();
  std::ifstream file(path, std::ios::binary);
  if (!file) throw fs::filesystem_error("cannot be opened", path, std::error_code());
  const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
    std::signal(signal, nameTheInput);
  std::size_t count = 0;
  try {
    for (int i = 1; i < argc; ++i) {
      for (const fs::path& file : filesOf(argv[i])) {
        replay(file);
        ++count;
      }
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", running.c_str(), error.what());
    return 1;
  }
  std::printf("%zu inputs\n", count);
  return count > 0 ? 0 : 1;
}
