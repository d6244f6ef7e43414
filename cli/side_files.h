// The files that come beside a rendering: media, and tables as CSV.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "dorvex/rendering.h"
#include "output_file.h"

namespace dorvex::cli {

// A name that a worker has sent, which may be anything, as one that is a plain file in
// its folder.
std::string plainFileName(std::string_view name);

// Those of one document, in a folder that is made with the first of them. Each has its
// name once it is whole.
class SideFiles {
 public:
  SideFiles(std::filesystem::path folder, OnExists onExists)
      : folder_(std::move(folder)), onExists_(onExists) {}

  // Takes a piece that is no output. Throws EnvironmentError, and OutputError.
  void take(const Piece& piece);
  // The last file is whole.
  void finish();

 private:
  void begin(const std::string& name);

  std::filesystem::path folder_;
  OnExists onExists_;
  std::filesystem::path target_;
  std::unique_ptr<OutputFile> file_;  // null where nothing, or nothing new, is to be written
};

}  // namespace dorvex::cli
