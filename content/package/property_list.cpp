#include "package/property_list.h"

#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "graph/plain_text.h"

namespace dorvex::content {
namespace {

// In the binary form a small file can refer to one long string a million times.
constexpr std::size_t kMostStrings = 1000;
constexpr std::size_t kLongestString = 1000;

// --- The binary form: objects, a table of their offsets, a trailer of fixed size ---

constexpr std::string_view kBinaryHeader = "bplist00";
constexpr std::size_t kTrailerSize = 32;

enum ObjectKind : unsigned { kAscii = 5, kUtf16 = 6, kArray = 10, kDictionary = 13 };

class BinaryList {
 public:
  explicit BinaryList(std::string_view bytes) : bytes_(bytes) {
    const std::string_view trailer = bytes.substr(bytes.size() - kTrailerSize);
    offsetSize_ = static_cast<unsigned char>(trailer[6]);
    referenceSize_ = static_cast<unsigned char>(trailer[7]);
    root_ = number(trailer.substr(16, 8));
    table_ = number(trailer.substr(24, 8));
  }

  PropertyList read() const {
    PropertyList list;
    const auto root = objectAt(root_);
    if (!root) return list;
    if (root->kind == kArray) readArray(*root, list);
    if (root->kind == kDictionary) readDictionary(*root, list);
    return list;
  }

 private:
  // A collection or string: how many elements or characters, and all bytes behind.
  struct Object {
    unsigned kind;
    std::size_t count;
    std::string_view rest;
  };

  static std::uint64_t number(std::string_view bytes) {
    std::uint64_t value = 0;
    for (const char byte : bytes) value = value << 8 | static_cast<unsigned char>(byte);
    return value;
  }

  static bool isSize(std::size_t size) { return size >= 1 && size <= 8; }

  std::optional<Object> objectAt(std::uint64_t index) const {
    if (!isSize(offsetSize_) || table_ > bytes_.size()) return std::nullopt;
    if (index >= (bytes_.size() - table_) / offsetSize_) return std::nullopt;
    const auto offset = number(bytes_.substr(table_ + index * offsetSize_, offsetSize_));
    if (offset >= bytes_.size()) return std::nullopt;
    const unsigned marker = static_cast<unsigned char>(bytes_[offset]);
    Object object{marker >> 4U, marker & 0xFU, bytes_.substr(offset + 1)};
    if (object.count == 0xF && !takeCount(object)) return std::nullopt;
    return object;
  }

  // Counts from 15 on follow as an integer, whose marker gives the logarithm of its size.
  static bool takeCount(Object& object) {
    if (object.rest.empty()) return false;
    const unsigned marker = static_cast<unsigned char>(object.rest[0]);
    const std::size_t size = std::size_t{1} << (marker & 3U);
    if (marker >> 4U != 1 || object.rest.size() < 1 + size) return false;
    object.count = number(object.rest.substr(1, size));
    object.rest.remove_prefix(1 + size);
    return true;
  }

  // The element of a collection that the reference of that number refers to.
  std::optional<std::string> stringAt(const Object& collection, std::size_t reference) const {
    if (!isSize(referenceSize_) || reference >= collection.rest.size() / referenceSize_)
      return std::nullopt;
    const auto index = number(collection.rest.substr(reference * referenceSize_, referenceSize_));
    const auto object = objectAt(index);
    if (!object) return std::nullopt;
    const std::size_t count = std::min(object->count, kLongestString);
    if (object->kind == kAscii) return plainText(object->rest.substr(0, count));
    if (object->kind == kUtf16) return utf16(object->rest.substr(0, count * 2));
    return std::nullopt;
  }

  static std::string utf16(std::string_view bytes) {
    std::u16string units;
    for (; bytes.size() >= 2; bytes.remove_prefix(2))
      units += static_cast<char16_t>(number(bytes.substr(0, 2)));
    std::string text;
    icu::UnicodeString(units.data(), static_cast<std::int32_t>(units.size())).toUTF8String(text);
    return plainText(text);
  }

  void readArray(const Object& array, PropertyList& list) const {
    for (std::size_t i = 0; i < std::min(array.count, kMostStrings); ++i) {
      if (auto string = stringAt(array, i)) list.strings.push_back(*std::move(string));
    }
  }

  // All keys come before all values.
  void readDictionary(const Object& dictionary, PropertyList& list) const {
    if (dictionary.count > dictionary.rest.size()) return;
    for (std::size_t i = 0; i < std::min(dictionary.count, kMostStrings); ++i) {
      auto key = stringAt(dictionary, i);
      auto value = stringAt(dictionary, dictionary.count + i);
      if (key && value) list.entries.emplace_back(*std::move(key), *std::move(value));
    }
  }

  std::string_view bytes_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t table_ = 0;
};

// --- XML: the texts of elements that hold nothing else ---

struct Entity {
  std::string_view name;
  char character;
};

constexpr std::array<Entity, 5> kEntities = {
    {{"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}}};

// The character of a reference like #233 or #xE9; nothing for what is none.
std::optional<std::uint32_t> numbered(std::string_view reference) {
  if (!reference.starts_with('#')) return std::nullopt;
  reference.remove_prefix(1);
  const bool hexadecimal = reference.starts_with('x');
  if (hexadecimal) reference.remove_prefix(1);
  std::uint32_t code = 0;
  const char* const end = reference.data() + reference.size();
  const auto result = std::from_chars(reference.data(), end, code, hexadecimal ? 16 : 10);
  return result.ec == std::errc() && result.ptr == end ? std::optional(code) : std::nullopt;
}

bool appendReference(std::string& text, std::string_view reference) {
  const auto* const entity = std::ranges::find(kEntities, reference, &Entity::name);
  if (entity != kEntities.end()) {
    text += entity->character;
    return true;
  }
  const auto code = numbered(reference);
  if (!code) return false;
  icu::UnicodeString(static_cast<UChar32>(*code)).toUTF8String(text);
  return true;
}

// The text between two tags. What is no reference stands for itself.
std::string unescaped(std::string_view content) {
  std::string text;
  content = content.substr(0, kLongestString);
  while (!content.empty()) {
    if (content[0] == '&') {
      const auto end = content.find(';');
      if (end != std::string_view::npos && appendReference(text, content.substr(1, end - 1))) {
        content.remove_prefix(end + 1);
        continue;
      }
    }
    text += content[0];
    content.remove_prefix(1);
  }
  return plainText(text);
}

// A string that follows a key belongs to it, any other to a list.
PropertyList readXml(std::string_view bytes) {
  PropertyList list;
  std::optional<std::string> key;
  while (list.strings.size() + list.entries.size() < kMostStrings) {
    const auto open = bytes.find('<');
    const auto close = bytes.find('>', open);
    if (open == std::string_view::npos || close == std::string_view::npos) break;
    const std::string_view tag = bytes.substr(open + 1, close - open - 1);
    bytes.remove_prefix(close + 1);
    const auto end = std::min(bytes.find('<'), bytes.size());
    if (tag == "key") {
      key = unescaped(bytes.substr(0, end));
    } else if (tag == "string") {
      std::string text = unescaped(bytes.substr(0, end));
      if (key) {
        list.entries.emplace_back(*std::exchange(key, std::nullopt), std::move(text));
      } else {
        list.strings.push_back(std::move(text));
      }
    } else if (!tag.starts_with('/')) {
      key.reset();  // a value of another type
    }
  }
  return list;
}

}  // namespace

std::string_view PropertyList::at(std::string_view key) const {
  const auto entry = std::ranges::find(entries, key, &std::pair<std::string, std::string>::first);
  return entry == entries.end() ? std::string_view() : entry->second;
}

PropertyList readPropertyList(std::string_view bytes) {
  if (!bytes.starts_with(kBinaryHeader)) return readXml(bytes);
  if (bytes.size() < kBinaryHeader.size() + kTrailerSize) return {};
  return BinaryList(bytes).read();
}

}  // namespace dorvex::content
