// What all fuzz targets share: taking an input apart, and the end of a run in
// which a promise was broken.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

namespace dorvex::fuzz {

// Ends the process, so that the fuzzer keeps the input, unless the condition holds.
inline void require(bool condition, const char* promise) {
  if (condition) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

// Takes an input apart from the front. Where it is used up, numbers are 0 and
// texts are empty, so that every input means something.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size)
      : left_(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return left_.empty(); }

  std::uint8_t byte() {
    if (left_.empty()) return 0;
    const auto value = static_cast<std::uint8_t>(left_.front());
    left_.remove_prefix(1);
    return value;
  }

  // Two bytes, the lower one first.
  std::uint16_t word() {
    const unsigned low = byte();
    return static_cast<std::uint16_t>(low | static_cast<unsigned>(byte()) << 8);
  }

  std::string_view take(std::size_t size) {
    const std::string_view taken = left_.substr(0, size);
    left_.remove_prefix(taken.size());
    return taken;
  }

  // Everything that is left. The last byte of the input is the last byte of it,
  // so that the sanitizer sees whoever reads on.
  std::string_view rest() { return take(left_.size()); }

 private:
  std::string_view left_;
};

// The lengths of reads, twelve of them over and over; 0 is a read of everything
// asked for.
class ReadLengths {
 public:
  // Reads of everything.
  ReadLengths() = default;
  // Takes twelve bytes.
  explicit ReadLengths(FuzzInput& input) {
    for (std::uint8_t& length : lengths_) length = input.byte();
  }

  std::size_t next(std::size_t asked) {
    const std::size_t length = lengths_[position_++ % lengths_.size()];
    return length == 0 ? asked : std::min(length, asked);
  }

 private:
  std::array<std::uint8_t, 12> lengths_{};
  std::size_t position_ = 0;
};

}  // namespace dorvex::fuzz

// The entry point of every target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
