// JSON by a JSON Schema.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace dorvex::testing {

// What of a value is not as a schema has it, or nothing. Of JSON Schema it knows what
// docs/content.schema.json uses, but for patterns; throws std::runtime_error for a keyword
// that it does not know.
std::string flawByShape(const nlohmann::json& value, const nlohmann::json& schema);

}  // namespace dorvex::testing
