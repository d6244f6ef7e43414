/// @file
/// The whole error family: its base, its classes, and the way from a status
/// number to a class.
#pragma once

#include "Tools/vennik/vnexcept/vennik_error.h"
#include "Tools/vennik/vnexcept/vnerrorcode.h"
#include "Tools/vennik/vnexcept/vnerrorcodeex.h"
#include "Tools/vnexport.h"

namespace vn::except {

/// Turns a status number into an exception. Returns for 0 alone.
/// @param code Any number.
/// @throws vennik_error or rather the class of the number, made without
///     arguments; for a number that has none, also a negative one,
///     general_error, which says 6 and keeps nothing of the number given.
VN_API void throw_on_error(int code);

}  // namespace vn::except
