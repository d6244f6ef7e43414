#include "Tools/vnstring/vnstring.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace vn::string {
namespace {

bool isDecimalDigit(char c) { return c >= '0' && c <= '9'; }

bool isHexDigit(char c) {
  return isDecimalDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool hasDigits(unsigned int count, const char* text, int limit, bool (*isDigit)(char)) {
  if (text == nullptr) return false;
  const unsigned int most = limit < 1 ? 0 : std::min(count, static_cast<unsigned int>(limit));
  unsigned int digits = 0;
  while (digits < most && isDigit(text[digits])) ++digits;
  return digits == count;
}

std::string transformed(std::string text, char (*change)(char)) {
  std::transform(text.begin(), text.end(), text.begin(), change);
  return text;
}

}  // namespace

void replaceAll(std::string& text, const std::string& what, const std::string& with) {
  if (what.empty()) return;
  std::string replaced;
  std::size_t position = 0;
  for (std::size_t match = text.find(what); match != std::string::npos;
       match = text.find(what, position)) {
    replaced.append(text, position, match - position).append(with);
    position = match + what.size();
  }
  replaced.append(text, position);
  text = std::move(replaced);
}

bool startsWith(const std::string& text, const std::string& prefix) {
  return prefix.size() <= text.size() &&
         std::strncmp(text.c_str(), prefix.c_str(), prefix.size()) == 0;
}

bool startsWithCaseInsensitive(const std::string& text, const std::string& prefix) {
  return prefix.size() <= text.size() &&
         strncasecmp(text.c_str(), prefix.c_str(), prefix.size()) == 0;
}

bool endsWith(const char* text, const char* suffix) {
  const auto offset = static_cast<int>(std::strlen(text) - std::strlen(suffix));
  return offset >= 0 && std::strcmp(text + offset, suffix) == 0;
}

bool contains(const std::string& text, const std::string& what) {
  return text.find(what) != std::string::npos;
}

bool containsAnyOf(const std::string& text, const char** list, int count) {
  // A std::string of each entry, because that is what refuses a null one.
  return std::any_of(list, list + std::max(count, 0),
                     [&](const char* entry) { return contains(text, std::string(entry)); });
}

std::string stripDomainFromURL(const std::string& url) {
  static constexpr std::array<std::string_view, 2> schemes{"http://", "https://"};
  for (const std::string_view scheme : schemes) {
    if (!url.starts_with(scheme)) continue;
    const std::size_t slash = url.find('/', scheme.size());
    return slash == std::string::npos ? std::string() : url.substr(slash + 1);
  }
  return url;
}

std::vector<std::string> split(const std::string& text, char delimiter) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t end = text.find(delimiter); end != std::string::npos;
       end = text.find(delimiter, start)) {
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

void stripNewLineCharsFromEnd(std::string& text) {
  // npos + 1 is 0: nothing but line ends leaves nothing.
  text.resize(text.find_last_not_of("\n\r") + 1);
}

void copyStringToBuffer(char* buffer, int size, const std::string& text) {
  if (size < 1) return;
  std::memset(buffer, 0, static_cast<std::size_t>(size));
  const int count = std::min(size, static_cast<int>(text.size()));
  std::memcpy(buffer, text.data(), static_cast<std::size_t>(std::max(count, 0)));
}

bool isNumericStr(unsigned int count, const char* text, int limit) {
  return hasDigits(count, text, limit, isDecimalDigit);
}

bool isHexStr(unsigned int count, const char* text, int limit) {
  return hasDigits(count, text, limit, isHexDigit);
}

char asciiCharToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

char asciiCharToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

std::string asciiStrToLower(const std::string& text) { return transformed(text, asciiCharToLower); }

std::string asciiStrToUpper(const std::string& text) { return transformed(text, asciiCharToUpper); }

bool asciiCaseInsensitiveCompare(const std::string& left, const std::string& right) {
  return asciiStrToUpper(left) == asciiStrToUpper(right);
}

bool inAsciiRange(int value) { return static_cast<unsigned int>(value) < 128; }

}  // namespace vn::string
