#include "samples/raw_fields.h"

#include <google/protobuf/descriptor.h>
#include <google/protobuf/unknown_field_set.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <sstream>
#include <stdexcept>
#include <string>

namespace dorvex::samples {
namespace {

using google::protobuf::Message;
using google::protobuf::UnknownFieldSet;
using nlohmann::json;

void addValue(UnknownFieldSet& set, int number, const json& value) {
  if (value.is_array()) {
    for (const json& each : value) addValue(set, number, each);
  } else if (value.is_string()) {
    set.AddLengthDelimited(number, value.get<std::string>());
  } else if (value.is_object()) {
    set.AddLengthDelimited(number, rawMessage(value));
  } else if (value.is_boolean()) {
    set.AddVarint(number, value.get<bool>() ? 1 : 0);
  } else {
    set.AddVarint(number, value.get<std::uint64_t>());
  }
}

void addValues(UnknownFieldSet& set, const json& fields) {
  for (const auto& [number, value] : fields.items()) addValue(set, std::stoi(number), value);
}

// The message within another that a path of field names leads to.
Message& messageAt(Message& message, const std::string& path) {
  Message* found = &message;
  std::istringstream names(path);
  for (std::string name; std::getline(names, name, '.');) {
    const auto* const field = found->GetDescriptor()->FindFieldByName(name);
    if (field == nullptr || field->message_type() == nullptr || field->is_repeated())
      throw std::runtime_error("no message " + name + " in " + message.GetTypeName());
    found = found->GetReflection()->MutableMessage(found, field);
  }
  return *found;
}

}  // namespace

void addRawFields(Message& message, const json& newer) {
  for (const auto& [path, fields] : newer.items()) {
    Message& target = messageAt(message, path);
    addValues(*target.GetReflection()->MutableUnknownFields(&target), fields);
  }
}

std::string rawMessage(const json& fields) {
  UnknownFieldSet set;
  addValues(set, fields);
  std::string bytes;
  if (!set.SerializeToString(&bytes)) throw std::runtime_error("fields that cannot be written");
  return bytes;
}

}  // namespace dorvex::samples
