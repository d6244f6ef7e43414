// Decimal numbers as documents store them, exact, with their digits at hand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace dorvex::content {

// digits × 10^exponent. Zero is one digit, of exponent 0.
class Decimal {
 public:
  Decimal() = default;
  // The shortest one that gives the double back, which must be finite.
  explicit Decimal(double value);
  // From the 16 bytes of an IEEE 754 decimal128 in binary integer form; nothing for
  // infinities and what is not a number.
  static std::optional<Decimal> fromBits(std::string_view bits);

  bool isNegative() const { return negative_; }
  bool isZero() const { return count_ == 1 && digits_[0] == '0'; }
  // Without leading and trailing zeros.
  std::string_view digits() const { return {digits_.data(), count_}; }
  // The number of digits before the point; 0 or less where zeros follow the point.
  int pointPosition() const { return static_cast<int>(count_) + exponent_; }

  void negate() { negative_ = !negative_ && !isZero(); }
  void makePositive() { negative_ = false; }
  // Multiplies by 10^places.
  void shift(int places) { exponent_ += isZero() ? 0 : places; }
  // To a number of digits behind the point, halves away from zero.
  void roundToPlaces(int places);
  void roundToDigits(int count);

  double toDouble() const;
  // The exact number: as 1234.5, or 1.2345E678 where that would be long.
  std::string text() const;
  // Whether a JSON reader that works with doubles, or prints 15 digits, may lose some.
  bool exceedsDouble() const;

 private:
  void assign(bool negative, std::string_view digits, int exponent);
  void keepDigits(int count);

  bool negative_ = false;
  std::uint8_t count_ = 1;
  int exponent_ = 0;
  std::array<char, 40> digits_{'0'};
};

}  // namespace dorvex::content
