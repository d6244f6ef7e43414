#include "tables/format.h"

#include <algorithm>
#include <tuple>

#include "graph/overloads.h"
#include "graph/plain_text.h"
#include "tables/document.h"

namespace dorvex::content {
namespace {

using FormatStruct = TSK::FormatStructArchive;

// The values of format_type.
enum FormatType : std::uint32_t {
  kBoolean = 1,
  kNumber = 256,
  kCurrency = 257,
  kPercentage = 258,
  kScientific = 259,
  kText = 260,
  kDate = 261,
  kFraction = 262,
  kCheckbox = 263,
  kStepper = 264,
  kSlider = 265,
  kPopup = 266,
  kRating = 267,
  kDuration = 268,
  kBase = 269,
  kCustomNumber = 270,
  kCustomText = 271,
  kCustomDate = 272,
  kCustomCurrency = 274,
};

std::string_view nameOf(std::uint32_t type) {
  switch (type) {
    case kBoolean:
      return "boolean";
    case kNumber:
      return "number";
    case kCurrency:
      return "currency";
    case kPercentage:
      return "percentage";
    case kScientific:
      return "scientific";
    case kText:
      return "text";
    case kDate:
      return "date";
    case kFraction:
      return "fraction";
    case kCheckbox:
      return "checkbox";
    case kStepper:
      return "stepper";
    case kSlider:
      return "slider";
    case kPopup:
      return "popup";
    case kRating:
      return "rating";
    case kDuration:
      return "duration";
    case kBase:
      return "base";
    case kCustomNumber:
    case kCustomText:
    case kCustomDate:
    case kCustomCurrency:
      return "custom";
    default:
      return {};
  }
}

Control controlOfType(std::uint32_t type) {
  switch (type) {
    case kCheckbox:
      return Control::kCheckbox;
    case kStepper:
      return Control::kStepper;
    case kSlider:
      return Control::kSlider;
    case kPopup:
      return Control::kPopup;
    case kRating:
      return Control::kRating;
    default:
      return Control::kNone;
  }
}

CustomKind customKind(std::uint32_t type) {
  if (type == kCustomText) return CustomKind::kText;
  return type == kCustomDate ? CustomKind::kDate : CustomKind::kNumber;
}

// What formats consist of; what is longer than this is damage.
std::string shortText(std::string_view text) {
  constexpr std::size_t kLongest = 900;
  return plainText(text.substr(0, kLongest));
}

}  // namespace

Formatting::Formatting(Reading& reading) : symbols_(reading) {
  using List = TSK::CustomFormatListArchive;
  const auto list =
      reading.get<List>(sharedDocument(reading).get(TSA::DocumentArchive::custom_format_list));
  const auto formats = list.all(List::custom_formats);
  auto format = formats.begin();
  for (const auto& uid : list.all(List::uuids)) {
    if (format == formats.end()) break;
    customs_.push_back({uid.get(TSP::UUID::upper), uid.get(TSP::UUID::lower), *format, nullptr});
    ++format;
  }
  std::ranges::stable_sort(customs_, {}, [](auto& c) { return std::tuple(c.upper, c.lower); });
}

const CustomFormat* Formatting::custom(const FormatArchive& use, const CustomArchive& ofTable) {
  if (const auto* listed = listedCustom(use.get(FormatStruct::custom_uid))) return listed;
  const CustomArchive own = use.find(FormatStruct::custom_format).value_or(ofTable);
  if (!own.has(TSK::CustomFormatArchive::default_format)) return nullptr;
  return own_.emplace_back(std::make_unique<CustomFormat>(own, symbols_)).get();
}

const CustomFormat* Formatting::listedCustom(const Message<TSP::UUID>& uid) {
  const std::tuple wanted(uid.get(TSP::UUID::upper), uid.get(TSP::UUID::lower));
  const auto found = std::ranges::lower_bound(customs_, wanted, {},
                                              [](auto& c) { return std::tuple(c.upper, c.lower); });
  if (found == customs_.end() || std::tuple(found->upper, found->lower) != wanted) return nullptr;
  if (!found->compiled) found->compiled = std::make_unique<CustomFormat>(found->archive, symbols_);
  return found->compiled.get();
}

CellFormat::CellFormat(const FormatArchive& archive, Formatting& formatting,
                       const CustomArchive& ofTable) {
  const std::uint32_t type = archive.get(FormatStruct::format_type);
  name_ = nameOf(type);
  control_ = controlOfType(type);
  // A stepper or slider shows its number in a format of its own.
  const bool control = type == kStepper || type == kSlider;
  compile(control ? archive.get(FormatStruct::control_format_type, std::uint32_t{kNumber}) : type,
          archive, formatting, ofTable);
}

void CellFormat::compile(std::uint32_t type, const FormatArchive& archive, Formatting& formatting,
                         const CustomArchive& ofTable) {
  const Symbols& symbols = formatting.symbols();
  switch (type) {
    case kNumber:
      shown_ = DecimalFormat::number(archive);
      break;
    case kCurrency:
      shown_ = DecimalFormat::currency(archive, symbols);
      typeOfNumber_ = CellType::kCurrency;
      currency_ = shortText(archive.get(FormatStruct::currency_code));
      break;
    case kPercentage:
      shown_ = DecimalFormat::percentage(archive, symbols);
      typeOfNumber_ = CellType::kPercentage;
      break;
    case kScientific:
      shown_ = ScientificFormat(archive);
      break;
    case kDate:
      if (const auto pattern = archive.find(FormatStruct::date_time_format))
        shown_ = DateFormat(shortText(*pattern));
      break;
    case kFraction:
      shown_ = FractionFormat(archive);
      break;
    case kPopup:
      choices_ = archive.find(FormatStruct::multiple_choice_list_id);
      break;
    case kRating:
      shown_ = RatingFormat();
      break;
    case kDuration:
      shown_ = DurationFormat(archive, symbols);
      break;
    case kBase:
      shown_ = BaseFormat(archive);
      break;
    case kCustomCurrency:
      typeOfNumber_ = CellType::kCurrency;
      currency_ = shortText(archive.get(FormatStruct::currency_code));
      [[fallthrough]];
    case kCustomNumber:
    case kCustomText:
    case kCustomDate:
      if (const CustomFormat* custom = formatting.custom(archive, ofTable))
        shown_ = CustomUse{custom, customKind(type)};
      break;
    default:
      break;
  }
}

const CustomFormat* CellFormat::custom(CustomKind kind) const {
  const auto* use = std::get_if<CustomUse>(&shown_);
  return use != nullptr && use->kind == kind ? use->format : nullptr;
}

void CellFormat::appendNumber(const Decimal& number, const Symbols& symbols,
                              std::string& out) const {
  const auto plain = [&](const auto&) { appendPlainNumber(number, symbols, out); };
  const auto formatted = [&](const auto& format) { format.append(number, symbols, out); };
  std::visit(Overloads{
                 [&](const std::monostate& none) { plain(none); },
                 [&](const DateFormat& format) { plain(format); },
                 [&](const DurationFormat& format) { plain(format); },
                 [&](const CustomUse& use) {
                   if (use.kind == CustomKind::kDate) return plain(use);
                   use.format->appendNumber(number, symbols, out);
                 },
                 [&](const auto& format) { formatted(format); },
             },
             shown_);
}

void CellFormat::appendDate(double seconds, const Symbols& symbols, std::string& out) const {
  if (const auto* format = std::get_if<DateFormat>(&shown_)) {
    format->append(seconds, symbols, out);
  } else if (const auto* dates = custom(CustomKind::kDate)) {
    dates->appendDate(seconds, symbols, out);
  } else {
    DateFormat(symbols.shortDatePattern + ' ' + symbols.shortTimePattern)
        .append(seconds, symbols, out);
  }
}

void CellFormat::appendDuration(double seconds, const Symbols& symbols, std::string& out) const {
  if (const auto* format = std::get_if<DurationFormat>(&shown_))
    return format->append(seconds, symbols, out);
  DurationFormat().append(seconds, symbols, out);
}

void CellFormat::appendText(std::string_view text, std::string& out) const {
  if (const auto* texts = custom(CustomKind::kText)) return texts->appendText(text, out);
  appendPlainText(text, out);
}

}  // namespace dorvex::content
