// A file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace dorvex {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() { reset(); }

  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  // Gives it away.
  int release() { return std::exchange(fd_, -1); }
  void reset() {
    // NOLINTNEXTLINE(clang-analyzer-core.UndefinedBinaryOperatorResult): it always has a value
    if (fd_ >= 0) ::close(std::exchange(fd_, -1));
  }

 private:
  int fd_ = -1;
};

}  // namespace dorvex
