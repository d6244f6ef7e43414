// Fields that the archive schema does not know, because newer documents have them.
#pragma once

#include <google/protobuf/message.h>

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace dorvex::samples {

// Adds fields by their numbers to a message, or to messages within it. The keys of newer
// are paths of field names ("super.super"; empty for the message itself), and
// its values objects of numbers and values: a number or boolean is a varint, a string
// bytes, an object a message, and a list a repeated field.
void addRawFields(google::protobuf::Message& message, const nlohmann::json& newer);

// The bytes of a message of such fields alone.
std::string rawMessage(const nlohmann::json& fields);

}  // namespace dorvex::samples
