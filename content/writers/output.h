// Where a writer's bytes go: collected, and handed on in pieces.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace dorvex::content {

class Output {
 public:
  // Takes the next bytes. What it throws ends the reading.
  using Take = std::function<void(std::string_view bytes)>;

  explicit Output(Take take) : take_(std::move(take)) { pending_.reserve(2 * kPiece); }
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void put(char byte) {
    pending_.push_back(byte);
    if (pending_.size() >= kPiece) flush();
  }
  void put(std::string_view bytes) {
    pending_.append(bytes);
    if (pending_.size() >= kPiece) flush();
  }

  // Hands on what is left; nothing does it at the end by itself.
  void flush() {
    if (pending_.empty()) return;
    take_(pending_);
    pending_.clear();
  }

 private:
  static constexpr std::size_t kPiece = std::size_t{64} * 1024;

  Take take_;
  std::string pending_;
};

}  // namespace dorvex::content
