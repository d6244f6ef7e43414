// Which layout a message class has, known when the class is: by the class itself,
// since another module may have a class of the same name.
#pragma once

#include <cstdint>

namespace vn::iwork13 {

inline constexpr std::uint16_t kNoLayout = 0xFFFF;

template <typename MessageClass>
inline constexpr std::uint16_t kLayoutIndex = kNoLayout;

}  // namespace vn::iwork13

#include "message_classes.inc"  // kLayoutIndex of every class of the schema
