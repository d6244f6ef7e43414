#include "tables/cell_value.h"

#include <cmath>

namespace dorvex::content {

std::string shownValue(const Message<TSCE::CellValueArchive>& value, Formatting& formatting) {
  using Value = TSCE::CellValueArchive;
  using String = TSCE::StringCellValueArchive;
  using Number = TSCE::NumberCellValueArchive;
  using Date = TSCE::DateCellValueArchive;
  std::string text;
  if (const auto string = value.find(Value::string_value)) {
    CellFormat(string->get(String::format), formatting)
        .appendText(string->get(String::value), text);
  } else if (const auto number = value.find(Value::number_value)) {
    const double stored = number->get(Number::value);
    if (std::isfinite(stored))
      CellFormat(number->get(Number::format), formatting)
          .appendNumber(Decimal(stored), formatting.symbols(), text);
  } else if (const auto date = value.find(Value::date_value)) {
    CellFormat(date->get(Date::format), formatting)
        .appendDate(date->get(Date::value), formatting.symbols(), text);
  } else if (const auto boolean = value.find(Value::boolean_value)) {
    CellFormat::appendBool(boolean->get(TSCE::BooleanCellValueArchive::value), text);
  }
  return text;
}

}  // namespace dorvex::content
