// Messages, read where they lie:
//
//   const Message<TSWP::StorageArchive> storage(payload);
//   for (std::string_view piece : storage.all(TSWP::StorageArchive::text)) ...
//   const auto table = storage.get(TSWP::StorageArchive::table_attachment);
//
// A field that is absent, malformed or written as another type than the schema says
// gives the fallback. Of a field that is there several times the last one counts. Each
// access reads the message from its start: ask once for what is needed often.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <string_view>
#include <type_traits>

#include "graph/wire.h"
#include "schema/field.h"

namespace dorvex::content {

// The value of a wire field, or nothing where its wire type is not that of E.
template <typename V, Encoding E>
std::optional<V> decode(const WireField& field) {
  if constexpr (E == Encoding::kBytes || E == Encoding::kMessage) {
    if (field.type != WireType::kBytes) return std::nullopt;
    return V(field.bytes);
  } else if constexpr (E == Encoding::kFixed) {
    constexpr WireType kType = sizeof(V) == 4 ? WireType::kFixed32 : WireType::kFixed64;
    if (field.type != kType) return std::nullopt;
    using Bits = std::conditional_t<sizeof(V) == 4, std::uint32_t, std::uint64_t>;
    return std::bit_cast<V>(static_cast<Bits>(field.scalar));
  } else {
    if (field.type != WireType::kVarint) return std::nullopt;
    if constexpr (std::same_as<V, bool>) {
      return field.scalar != 0;
    } else if constexpr (E == Encoding::kZigzag) {
      return static_cast<V>((field.scalar >> 1) ^ (~(field.scalar & 1) + 1));
    } else {
      return static_cast<V>(field.scalar);
    }
  }
}

// The values of a repeated field, in their order; scalars may be packed.
template <typename V, Encoding E>
class Values {
 public:
  class iterator {
   public:
    using iterator_concept = std::input_iterator_tag;
    using difference_type = std::ptrdiff_t;
    using value_type = V;

    iterator(std::string_view bytes, std::uint32_t number) : fields_(bytes), number_(number) {
      ++*this;
    }
    const V& operator*() const { return *value_; }
    const V* operator->() const { return &*value_; }
    iterator& operator++() {
      value_ = unpack();
      WireField field;
      while (!value_ && fields_.next(field)) {
        if (field.number != number_) continue;
        value_ = decode<V, E>(field);
        if (!value_ && field.type == WireType::kBytes) {
          packed_ = field.bytes;
          value_ = unpack();
        }
      }
      return *this;
    }
    void operator++(int) { ++*this; }
    friend bool operator==(const iterator& it, std::default_sentinel_t) { return !it.value_; }

   private:
    std::optional<V> unpack() {
      if constexpr (E != Encoding::kBytes && E != Encoding::kMessage) {
        return packed_.empty() ? std::nullopt : unpackScalar();
      }
      return std::nullopt;
    }

    std::optional<V> unpackScalar() requires(E != Encoding::kBytes && E != Encoding::kMessage) {
      WireField field;
      if constexpr (E == Encoding::kFixed) {
        field.type = sizeof(V) == 4 ? WireType::kFixed32 : WireType::kFixed64;
        if (packed_.size() < sizeof(V)) return packed_ = {}, std::nullopt;
        for (std::size_t i = 0; i < sizeof(V); ++i)
          field.scalar |= std::uint64_t{static_cast<unsigned char>(packed_[i])} << (8 * i);
        packed_.remove_prefix(sizeof(V));
      } else {
        WireReader reader(packed_);
        if (!reader.varint(field.scalar)) return packed_ = {}, std::nullopt;
        packed_ = reader.rest();
      }
      return decode<V, E>(field);
    }

    WireReader fields_;
    std::uint32_t number_;
    std::string_view packed_;
    std::optional<V> value_;
  };

  Values(std::string_view bytes, std::uint32_t number) : bytes_(bytes), number_(number) {}
  iterator begin() const { return {bytes_, number_}; }
  std::default_sentinel_t end() const { return {}; }

  std::optional<V> first() const {
    const auto it = begin();
    return it == end() ? std::nullopt : std::optional<V>(*it);
  }
  std::size_t count() const {
    std::size_t count = 0;
    for (auto it = begin(); it != end(); ++it) ++count;
    return count;
  }

 private:
  std::string_view bytes_;
  std::uint32_t number_;
};

template <typename M>
class Message {
 public:
  Message() = default;  // one without fields
  explicit Message(std::string_view bytes) : bytes_(bytes) {}

  // The value of a field, if it is there.
  template <typename V, Encoding E>
  std::optional<V> find(Field<M, V, E> wanted) const {
    std::optional<V> value;
    WireReader fields(bytes_);
    WireField field;
    while (fields.next(field)) {
      if (field.number != wanted.number) continue;
      if (auto decoded = decode<V, E>(field)) value = decoded;
    }
    return value;
  }

  template <typename V, Encoding E>
  V get(Field<M, V, E> field, V fallback = V{}) const {
    return find(field).value_or(fallback);
  }

  template <typename V, Encoding E>
  bool has(Field<M, V, E> field) const {
    return find(field).has_value();
  }

  template <typename V, Encoding E>
  Values<V, E> all(RepeatedField<M, V, E> field) const {
    return {bytes_, field.number};
  }

  // The same bytes as a message of another type: of newer.proto, or one that extends.
  template <typename Other>
  Message<Other> as() const {
    return Message<Other>(bytes_);
  }

  std::string_view bytes() const { return bytes_; }

 private:
  std::string_view bytes_;
};

}  // namespace dorvex::content
