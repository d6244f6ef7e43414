// A folder for the files of one test.
#pragma once

#include <filesystem>

namespace dorvex::testing {

// A new folder in the system's temporary folder, removed with all it holds.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory();

  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace dorvex::testing
