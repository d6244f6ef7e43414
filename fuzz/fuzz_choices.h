// Choices that the bytes of an input make.
#pragma once

#include <cstdint>

#include "content/support/odd_document.h"
#include "fuzz_input.h"

namespace dorvex::fuzz {

// A byte for each choice among few, two for others.
class FuzzChoices final : public testing::Choices {
 public:
  explicit FuzzChoices(FuzzInput& input) : input_(input) {}

  std::uint32_t below(std::uint32_t limit) override {
    constexpr std::uint32_t kByte = 256;
    constexpr std::uint32_t kWord = 65536;
    if (limit <= kByte) return input_.byte() % limit;
    if (limit <= kWord) return input_.word() % limit;
    const std::uint32_t high = input_.word();
    return (high << 16 | input_.word()) % limit;
  }

 private:
  FuzzInput& input_;
};

}  // namespace dorvex::fuzz
