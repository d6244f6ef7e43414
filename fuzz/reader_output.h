// The text sweep as the reader does it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace dorvex::fuzz {

// The tokens of all texts of an object stream, written into a host's buffer of
// that declared size and into what follows it. The walk of the stream must end.
std::string sweepTokens(const std::vector<unsigned char>& objectStream, std::uint32_t bufferSize);

}  // namespace dorvex::fuzz
