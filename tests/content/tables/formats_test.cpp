// What each kind of format shows. A row says which document shows it, or that none does.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "TNArchives.h"
#include "TSAArchives.h"
#include "content/support/objects.h"
#include "tables/format.h"

namespace dorvex::content::formats_test {
namespace {

using Archive = TSK::FormatStructArchive;
using testing::bitsOf;
using testing::Wire;

const Symbols& english() {
  static const Symbols symbols("en_GB");
  return symbols;
}

Wire format(unsigned type) { return Wire().varint(Archive::format_type.number, type); }
Wire places(Wire wire, unsigned count) {
  return wire.varint(Archive::decimal_places.number, count);
}
Wire negative(Wire wire, unsigned style) {
  return wire.varint(Archive::negative_style.number, style);
}
Wire grouped(Wire wire) { return wire.varint(Archive::show_thousands_separator.number, 1); }
Wire currency(std::string_view code, unsigned decimals) {
  return places(format(257).bytes(Archive::currency_code.number, code), decimals);
}
Wire accounting(Wire wire) { return wire.varint(Archive::use_accounting_style.number, 1); }
Wire fraction(std::uint32_t accuracy) {
  return format(262).varint(Archive::fraction_accuracy.number, accuracy);
}
Wire base(unsigned radix, unsigned digits, bool minus) {
  return format(269)
      .varint(Archive::base.number, radix)
      .varint(Archive::base_places.number, digits)
      .varint(Archive::base_use_minus_sign.number, minus ? 1 : 0);
}

class FormatsTest : public ::testing::Test {
 protected:
  CellFormat compiled(const Wire& wire) {
    return CellFormat(FormatArchive(wire.str()), formatting_);
  }
  std::string shown(const Wire& wire, double number) {
    std::string text;
    compiled(wire).appendNumber(Decimal(number), english(), text);
    return text;
  }

  testing::Objects objects_{{}};
  Formatting formatting_{objects_.reading()};
};

struct NumberRow {
  const char* document;
  Wire format;
  double number;
  const char* text;
};

TEST_F(FormatsTest, ShowNumbers) {
  const NumberRow rows[] = {
      {"date_formats", places(format(256), 253), 2000, "2000"},
      {"issue-44", places(format(256), 4), 1, "1.0000"},
      {"issue-44", places(format(256), 5), -2, "-2.00000"},
      {"issue-44", negative(places(format(256), 253), 1), -100.1234, "100.1234"},
      {"issue-44", negative(places(format(256), 253), 2), -100, "(100)"},
      {"issue-44", negative(places(format(256), 253), 3), -100.1234, "(100.1234)"},
      {"issue-44", places(format(256), 2), 1000.123456, "1000.12"},
      {"none", grouped(places(format(256), 2)), 1234567.891, "1,234,567.89"},
      {"none", places(format(256), 253), 0.1 + 0.2, "0.3"},
      {"none", places(format(256), 253), 123456789012345678.0, "123456789012346000"},
      {"none", places(format(256), 0), -0.4, "-0"},
      {"none", negative(places(format(256), 0), 2), -0.4, "(0)"},
      {"none", places(format(256), 0), -0.0, "0"},
      {"none", places(format(256), 4000000000), 0.5, "0.500000000000000000000000000000"},
      {"test-7", places(format(258), 253), 0.012, "1.2%"},
      {"test-8", places(format(258), 1), 0.2, "20.0%"},
      {"none", negative(places(format(258), 0), 2), -0.05, "(5%)"},
      {"none", places(format(259), 2), 12345, "1.23E+04"},
      {"none", places(format(259), 253), 0.00025, "2.5E-04"},
      {"none", places(format(259), 1), -1e120, "-1.0E+120"},
      {"none", places(format(259), 2), 9.999, "1.00E+01"},
  };
  for (const NumberRow& row : rows)
    EXPECT_EQ(shown(row.format, row.number), row.text) << row.document << ' ' << row.number;
}

TEST_F(FormatsTest, ShowCurrencies) {
  const NumberRow rows[] = {
      {"test-7", currency("GBP", 2), 100, "£100.00"},
      {"none", grouped(currency("USD", 0)), 7010784, "$7,010,784"},
      {"issue-121", negative(grouped(currency("GBP", 0)), 3), 325, "£325"},
      {"none", negative(currency("GBP", 0), 3), -325, "(£325)"},
      {"none", currency("GBP", 2), -5, "-£5.00"},
      {"testNumbers2013", accounting(grouped(currency("EUR", 2))), -775, "€\t(775.00)"},
      {"testNumbers2013", accounting(grouped(currency("EUR", 2))), 3875, "€\t3,875.00"},
      {"none", currency("not a code", 2), 1, "not a code1.00"},
      {"none", currency("QXQ", 2), 1, "QXQ1.00"},
  };
  for (const NumberRow& row : rows)
    EXPECT_EQ(shown(row.format, row.number), row.text) << row.document << ' ' << row.number;
}

TEST_F(FormatsTest, PutACurrencyWhereItsLocaleDoes) {
  std::string british;  // as issue-9 shows it
  DecimalFormat::currency(FormatArchive(grouped(currency("USD", 0)).str()), english())
      .append(Decimal(7010784), english(), british);
  EXPECT_EQ(british, "US$7,010,784");
  const Symbols german("de_DE");
  std::string text;
  DecimalFormat::currency(FormatArchive(grouped(currency("EUR", 2)).str()), german)
      .append(Decimal(-1234.5), german, text);
  EXPECT_EQ(text, "-1.234,50\u00A0€");
}

TEST_F(FormatsTest, PutAPercentSignWhereItsLocaleDoes) {
  const Symbols german("de_DE");
  std::string text;
  DecimalFormat::percentage(FormatArchive(places(format(258), 1).str()), german)
      .append(Decimal(0.2), german, text);
  EXPECT_EQ(text, "20,0\u00A0%");
}

TEST_F(FormatsTest, GroupDigitsAsTheirLocaleDoes) {
  const Symbols indian("en_IN");
  std::string text;
  DecimalFormat::number(FormatArchive(grouped(places(format(256), 0)).str()))
      .append(Decimal(12345678), indian, text);
  EXPECT_EQ(text, "1,23,45,678");
}

TEST(SymbolsTest, TakeTheDefaultLocaleForANameThatIsNone) {
  for (const char* damaged : {"zzzz@calendar=", "en@=", "de_DE@calendar=;"}) {
    const Symbols symbols(damaged);
    EXPECT_EQ(symbols.locale, "en_US") << damaged;
    EXPECT_EQ(symbols.shortTimePattern, Symbols("en_US").shortTimePattern) << damaged;
  }
}

TEST_F(FormatsTest, ShowFractions) {
  const NumberRow rows[] = {
      {"test-7", fraction(0xFFFFFFFD), 0.25, "1/4"},
      {"test-7", fraction(0xFFFFFFFD), 0.1, "1/10"},
      {"none", fraction(0xFFFFFFFF), 3.14159, "3 1/7"},
      {"none", fraction(0xFFFFFFFE), 0.333, "1/3"},
      {"none", fraction(4), 0.5, "2/4"},
      {"none", fraction(4), 2.99, "3"},
      {"none", fraction(16), -1.25, "-1 4/16"},
      {"none", fraction(100), 0, "0"},
      {"none", fraction(0), 1.5, "2"},
      {"none", fraction(0xFFFFFFFD), 1e300, "1000000000000000000000000"},
  };
  for (const NumberRow& row : rows) {
    if (row.number < 1e100) {
      EXPECT_EQ(shown(row.format, row.number), row.text) << row.document << ' ' << row.number;
    } else {
      EXPECT_TRUE(shown(row.format, row.number).starts_with(row.text));
    }
  }
}

TEST_F(FormatsTest, ShowOtherBases) {
  const NumberRow rows[] = {
      {"none", base(16, 0, false), 255, "FF"},
      {"none", base(2, 8, false), 5, "00000101"},
      {"none", base(16, 0, false), -1, "FFFFFFFF"},
      {"none", base(16, 0, true), -255, "-FF"},
      {"none", base(2, 0, false), -2, "11111111111111111111111111111110"},
      {"none", base(16, 0, false), -4294967296.0, "FFFFFFFF00000000"},
      {"none", base(7, 0, false), -8, "-11"},
      {"none", base(36, 0, false), 35.4, "Z"},
      {"none", base(1, 0, false), 3, "11"},
  };
  for (const NumberRow& row : rows)
    EXPECT_EQ(shown(row.format, row.number), row.text) << row.document << ' ' << row.number;
}

TEST_F(FormatsTest, ShowControls) {
  const NumberRow rows[] = {
      {"none", format(267), 3, "★★★"},
      {"none", format(267), 99, "★★★★★"},
      {"none", format(267), -1, ""},
      {"none", places(format(264), 1).varint(Archive::control_format_type.number, 258), 0.5,
       "50.0%"},
      {"none", places(format(265), 0), 7, "7"},
  };
  for (const NumberRow& row : rows)
    EXPECT_EQ(shown(row.format, row.number), row.text) << row.document << ' ' << row.number;
  EXPECT_EQ(compiled(format(264)).control(), Control::kStepper);
  EXPECT_EQ(compiled(format(265)).control(), Control::kSlider);
  EXPECT_EQ(compiled(format(263)).control(), Control::kCheckbox);
}

TEST_F(FormatsTest, ShowNumbersWithoutAFormatOfTheirsPlainly) {
  EXPECT_EQ(shown(format(260), 2.5), "2.5");
  EXPECT_EQ(shown(format(261), 2.5), "2.5");
  EXPECT_EQ(shown(format(9999), -2.5), "-2.5");
  EXPECT_EQ(shown(format(270), 2.5), "2.5") << "a custom format that is missing";
}

TEST_F(FormatsTest, TellWhatTheyMakeOfANumber) {
  EXPECT_EQ(compiled(format(256)).typeOfNumber(), CellType::kNumber);
  EXPECT_EQ(compiled(format(258)).typeOfNumber(), CellType::kPercentage);
  EXPECT_EQ(compiled(currency("GBP", 2)).typeOfNumber(), CellType::kCurrency);
  EXPECT_EQ(compiled(currency("GBP", 2)).currency(), "GBP");
  EXPECT_EQ(compiled(fraction(4)).name(), "fraction");
}

// ---------------------------------------------------------------------------

struct DurationRow {
  const char* document;
  DurationStyle style;
  unsigned largest, smallest;
  bool automatic;
  double seconds;
  const char* text;
};

TEST(DurationFormat, ShowsItsUnits) {
  using enum DurationStyle;
  constexpr double kDay = 86'400 + 60 + 1.001;
  const DurationRow rows[] = {
      {"none", kCompact, 2, 32, false, kDay, "1:0:01:01.001"},
      {"none", kCompact, 8, 16, false, 61, "01:01"},
      {"none", kCompact, 16, 16, false, 5, "5"},
      {"none", kShort, 1, 32, false, 604'800 + 2 * 86'400 + 3 * 3'600 + 4 * 60 + 5.006,
       "1w 2d 3h 4m 5s 6ms"},
      {"none", kLong, 1, 2, false, 604'800 + 2 * 86'400, "1 week 2 days"},
      {"none", kLong, 4, 8, false, 3'600, "1 hour 0 minutes"},
      {"none", kShort, 4, 4, false, 5'400, "1h"},
      {"none", kShort, 0, 0, true, 0, "0d"},
      {"none", kShort, 0, 0, true, 5'400, "1h 30m"},
      {"none", kShort, 0, 0, true, -0.5, "-500ms"},
      {"none", kShort, 16, 1, false, 61, "61s"},
  };
  for (const DurationRow& row : rows) {
    std::string text;
    DurationFormat(row.style, row.largest, row.smallest, row.automatic, english())
        .append(row.seconds, english(), text);
    EXPECT_EQ(text, row.text) << row.document << ' ' << row.seconds;
  }
}

TEST(DurationFormat, SaysItsUnitsInTheDocumentsLanguage) {
  const Symbols french("fr_FR");
  std::string text;
  DurationFormat(DurationStyle::kLong, 4, 4, false, french).append(7'200, french, text);
  EXPECT_EQ(text, "2\u00A0heures");
}

TEST(DurationFormat, ShowsNothingForWhatIsNoDuration) {
  std::string text;
  DurationFormat().append(std::numeric_limits<double>::infinity(), english(), text);
  DurationFormat().append(std::numeric_limits<double>::quiet_NaN(), english(), text);
  DurationFormat().append(1e300, english(), text);
  EXPECT_EQ(text, "");
}

// ---------------------------------------------------------------------------

struct DateRow {
  const char* document;
  const char* pattern;
  double seconds;
  const char* text;
};

constexpr double kMay = 800721312;      // 2026-05-17T14:35:12
constexpr double kJanuary = -29804339;  // 2000-01-22T01:01:01

TEST(DateFormat, ShowsEachLetter) {
  constexpr DateRow kRows[] = {
      {"date_formats", "EEEE, d MMMM yyyy h:mm a", kJanuary, "Saturday, 22 January 2000 1:01 am"},
      {"date_formats", "EEE, d MMM yyyy HH:mm:ss", kJanuary, "Sat, 22 Jan 2000 01:01:01"},
      {"date_formats", "dd/MM/y", kJanuary, "22/01/2000"},
      {"date_formats", "d/M/yy", kJanuary, "22/1/00"},
      {"date_formats", "", kJanuary, ""},
      {"date-format-nospace", "EEEMdyyyyG", kMay, "Sun5172026AD"},
      {"date-format-nospace", "DwWF", kMay, "1372023"},
      {"date-format-nospace", "DDDwwWF", kMay, "1372023"},
      {"date-format-nospace", "hmmssaSSS", kMay, "23512pm000"},
      {"date-format-nospace", "KKmmssaSSSSS", kMay, "023512pm00000"},
      {"date-format-nospace", "'prefix'yyyy'suffix'", kMay, "prefix2026suffix"},
      {"none", "k K H h", kMay, "14 2 14 2"},
      {"none", "''yy 'o''clock'", kMay, "'26 o'clock"},
      {"none", "QQQ QQQQ", kMay, "Q2 2nd quarter"},
      {"none", "GGGG", kMay, "Anno Domini"},
      {"none", "SS", 0.567, "56"},
      {"none", "SSSSSSSS", 0.29, "29000000"},
      {"none", "A", 1.5, "1500"},
      {"none", "HH:mm:ss", 43199.99999999, "12:00:00"},
      {"none", "yyyy-MM-dd", -63113904000.0, "0001-01-01"},
      {"none", "'open", kMay, "open"},
  };
  for (const DateRow& row : kRows) {
    std::string text;
    DateFormat(row.pattern).append(row.seconds, english(), text);
    EXPECT_EQ(text, row.text) << row.document << ' ' << row.pattern;
  }
}

TEST(DateFormat, BeginsWeeksWhereTheLocaleDoes) {
  const Symbols american("en_US");
  std::string text;
  DateFormat("w W").append(kMay, american, text);
  EXPECT_EQ(text, "21 4");
}

TEST(DateFormat, NamesMonthsInTheDocumentsLanguage) {
  const Symbols german("de_DE");
  std::string text;
  DateFormat("EEEE, d. MMMM").append(kMay, german, text);
  EXPECT_EQ(text, "Sonntag, 17. Mai");
}

TEST(IsoDate, CountsFromTheBeginningOf2001) {
  const auto iso = [](double seconds) {
    std::string text;
    appendIsoDate(seconds, text);
    return text;
  };
  EXPECT_EQ(iso(0), "2001-01-01T00:00:00");
  EXPECT_EQ(iso(-1), "2000-12-31T23:59:59");
  EXPECT_EQ(iso(0.9), "2001-01-01T00:00:00");
  EXPECT_EQ(iso(-0.00000001), "2001-01-01T00:00:00");
  EXPECT_EQ(iso(kMay), "2026-05-17T14:35:12");
  EXPECT_EQ(iso(1e300), "");
  EXPECT_EQ(iso(std::numeric_limits<double>::quiet_NaN()), "");
}

// ---------------------------------------------------------------------------

struct CustomRow {
  const char* document;
  const char* pattern;
  bool grouped, zerosBefore, zerosBehind;
  double number;
  const char* text;
};

Wire custom(const CustomRow& row) {
  Wire wire = format(270);
  wire.bytes(Archive::custom_format_string.number, row.pattern);
  wire.varint(Archive::show_thousands_separator.number, row.grouped ? 1 : 0);
  wire.varint(Archive::num_nonspace_integer_digits.number, row.zerosBefore ? 1 : 0);
  wire.varint(Archive::num_nonspace_decimal_digits.number, row.zerosBehind ? 1 : 0);
  wire.bytes(Archive::currency_code.number, "GBP");
  return wire;
}

std::string shownBy(const Wire& archive, double number) {
  std::string text;
  const Wire whole = Wire().message(TSK::CustomFormatArchive::default_format.number, archive);
  CustomFormat(Message<TSK::CustomFormatArchive>(whole.str()), english())
      .appendNumber(Decimal(number), english(), text);
  return text;
}

TEST(CustomFormat, ShowsDigitsByItsPattern) {
  constexpr const char* kStress = "custom-format-stress";
  constexpr CustomRow kRows[] = {
      {kStress, ".#", false, false, false, 23, "23.0"},
      {kStress, ".##", false, false, false, 0.23, "0.23"},
      {kStress, "#.##", true, false, false, 2345.67, "2,345.67"},
      {kStress, "#.#", false, false, false, 23, "23"},
      {kStress, "#", false, false, false, 0.23, "0"},
      {kStress, ".0000", false, false, false, 0.23, ".2300"},
      {kStress, "#.0000", false, false, false, 0.23, ".23  "},
      {kStress, "#.0", false, false, false, 23, "23. "},
      {kStress, "#.00", false, false, true, 23, "23.00"},
      {kStress, "0,000", true, true, false, 23, "0,023"},
      {kStress, "00.#", false, true, false, 2.34, "02.3"},
      {kStress, "0,000", true, false, false, 23, "   23"},
      {kStress, "0,000", true, false, false, 0.23, "     "},
      {kStress, "0.##", false, false, false, 0.23, " .23"},
      {kStress, "0.####", false, false, false, 0.23, "0.23"},
      {kStress, "00.####", false, false, false, 2.34, "02.34"},
      {kStress, "0,000.#", true, false, false, 23, " ,023"},
      {kStress, "000,000,000.##", false, false, false, 23, "    00023"},
      {kStress, "000,000,000.####", true, false, false, 2345.67, "    002,345.67"},
      {"issue-121", "'HK$'#,##0", true, true, false, 1234, "HK$1,234"},
      {"test-8", "#,##0' '¤", true, true, false, 12570, "12,570 £"},
      {"none", "0%", false, true, false, 0.25, "25%"},
      {"none", "0.00E+00", false, true, true, 12345, "1.23E+04"},
      {"none", "'only text'", false, false, false, 5, "only text"},
      {"none", "#", false, false, false, -5, "-5"},
      {"none", "\uE420", false, false, false, 0.5, "1/2"},
      {"none", "#' '\uE420", false, false, false, 2.5, "2 1/2"},
  };
  for (const CustomRow& row : kRows)
    EXPECT_EQ(shownBy(custom(row), row.number), row.text)
        << row.document << ' ' << row.pattern << ' ' << row.number;
}

TEST(CustomFormat, ScalesWhatItShows) {
  Wire wire = custom({"issue-121", "'£'#,###.##M", true, false, false, 0, ""});
  wire.fixed64(Archive::scale_factor.number, bitsOf(1e-6));
  EXPECT_EQ(shownBy(wire, 2'500'000), "£2.5M");
  Wire odd = custom({"none", "#.##", false, false, false, 0, ""});
  odd.fixed64(Archive::scale_factor.number, bitsOf(3));
  EXPECT_EQ(shownBy(odd, 1.5), "4.5");
}

// As test-8 has it for positive numbers, and for negative ones with a minus of its own.
TEST(CustomFormat, ShowsByTheFirstConditionThatHolds) {
  using Condition = TSK::CustomFormatArchive_Condition;
  const auto condition = [](unsigned type, const char* pattern) {
    return Wire()
        .varint(Condition::condition_type.number, type)
        .message(Condition::condition_format.number,
                 custom({"", pattern, true, true, false, 0, ""}))
        .fixed64(Condition::condition_value_dbl.number, bitsOf(0));
  };
  Wire wire;
  wire.message(TSK::CustomFormatArchive::default_format.number,
               custom({"", "#.#", false, false, false, 0, ""}));
  wire.message(TSK::CustomFormatArchive::conditions.number, condition(3, "¤#,##0' '"));
  wire.message(TSK::CustomFormatArchive::conditions.number, condition(1, "'-'¤#,##0"));
  const CustomFormat format(Message<TSK::CustomFormatArchive>(wire.str()), english());
  const auto text = [&](double number) {
    std::string shown;
    format.appendNumber(Decimal(number), english(), shown);
    return shown;
  };
  EXPECT_EQ(text(1047.5), "£1,048 ");
  EXPECT_EQ(text(-1047.5), "-£1,048");
  EXPECT_EQ(text(0), "0");
}

TEST(CustomFormat, PutsATextInItsPlace) {
  Wire wire = format(271);
  wire.bytes(Archive::custom_format_string.number, "'<'\uE421'>'");
  const Wire whole = Wire().message(TSK::CustomFormatArchive::default_format.number, wire);
  std::string text;
  CustomFormat(Message<TSK::CustomFormatArchive>(whole.str()), english()).appendText("a", text);
  EXPECT_EQ(text, "<a>");
}

TEST_F(FormatsTest, UseTheCustomFormatThatTheyBringAlong) {
  const Wire custom =
      Wire().message(TSK::CustomFormatArchive::default_format.number,
                     format(270).bytes(Archive::custom_format_string.number, "#' kg'"));
  EXPECT_EQ(shown(format(270).message(Archive::custom_format.number, custom), 5), "5 kg");
}

// A document with one custom format of that type, and a format that means it.
struct WithCustom {
  explicit WithCustom(unsigned type, std::string_view pattern)
      : objects(archives(type, pattern), Application::kNumbers),
        formatting(objects.reading()),
        use(FormatArchive(wire(type).str()), formatting) {}

  static Wire uid() { return Wire().varint(1, 8).varint(2, 9); }
  static Wire wire(unsigned type) {
    return format(type).message(Archive::custom_uid.number, uid());
  }
  static std::vector<testing::Archive> archives(unsigned type, std::string_view pattern) {
    using List = TSK::CustomFormatListArchive;
    const Wire custom =
        Wire().message(TSK::CustomFormatArchive::default_format.number,
                       format(type).bytes(Archive::custom_format_string.number, pattern));
    const Wire list =
        Wire().message(List::uuids.number, uid()).message(List::custom_formats.number, custom);
    const Wire shared =
        Wire().message(TSA::DocumentArchive::custom_format_list.number, testing::reference(2));
    return {testing::object(1, 1, Wire().message(TN::DocumentArchive::super.number, shared)),
            testing::object(2, 222, list)};
  }
  std::string number(double value) {
    std::string text;
    use.appendNumber(Decimal(value), english(), text);
    return text;
  }
  std::string date(double seconds) {
    std::string text;
    use.appendDate(seconds, english(), text);
    return text;
  }
  std::string text(std::string_view value) {
    std::string shown;
    use.appendText(value, shown);
    return shown;
  }

  testing::Objects objects;
  Formatting formatting;
  CellFormat use;
};

TEST(CustomFormat, ShowsOnlyWhatItWasMadeFor) {
  WithCustom numbers(270, "#' kg'");
  EXPECT_EQ(numbers.number(5), "5 kg");
  EXPECT_EQ(numbers.text("Weight"), "Weight");
  EXPECT_EQ(numbers.date(kMay), "17 May 2026 14:35");
  WithCustom dates(272, "yyyy");
  EXPECT_EQ(dates.date(kMay), "2026");
  EXPECT_EQ(dates.text("Year"), "Year");
  EXPECT_EQ(dates.number(5), "5");
  WithCustom texts(271, "'<'\uE421'>'");
  EXPECT_EQ(texts.text("a"), "<a>");
  EXPECT_EQ(texts.date(kMay), "17 May 2026 14:35");
}

}  // namespace
}  // namespace dorvex::content::formats_test
