// Documents with values that no walk gives: a writer's output is valid whatever it gets.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "dorvex/content.h"

namespace dorvex::testing {

// What decides how a document looks.
class Choices {
 public:
  virtual ~Choices() = default;
  // A number below limit, which is not 0; where nothing is left to decide by, 0.
  virtual std::uint32_t below(std::uint32_t limit) = 0;
};

// The same seed makes the same choices.
class RandomChoices final : public Choices {
 public:
  explicit RandomChoices(std::uint32_t seed) : random_(seed) {}
  std::uint32_t below(std::uint32_t limit) override {
    return static_cast<std::uint32_t>(random_() % limit);
  }

 private:
  std::mt19937 random_;
};

// A string that is markup of some kind, no UTF-8, or not to be seen.
std::string oddString(Choices& choices);

// A table of few rows and columns; its cells are the same however often they are read.
content::Table oddTable(Choices& choices);

// Gives a sink a whole document, its parts in the order that is promised to it.
void giveOddDocument(Choices& choices, content::Sink& sink);

}  // namespace dorvex::testing
