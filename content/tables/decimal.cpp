#include "tables/decimal.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

namespace dorvex::content {
namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kExponentBias = 6176;
constexpr unsigned kCoefficientBits = 113;
// Exponent fields from here on announce infinities and what is not a number.
constexpr std::uint64_t kFirstSpecialExponent = 0x3000;

std::uint64_t littleEndian(std::string_view bytes) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes.data(), sizeof value);
  return value;
}

// Writes the digits of value and returns their end.
char* writeDigits(Wide value, char* first, char* last) {
  constexpr std::uint64_t kChunk = 1'000'000'000'000'000'000;  // 18 digits
  if (value <= std::numeric_limits<std::uint64_t>::max())
    return std::to_chars(first, last, static_cast<std::uint64_t>(value)).ptr;
  char* const end = writeDigits(value / kChunk, first, last);
  auto rest = static_cast<std::uint64_t>(value % kChunk);
  for (char* digit = end + 18; digit != end; rest /= 10)
    *--digit = static_cast<char>('0' + rest % 10);
  return end + 18;
}

}  // namespace

Decimal::Decimal(double value) {
  std::array<char, 32> text{};
  const auto* const end =
      std::to_chars(text.begin(), text.end(), std::abs(value), std::chars_format::scientific).ptr;
  auto* const mark = std::find(text.begin(), text.end(), 'e');
  std::string digits(text.begin(), mark);
  std::erase(digits, '.');
  int exponent = 0;
  const char* const sign = mark + 1;
  std::from_chars(*sign == '+' ? sign + 1 : sign, end, exponent);
  assign(std::signbit(value), digits, exponent - static_cast<int>(digits.size()) + 1);
}

std::optional<Decimal> Decimal::fromBits(std::string_view bits) {
  if (bits.size() < 16) return std::nullopt;
  const std::uint64_t low = littleEndian(bits);
  const std::uint64_t high = littleEndian(bits.substr(8));
  const std::uint64_t exponent = high >> (kCoefficientBits - 64) & 0x3FFF;
  if (exponent >= kFirstSpecialExponent) return std::nullopt;
  const std::uint64_t highCoefficient = high & ((std::uint64_t{1} << (kCoefficientBits - 64)) - 1);

  std::array<char, 40> digits{};
  const char* const end =
      writeDigits(Wide{highCoefficient} << 64 | low, digits.data(), digits.data() + digits.size());
  Decimal decimal;
  decimal.assign(high >> 63 != 0, {digits.data(), end}, static_cast<int>(exponent) - kExponentBias);
  return decimal;
}

void Decimal::assign(bool negative, std::string_view digits, int exponent) {
  while (digits.size() > 1 && digits.back() == '0') {
    digits.remove_suffix(1);
    ++exponent;
  }
  const bool zero = digits == "0";
  negative_ = negative && !zero;
  exponent_ = zero ? 0 : exponent;
  count_ = static_cast<std::uint8_t>(digits.size());
  std::ranges::copy(digits, digits_.begin());
}

// Keeps the first count digits, rounded.
void Decimal::keepDigits(int count) {
  if (count >= static_cast<int>(count_)) return;
  if (count < 0 || (count == 0 && digits_[0] < '5')) return assign(false, "0", 0);
  const auto kept = static_cast<std::size_t>(count);
  const int exponent = exponent_ + static_cast<int>(count_) - count;
  const bool up = digits_[kept] >= '5';
  std::size_t end = kept;
  if (up) {
    while (end > 0 && digits_[end - 1] == '9') --end;
    if (end == 0) return assign(negative_, "1", exponent + count);
    ++digits_[end - 1];
  }
  const std::string digits(digits_.data(), end);
  assign(negative_, digits, exponent + count - static_cast<int>(end));
}

void Decimal::roundToPlaces(int places) { keepDigits(pointPosition() + places); }

void Decimal::roundToDigits(int count) { keepDigits(count); }

double Decimal::toDouble() const {
  // What both fit in a double exactly gives the nearest one when divided or multiplied.
  constexpr std::size_t kMostExactDigits = 15;
  static constexpr std::array kPowers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                      1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                      1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
  const auto power = static_cast<std::size_t>(std::abs(exponent_));
  if (count_ <= kMostExactDigits && power < kPowers.size()) {
    std::uint64_t integer = 0;
    std::from_chars(digits_.data(), digits_.data() + count_, integer);
    const auto whole = static_cast<double>(integer);
    const double value = exponent_ < 0 ? whole / kPowers[power] : whole * kPowers[power];
    return negative_ ? -value : value;
  }
  std::array<char, 56> text{};
  char* end = std::copy_n(digits_.data(), count_, text.data());
  *end++ = 'e';
  end = std::to_chars(end, text.data() + text.size(), exponent_).ptr;
  double value = 0;
  if (std::from_chars(text.data(), end, value).ec == std::errc::result_out_of_range)
    value = pointPosition() > 0 ? std::numeric_limits<double>::max() : 0;
  return negative_ ? -value : value;
}

std::string Decimal::text() const {
  constexpr int kLongest = 40;
  std::string text = negative_ ? "-" : "";
  const int point = pointPosition();
  const auto zeros = [](int count) { return std::string(static_cast<std::size_t>(count), '0'); };
  if (point > kLongest || point < -kLongest) {
    text += digits_[0];
    if (count_ > 1) text.append(".").append(digits().substr(1));
    return text + 'E' + std::to_string(point - 1);
  }
  if (point <= 0) return text.append("0.").append(zeros(-point)).append(digits());
  if (exponent_ >= 0) return text.append(digits()).append(zeros(exponent_));
  const auto whole = static_cast<std::size_t>(point);
  return text.append(digits().substr(0, whole)).append(".").append(digits().substr(whole));
}

bool Decimal::exceedsDouble() const {
  constexpr double kLargestInteger = 9007199254740992;  // 2^53
  return count_ > 15 ||
         (exponent_ >= 0 && pointPosition() > 15 && std::abs(toDouble()) > kLargestInteger);
}

}  // namespace dorvex::content
