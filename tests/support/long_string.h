// Strings of lengths at which 32 bits end.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <string>

namespace dorvex::testing {

// A string of any length that costs one small file: its pages are mapped again
// and again.
class LongString {
 public:
  explicit LongString(std::size_t length) : size_(length / kPiece * kPiece + 2 * kPiece) {
    const int file = memfd_create("text", 0);
    const std::string text(kPiece, 'a');
    EXPECT_EQ(write(file, text.data(), kPiece), static_cast<ssize_t>(kPiece));
    bytes_ = static_cast<char*>(
        mmap(nullptr, size_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    for (std::size_t at = 0; at < size_; at += kPiece) {
      mmap(bytes_ + at, kPiece, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, file, 0);
    }
    close(file);
    bytes_[length] = '\0';
  }
  LongString(const LongString&) = delete;
  LongString& operator=(const LongString&) = delete;
  ~LongString() { munmap(bytes_, size_); }

  const char* c_str() const { return bytes_; }

 private:
  static constexpr std::size_t kPiece = 8 << 20;
  std::size_t size_;
  char* bytes_;
};

}  // namespace dorvex::testing
