#include "json_strings.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "printable.h"

namespace dorvex::cli::json_strings_test {
namespace {

std::string written(const std::vector<std::string>& pieces) {
  JsonStrings strings;
  for (const std::string& piece : pieces) strings.add(piece);
  strings.end();
  return strings.written().joined();
}

TEST(JsonStrings, StandWithCommasBetween) {
  JsonStrings strings;
  strings.add("on");
  strings.add("e");
  strings.end();
  strings.end();
  strings.add("two");
  strings.end();
  EXPECT_EQ(strings.written().joined(), R"("one","","two")");
  EXPECT_EQ(strings.bytesIn(), 6u);
  EXPECT_TRUE(strings.replaced().empty());
}

TEST(JsonStrings, EscapeWhatJsonAndTerminalsMayNotSee) {
  EXPECT_EQ(written({"\"\\\n\r\t\b\f\x1B\xC2\x9B\xC2\xA0"}),
            "\"\\\"\\\\\\n\\r\\t\\b\\f\\u001b\\u009b\xC2\xA0\"");
}

TEST(JsonStrings, CountTheTextsInWhichSomethingWasReplaced) {
  JsonStrings strings;
  for (const char* text : {"good", "b\xC3", "good", "\xFF\xFF"}) {
    strings.add(text);
    strings.end();
  }
  EXPECT_EQ(strings.replaced(), (std::vector<std::uint64_t>{1, 3}));
}

// The bytes that matter, so that all ways to be no UTF-8 come up.
std::string hostileText(std::mt19937& random) {
  constexpr std::string_view bytes =
      "a\"\\\n\x1F\x7F\x80\x9F\xA0\xBF\xC2\xC3\xE0\xE2\xED\xEF\xF0\xF1\xF4\xF5";
  std::string text(random() % 12, ' ');
  for (char& byte : text) byte = bytes[random() % bytes.size()];
  return text;
}

// The library has the whole text at once.
std::string byTheLibrary(const std::string& text) {
  return printableJson(
      nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

TEST(JsonStrings, AreThoseOfTheLibraryHoweverTheTextIsCut) {
  std::mt19937 random(20'131'023);
  for (int i = 0; i < 20'000; ++i) {
    const std::string text = hostileText(random);
    const std::size_t first = random() % (text.size() + 1);
    const std::size_t second = first + random() % (text.size() - first + 1);
    EXPECT_EQ(
        written({text.substr(0, first), text.substr(first, second - first), text.substr(second)}),
        byTheLibrary(text));
  }
}

}  // namespace
}  // namespace dorvex::cli::json_strings_test
