// How drawables lie in messages: each message has the one that it extends in its field 1,
// down to the drawable's own.
#pragma once

#include <optional>
#include <string_view>

namespace dorvex::content {

// The message that lies so many levels below a payload.
std::string_view nested(std::string_view payload, unsigned depth);

// How many levels below a payload the drawable's own message lies; nothing where none is
// seen. For types of later versions: it is the geometry that tells a drawable.
std::optional<unsigned> depthOfDrawable(std::string_view payload);

}  // namespace dorvex::content
