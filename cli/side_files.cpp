#include "side_files.h"

#include <cerrno>
#include <cstring>

#include "exit_status.h"

namespace dorvex::cli {
namespace {

constexpr std::size_t kLongestSideName = 200;

bool isPlainInName(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x20 && value != 0x7F && byte != '/' && byte != '\\';
}

}  // namespace

std::string plainFileName(std::string_view name) {
  std::string plain(name.substr(0, kLongestSideName));
  for (char& byte : plain) {
    if (!isPlainInName(byte)) byte = '_';
  }
  if (plain.empty() || plain.front() == '.') plain.insert(plain.begin(), '_');
  return plain;
}

void SideFiles::take(const Piece& piece) {
  if (piece.type == PieceType::kFileName) {
    finish();
    begin(plainFileName(piece.bytes));
  } else if (file_) {
    file_->output().write(piece.bytes);
  }
}

void SideFiles::begin(const std::string& name) {
  target_ = folder_ / name;
  std::filesystem::create_directories(folder_);
  if (OutputFile::isTaken(target_)) {
    if (onExists_ == OnExists::kSkip) return;
    if (onExists_ == OnExists::kFail) throw EnvironmentError(target_.string() + " exists already");
  }
  try {
    file_ = std::make_unique<OutputFile>(target_);
  } catch (const OutputError& error) {
    throw EnvironmentError(target_.string() + ": " + std::strerror(error.error));
  }
}

void SideFiles::finish() {
  if (!file_) return;
  try {
    file_->keep(onExists_ == OnExists::kReplace);
  } catch (const OutputError& error) {
    throw EnvironmentError(target_.string() + ": " + std::strerror(error.error));
  }
  file_.reset();
}

}  // namespace dorvex::cli
