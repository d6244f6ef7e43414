// How documents are told apart in output files, and dealt out to shards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace dorvex::cli {

inline constexpr std::size_t kIdDigits = 32;

// The first 128 bits of the SHA-256 of a path's bytes, in lower-case hexadecimal
// digits. The path counts as it was given.
std::string documentId(std::string_view path);

// One of count parts of all documents.
struct Shard {
  std::uint64_t index = 0;  // below count
  std::uint64_t count = 1;

  // By the first 64 bits of the id.
  bool holds(std::string_view id) const;
};

// Reads "I/N" with I below N; throws std::invalid_argument for anything else.
Shard parseShard(const std::string& text);

}  // namespace dorvex::cli
