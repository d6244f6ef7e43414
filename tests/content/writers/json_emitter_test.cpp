#include "writers/json_emitter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

namespace dorvex::content::json_emitter_test {
namespace {

std::string emitted(const std::function<void(JsonEmitter&)>& emit) {
  std::string text;
  Output output([&](std::string_view bytes) { text += bytes; });
  JsonEmitter json(output);
  emit(json);
  output.flush();
  return text;
}

std::string emittedString(std::string_view value) {
  return emitted([&](JsonEmitter& json) { json.string(value); });
}

std::string emittedNumber(double value) {
  return emitted([&](JsonEmitter& json) { json.number(value); });
}

TEST(JsonEmitter, PutsCommasBetweenMembersAndElements) {
  EXPECT_EQ(emitted([](JsonEmitter& json) {
              json.beginObject();
              json.key("a");
              json.beginArray();
              json.count(1);
              json.beginArray();
              json.endArray();
              json.null();
              json.endArray();
              json.key("b");
              json.boolean(true);
              json.endObject();
            }),
            R"({"a":[1,[],null],"b":true})");
}

TEST(JsonEmitter, BreaksALineBehindTheComma) {
  EXPECT_EQ(emitted([](JsonEmitter& json) {
              json.beginArray();
              json.breakLine();
              json.count(1);
              json.breakLine();
              json.count(2);
              json.endArray();
            }),
            "[\n1,\n2]");
}

TEST(JsonEmitter, EscapesWhatMayNotStandInAString) {
  EXPECT_EQ(emittedString("\"\\/\b\f\n\r\t\x01\x1F\x7F"), R"("\"\\/\b\f\n\r\t\u0001\u001f\u007f")");
}

TEST(JsonEmitter, LeavesOtherCharactersAlone) {
  EXPECT_EQ(emittedString("Grüße, 漢字 😀"), "\"Grüße, 漢字 😀\"");
}

TEST(JsonEmitter, ReplacesBytesThatAreNoUtf8) {
  EXPECT_EQ(emittedString("a\xFFz\xC0\x80\xED\xA0\x80"),
            "\"a\uFFFDz\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\"");
  EXPECT_EQ(emittedString("\xF0\x9F\x98"), "\"\uFFFD\"");
}

TEST(JsonEmitter, WritesTheShortestNumberThatRoundTrips) {
  EXPECT_EQ(emittedNumber(3), "3");
  EXPECT_EQ(emittedNumber(0.1), "0.1");
  EXPECT_EQ(emittedNumber(-12.5), "-12.5");
  for (const double value : {1.0 / 3, 5e-324, 1.7976931348623157e308, 123456789012345678.0, 1e23})
    EXPECT_EQ(nlohmann::json::parse(emittedNumber(value)).get<double>(), value);
}

TEST(JsonEmitter, WritesNullForWhatIsNoNumber) {
  EXPECT_EQ(emittedNumber(std::nan("")), "null");
  EXPECT_EQ(emittedNumber(-std::numeric_limits<double>::infinity()), "null");
}

}  // namespace
}  // namespace dorvex::content::json_emitter_test
