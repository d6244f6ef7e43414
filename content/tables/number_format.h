// The formats of numbers that a pattern does not describe: plain numbers, currencies,
// percentages, scientific notation, fractions, other bases, stars.
#pragma once

#include <cstdint>
#include <string>

#include "TSKArchives.h"
#include "graph/message.h"
#include "tables/number_text.h"
#include "tables/symbols.h"

namespace dorvex::content {

using FormatArchive = Message<TSK::FormatStructArchive>;

// How a number below zero is told from one above, as formats store it.
enum class NegativeStyle : std::uint8_t { kMinus, kRed, kParentheses, kRedParentheses };

// A number between what stands before and behind it.
class DecimalFormat {
 public:
  static DecimalFormat number(const FormatArchive& format);
  static DecimalFormat percentage(const FormatArchive& format, const Symbols& symbols);
  static DecimalFormat currency(const FormatArchive& format, const Symbols& symbols);

  void append(Decimal number, const Symbols& symbols, std::string& out) const;

 private:
  explicit DecimalFormat(const FormatArchive& format);

  NumberShape shape_;
  NegativeStyle negative_ = NegativeStyle::kMinus;
  int shift_ = 0;
  bool accounting_ = false;
  Affixes affixes_;
};

class ScientificFormat {
 public:
  explicit ScientificFormat(const FormatArchive& format);
  void append(const Decimal& number, const Symbols& symbols, std::string& out) const;

 private:
  unsigned places_;
};

class FractionFormat {
 public:
  explicit FractionFormat(const FormatArchive& format);
  void append(const Decimal& number, const Symbols& symbols, std::string& out) const;
  // What remains of a number without its whole part, between 0 and 1: "1/4", or
  // nothing. Adds 1 to whole where the remainder is shown as that.
  std::string remainder(double rest, std::uint64_t& whole) const;

 private:
  struct Fraction {
    std::uint64_t numerator = 0, denominator = 1;
  };
  Fraction nearest(double rest) const;

  std::uint32_t accuracy_;
};

class BaseFormat {
 public:
  explicit BaseFormat(const FormatArchive& format);
  void append(const Decimal& number, const Symbols& symbols, std::string& out) const;

 private:
  unsigned base_;
  unsigned places_;
  bool minusSign_;
};

// As many stars as the number, of five.
class RatingFormat {
 public:
  void append(const Decimal& number, const Symbols& symbols, std::string& out) const;
};

}  // namespace dorvex::content
