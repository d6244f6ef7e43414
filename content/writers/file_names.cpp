#include "writers/file_names.h"

#include <algorithm>

#include "graph/utf8.h"

namespace dorvex::content {
namespace {

constexpr std::size_t kLongestName = 120;
constexpr std::size_t kLongestEnding = 16;
constexpr std::string_view kForbidden = "<>:\"/\\|?*'`$;&!";
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

// Characters that are not seen, or turn the direction of what follows.
bool isHidden(char32_t code) {
  return code < 0x20 || (code >= 0x7F && code < 0xA0) || (code >= 0x200B && code <= 0x200F) ||
         (code >= 0x2028 && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069) ||
         code == 0xFEFF || code == kReplacement;
}

bool isSafe(char32_t code) {
  if (isHidden(code)) return false;
  return code >= 0x80 || kForbidden.find(static_cast<char>(code)) == std::string_view::npos;
}

// As much of valid text as fits, in whole characters.
std::string_view cutTo(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80) --most;
  return text.substr(0, most);
}

bool needsNoEscape(unsigned char byte) {
  const bool alphanumeric =
      (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
  return alphanumeric ||
         std::string_view("-._~/").find(static_cast<char>(byte)) != std::string_view::npos;
}

}  // namespace

std::string safeFileName(std::string_view name) {
  std::string safe;
  while (!name.empty()) {
    const Character character = firstCharacter(name);
    safe.append(isSafe(character.code) ? name.substr(0, character.length) : "-");
    name.remove_prefix(character.length);
  }
  safe.erase(0, std::min(safe.find_first_not_of(".- "), safe.size()));
  // Some systems drop these at the end.
  safe.erase(safe.find_last_not_of(". ") + 1);
  if (safe.empty()) return "unnamed";
  const std::size_t dot = safe.rfind('.');
  const bool hasEnding = dot != std::string::npos && safe.size() - dot <= kLongestEnding;
  const std::string ending = hasEnding ? safe.substr(dot) : "";
  const std::string_view stem = std::string_view(safe).substr(0, safe.size() - ending.size());
  return std::string(cutTo(stem, kLongestName - ending.size())) + ending;
}

std::string mediaFileName(std::size_t index, const MediaFile& file) {
  return std::to_string(index + 1) + "-" + safeFileName(file.name);
}

std::string urlEncoded(std::string_view path) {
  std::string encoded;
  for (const char each : path) {
    const auto byte = static_cast<unsigned char>(each);
    if (needsNoEscape(byte)) {
      encoded.push_back(each);
    } else {
      encoded += {'%', kHexDigits[byte >> 4U], kHexDigits[byte & 0xFU]};
    }
  }
  return encoded;
}

}  // namespace dorvex::content
