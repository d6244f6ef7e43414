// Where a writer's bytes go: collected, and handed on in pieces.
#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>
#include <utility>

namespace dorvex::content {

class Output {
 public:
  // Takes the next bytes. What it throws ends the reading.
  using Take = std::function<void(std::string_view bytes)>;

  explicit Output(Take take)
      : take_(std::move(take)), pending_(std::make_unique_for_overwrite<char[]>(kPiece)) {}
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void put(char byte) {
    if (size_ == kPiece) flush();
    pending_[size_++] = byte;
  }
  void put(std::string_view bytes) {
    if (bytes.size() > kPiece - size_) return putBeyond(bytes);
    std::memcpy(pending_.get() + size_, bytes.data(), bytes.size());
    size_ += bytes.size();
  }

  // Hands on what is left; nothing does it at the end by itself.
  void flush() {
    if (size_ == 0) return;
    take_({pending_.get(), size_});
    size_ = 0;
  }

 private:
  static constexpr std::size_t kPiece = std::size_t{64} * 1024;

  // What the piece has no room for; what no piece has room for is handed on as it lies.
  void putBeyond(std::string_view bytes) {
    flush();
    if (bytes.size() > kPiece) return take_(bytes);
    put(bytes);
  }

  Take take_;
  std::unique_ptr<char[]> pending_;  // kPiece bytes
  std::size_t size_ = 0;             // of those that are pending
};

}  // namespace dorvex::content
