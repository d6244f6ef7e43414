// Texts as JSON strings, written while they come in.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "blocks.h"

namespace dorvex::cli {

// One text after the other, with commas between. What is not UTF-8 is replaced by
// U+FFFD. C1 control characters are escaped like the others, for terminals too.
class JsonStrings {
 public:
  // A piece of the text that is under way. Pieces may end within a character.
  void add(std::string_view piece);
  // Ends a text. One of which nothing came is empty.
  void end();

  const Blocks& written() const { return written_; }
  // Moves what is written out.
  Blocks take() { return std::exchange(written_, {}); }
  std::uint64_t bytesIn() const { return bytesIn_; }
  // Numbers of the texts in which something was replaced, from 0.
  const std::vector<std::uint64_t>& replaced() const { return replaced_; }

 private:
  void begin();
  std::string_view addHeld(std::string_view piece);
  std::size_t addFirst(std::string_view text);
  void replace();

  Blocks written_;
  std::vector<std::uint64_t> replaced_;
  std::uint64_t bytesIn_ = 0;
  std::uint64_t number_ = 0;  // of the text under way
  bool begun_ = false;
  std::array<char, 4> held_{};  // the beginning of a character that a piece cut
  std::size_t heldCount_ = 0;
};

}  // namespace dorvex::cli
