#include "content/support/json_shape.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace dorvex::testing::json_shape_test {
namespace {

using nlohmann::json;

// A schema, a value that it has, and one that it has not.
struct Case {
  const char* schema;
  const char* sound;
  const char* unsound;
};

TEST(JsonShape, FindsWhatASchemaDoesNotHave) {
  for (const Case& each :
       {Case{R"({"type": "string"})", "\"a\"", "1"},
        Case{R"({"type": ["integer", "null"]})", "null", "1.5"},
        Case{R"({"required": ["a"]})", R"({"a": 1})", "{}"},
        Case{R"({"properties": {"a": {"const": 1}}})", R"({"a": 1, "b": 2})", R"({"a": 2})"},
        Case{R"({"properties": {"a": {}}, "additionalProperties": false})", R"({"a": 1})",
             R"({"b": 1})"},
        Case{R"({"propertyNames": {"enum": ["a"]}})", R"({"a": 1})", R"({"b": 1})"},
        Case{R"({"items": {"minimum": 1}})", "[1]", "[1, 0]"},
        Case{R"({"minItems": 1, "maxItems": 2})", "[1]", "[]"},
        Case{R"({"maxItems": 2})", "[1]", "[1, 2, 3]"},
        Case{R"({"oneOf": [{"minimum": 1}, {"minimum": 2}]})", "1", "2"},
        Case{R"({"allOf": [{"if": {"const": 1}, "then": {"const": 2}}]})", "3", "1"},
        Case{R"({"$defs": {"a": {"const": 1}}, "$ref": "#/$defs/a"})", "1", "2"}}) {
    const json schema = json::parse(each.schema);
    EXPECT_EQ(flawByShape(json::parse(each.sound), schema), "") << each.schema;
    EXPECT_NE(flawByShape(json::parse(each.unsound), schema), "") << each.schema;
  }
}

TEST(JsonShape, RefusesASchemaThatItDoesNotUnderstand) {
  EXPECT_THROW(flawByShape(json(1), json::parse(R"({"multipleOf": 2})")), std::runtime_error);
}

}  // namespace
}  // namespace dorvex::testing::json_shape_test
