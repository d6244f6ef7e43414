// How many columns a text takes where all letters are equally wide.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dorvex::content {

std::size_t displayWidth(std::string_view text);

// The text with spaces up to a width, behind it or in front of it.
std::string padded(std::string_view text, std::size_t width, bool right);

}  // namespace dorvex::content
