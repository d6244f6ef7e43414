// How the cells of a table show their values: each format of a table is compiled once,
// for all cells that have it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "dorvex/content.h"
#include "graph/reading.h"
#include "tables/custom_format.h"
#include "tables/date_format.h"
#include "tables/duration_format.h"
#include "tables/number_format.h"
#include "tables/symbols.h"

namespace dorvex::content {

// What a person has made; without a default format where there is none.
using CustomArchive = Message<TSK::CustomFormatArchive>;

// What the formats of a document work with.
class Formatting {
 public:
  explicit Formatting(Reading& reading);

  const Symbols& symbols() const { return symbols_; }
  // The custom format that a format uses: that of the document's list, else the one that
  // it brings along, else the one of its table. Null where there is none.
  const CustomFormat* custom(const FormatArchive& use, const CustomArchive& ofTable);

 private:
  struct Custom {
    std::uint64_t upper, lower;
    CustomArchive archive;
    std::unique_ptr<CustomFormat> compiled;
  };

  const CustomFormat* listedCustom(const Message<TSP::UUID>& uid);

  Symbols symbols_;
  std::vector<std::unique_ptr<CustomFormat>> own_;
  std::vector<Custom> customs_;  // ascending by upper and lower
};

// What a custom format was made for; it shows nothing else.
enum class CustomKind : std::uint8_t { kNumber, kText, kDate };

struct CustomUse {
  const CustomFormat* format;
  CustomKind kind;
};

// A compiled format. What it cannot show is shown as a cell without a format shows it.
class CellFormat {
 public:
  CellFormat() = default;  // that of a cell without one
  // Tables of older documents have the custom formats of their cells themselves.
  CellFormat(const FormatArchive& archive, Formatting& formatting,
             const CustomArchive& ofTable = {});

  // The kind, as Cell::format has it.
  std::string_view name() const { return name_; }
  // The code of a currency; empty for none.
  const std::string& currency() const { return currency_; }
  // The control that a format of older documents stands for.
  Control control() const { return control_; }
  // The list of a pop-up menu of older documents.
  std::optional<std::uint32_t> choices() const { return choices_; }
  CellType typeOfNumber() const { return typeOfNumber_; }

  void appendNumber(const Decimal& number, const Symbols& symbols, std::string& out) const;
  void appendDate(double seconds, const Symbols& symbols, std::string& out) const;
  void appendDuration(double seconds, const Symbols& symbols, std::string& out) const;
  void appendText(std::string_view text, std::string& out) const;
  static void appendBool(bool value, std::string& out) { out += value ? "TRUE" : "FALSE"; }

 private:
  void compile(std::uint32_t type, const FormatArchive& archive, Formatting& formatting,
               const CustomArchive& ofTable);
  // The custom format, if it was made for that.
  const CustomFormat* custom(CustomKind kind) const;

  std::variant<std::monostate, DecimalFormat, ScientificFormat, FractionFormat, BaseFormat,
               RatingFormat, DateFormat, DurationFormat, CustomUse>
      shown_;
  std::string_view name_;
  std::string currency_;
  Control control_ = Control::kNone;
  std::optional<std::uint32_t> choices_;
  CellType typeOfNumber_ = CellType::kNumber;
};

}  // namespace dorvex::content
