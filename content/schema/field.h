// How the fields of messages are named: each message of the archive schema is a struct
// without data, and each of its fields a constant in it, generated from the .proto
// files. See message.h for reading them.
#pragma once

#include <cstdint>

namespace dorvex::content {

// A message of type M, as it lies in a payload.
template <typename M>
class Message;

// How a field's value is written.
enum class Encoding { kVarint, kZigzag, kFixed, kBytes, kMessage };

// A field of the message type M with values of type V.
template <typename M, typename V, Encoding E>
struct Field {
  std::uint32_t number;
};

template <typename M, typename V, Encoding E>
struct RepeatedField {
  std::uint32_t number;
};

}  // namespace dorvex::content
