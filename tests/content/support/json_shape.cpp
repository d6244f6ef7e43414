#include "content/support/json_shape.h"

#include <algorithm>
#include <functional>
#include <map>
#include <stdexcept>

namespace dorvex::testing {
namespace {

using nlohmann::json;

bool isOf(const json& value, const std::string& type) {
  if (type == "integer") return value.is_number_integer();
  if (type == "number") return value.is_number();
  return type == value.type_name();
}

class Shape {
 public:
  explicit Shape(const json& root) : root_(root) {}

  std::string flaw(const json& value, const json& schema, const std::string& place) const {
    for (const auto& [keyword, rule] : schema.items()) {
      const auto check = checks().find(keyword);
      if (check == checks().end()) throw std::runtime_error("unknown keyword " + keyword);
      if (std::string found = check->second(*this, value, rule, schema, place); !found.empty())
        return found;
    }
    return {};
  }

 private:
  using Check = std::function<std::string(const Shape&, const json& value, const json& rule,
                                          const json& schema, const std::string& place)>;

  static std::string unless(bool sound, const std::string& place, const char* keyword) {
    return sound ? "" : place + ": " + keyword;
  }

  static std::string ofType(const Shape&, const json& value, const json& rule, const json&,
                            const std::string& place) {
    const bool sound = rule.is_array()
                           ? std::any_of(rule.begin(), rule.end(),
                                         [&](const json& each) { return isOf(value, each); })
                           : isOf(value, rule);
    return unless(sound, place, "type");
  }

  static std::string withKeys(const Shape&, const json& value, const json& rule, const json&,
                              const std::string& place) {
    const bool sound =
        !value.is_object() ||
        std::all_of(rule.begin(), rule.end(), [&](const json& key) { return value.contains(key); });
    return unless(sound, place, "required");
  }

  static std::string members(const Shape& shape, const json& value, const json& rule, const json&,
                             const std::string& place) {
    if (!value.is_object()) return {};
    for (const auto& [key, member] : rule.items()) {
      if (!value.contains(key)) continue;
      if (auto found = shape.flaw(value[key], member, place + "/" + key); !found.empty())
        return found;
    }
    return {};
  }

  static std::string otherMembers(const Shape& shape, const json& value, const json& rule,
                                  const json& schema, const std::string& place) {
    if (!value.is_object()) return {};
    const json known = schema.value("properties", json::object());
    for (const auto& [key, member] : value.items()) {
      if (known.contains(key)) continue;
      if (rule == false) return place + "/" + key + ": additionalProperties";
      if (auto found = shape.flaw(member, rule, place + "/" + key); !found.empty()) return found;
    }
    return {};
  }

  static std::string names(const Shape& shape, const json& value, const json& rule, const json&,
                           const std::string& place) {
    if (!value.is_object()) return {};
    for (const auto& [key, member] : value.items()) {
      if (auto found = shape.flaw(json(key), rule, place); !found.empty()) return found;
    }
    return {};
  }

  static std::string elements(const Shape& shape, const json& value, const json& rule, const json&,
                              const std::string& place) {
    if (!value.is_array()) return {};
    for (std::size_t i = 0; i < value.size(); ++i) {
      if (auto found = shape.flaw(value[i], rule, place + "/" + std::to_string(i)); !found.empty())
        return found;
    }
    return {};
  }

  static std::string one(const Shape& shape, const json& value, const json& rule, const json&,
                         const std::string& place) {
    const auto sound = std::count_if(rule.begin(), rule.end(), [&](const json& each) {
      return shape.flaw(value, each, place).empty();
    });
    return unless(sound == 1, place, "oneOf");
  }

  static std::string all(const Shape& shape, const json& value, const json& rule, const json&,
                         const std::string& place) {
    for (const json& each : rule)
      if (auto found = shape.flaw(value, each, place); !found.empty()) return found;
    return {};
  }

  static std::string where(const Shape& shape, const json& value, const json& rule,
                           const json& schema, const std::string& place) {
    if (!shape.flaw(value, rule, place).empty()) return {};
    return shape.flaw(value, schema.at("then"), place);
  }

  static std::string reference(const Shape& shape, const json& value, const json& rule, const json&,
                               const std::string& place) {
    const auto path = rule.get<std::string>().substr(1);
    return shape.flaw(value, shape.root_.at(json::json_pointer(path)), place);
  }

  static std::string nothing(const Shape&, const json&, const json&, const json&,
                             const std::string&) {
    return {};
  }

  static const std::map<std::string, Check>& checks() {
    static const std::map<std::string, Check> kChecks = {
        {"type", ofType},
        {"required", withKeys},
        {"properties", members},
        {"additionalProperties", otherMembers},
        {"propertyNames", names},
        {"items", elements},
        {"oneOf", one},
        {"allOf", all},
        {"if", where},
        {"$ref", reference},
        {"const", [](const Shape&, const json& value, const json& rule, const json&,
                     const std::string& place) { return unless(value == rule, place, "const"); }},
        {"enum",
         [](const Shape&, const json& value, const json& rule, const json&,
            const std::string& place) {
           return unless(std::find(rule.begin(), rule.end(), value) != rule.end(), place, "enum");
         }},
        {"minimum",
         [](const Shape&, const json& value, const json& rule, const json&,
            const std::string& place) {
           return unless(!value.is_number() || value >= rule, place, "minimum");
         }},
        {"minItems",
         [](const Shape&, const json& value, const json& rule, const json&,
            const std::string& place) {
           return unless(!value.is_array() || value.size() >= rule, place, "minItems");
         }},
        {"maxItems",
         [](const Shape&, const json& value, const json& rule, const json&,
            const std::string& place) {
           return unless(!value.is_array() || value.size() <= rule, place, "maxItems");
         }},
        {"then", nothing},
        {"pattern", nothing},
        {"$schema", nothing},
        {"$defs", nothing},
        {"title", nothing}};
    return kChecks;
  }

  const json& root_;
};

}  // namespace

std::string flawByShape(const json& value, const json& schema) {
  return Shape(schema).flaw(value, schema, "");
}

}  // namespace dorvex::testing
