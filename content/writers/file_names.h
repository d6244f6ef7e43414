// Names of the files that stand beside a rendering.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "dorvex/content.h"

namespace dorvex::content {

// A name that is safe on every system and in a shell: valid UTF-8 of at most 120 bytes,
// without a folder, control characters and what some system forbids; never empty, and
// never with a dot or a dash first. The ending stays.
std::string safeFileName(std::string_view name);

// The file that a medium is extracted to; index is its number in Summary::media, which
// stands in the name, so that no two are alike.
std::string mediaFileName(std::size_t index, const MediaFile& file);

// A path as part of a URL.
std::string urlEncoded(std::string_view path);

}  // namespace dorvex::content
