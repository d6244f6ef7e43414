// Several fields of a message in one pass over it, where a message is one of very many:
//
//   const auto [upper, lower] = findEach(uid, TSP::UUID::upper, TSP::UUID::lower);
#pragma once

#include <optional>
#include <tuple>
#include <utility>

#include "graph/message.h"

namespace dorvex::content {

template <typename M, typename V, Encoding E>
std::optional<V> decodeAs(Field<M, V, E>, const WireField& field) {
  return decode<V, E>(field);
}

// The values of fields, each as Message::find gives it.
template <typename M, typename... V, Encoding... E>
std::tuple<std::optional<V>...> findEach(const Message<M>& message, Field<M, V, E>... wanted) {
  std::tuple<std::optional<V>...> values;
  WireField field;
  const auto take = [&](auto& value, auto one) {
    if (field.number != one.number) return;
    if (auto decoded = decodeAs(one, field)) value = decoded;
  };
  WireReader fields(message.bytes());
  while (fields.next(field))
    std::apply([&](auto&... value) { (take(value, wanted), ...); }, values);
  return values;
}

}  // namespace dorvex::content
