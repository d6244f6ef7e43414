// What no reader of the format can do without: taking the members out of the zip and
// decompressing their chunks. Made of other people's libraries alone, so that no
// change here moves it.
#pragma once

#include "documents.h"

namespace dorvex::bench {

// The bytes of object stream, all of which have been in memory, one member at a time.
std::size_t readLimit(const Document& document);

}  // namespace dorvex::bench
