// Formats that a person has made: patterns of literal text and a number's digits, with
// others for numbers that meet a condition.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "tables/date_format.h"
#include "tables/number_format.h"

namespace dorvex::content {

// What stands for a number in a custom pattern: "#,##0.00##".
struct DigitPattern {
  int wholeZeros = 0;                  // places of the whole part that are padded
  bool hasWhole = false;               // whether the whole part has places at all
  int fractionZeros = 0;               // places behind the point that are padded
  int fractionHashes = 0;              // places behind the point that may stay empty
  bool padsWholeWithZeros = false;     // else with spaces
  bool padsFractionWithZeros = false;  // else with spaces
  bool grouped = false;

  // Appends the magnitude of a number.
  void append(Decimal number, const Symbols& symbols, std::string& out) const;
};

// A pattern with what it is for: one branch of a custom format.
class CustomPattern {
 public:
  CustomPattern(const FormatArchive& format, const Symbols& symbols);

  void appendNumber(Decimal number, bool showsMinus, const Symbols& symbols,
                    std::string& out) const;
  void appendText(std::string_view text, std::string& out) const;

 private:
  enum class Kind : std::uint8_t { kLiteral, kDigits, kScientific, kFraction, kText };
  struct Part {
    Kind kind = Kind::kLiteral;
    std::string literal;
  };

  void parse(std::string_view pattern, const FormatArchive& format, const Symbols& symbols);
  void takeDigits(std::string_view& pattern, const FormatArchive& format);
  std::string& literal();
  bool has(Kind kind) const;

  std::vector<Part> parts_;
  DigitPattern digits_;
  FractionFormat fraction_;
  std::optional<double> factor_;
  int shift_ = 0;
};

class CustomFormat {
 public:
  CustomFormat(const Message<TSK::CustomFormatArchive>& format, const Symbols& symbols);

  void appendNumber(const Decimal& number, const Symbols& symbols, std::string& out) const;
  void appendText(std::string_view text, std::string& out) const;
  void appendDate(double seconds, const Symbols& symbols, std::string& out) const;

 private:
  struct Condition {
    std::uint32_t type;
    double value;
    CustomPattern pattern;

    bool holds(double number) const;
  };

  std::vector<Condition> conditions_;
  CustomPattern default_;
  DateFormat date_;
};

}  // namespace dorvex::content
