// Documents taken apart, so that one part can be changed and the rest be built
// around it again. Nothing here knows the schema.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/wire_writer.h"

namespace dorvex::fuzz {

// Takes bytes from the front of a text; nothing where they are not there.
class Bytes {
 public:
  explicit Bytes(std::string_view left) : left_(left) {}

  bool empty() const { return left_.empty(); }
  std::string_view left() const { return left_; }

  std::optional<std::string_view> take(std::uint64_t count);
  std::optional<std::uint64_t> takeVarint();

 private:
  std::string_view left_;
};

// One field of a message, and how it is to be written.
struct Field {
  std::uint64_t number = 1;
  unsigned wireType = testing::WireType::kVarint;
  std::uint64_t value = 0;                         // of a number
  std::string bytes = {};                          // of a length-delimited field
  std::optional<std::uint64_t> statedLength = {};  // in place of the true one
  int width = 0;                                   // of its varint, in bytes at least

  std::string encode() const;
};

using Fields = std::vector<Field>;

std::string encodeFields(const Fields& fields);

// Nothing unless the message is a run of fields. The tags of a group are fields
// by themselves.
std::optional<Fields> decodeFields(std::string_view message);

// An archive: the fields of its header, and the payloads that the header lists.
struct ArchiveParts {
  static constexpr std::uint64_t kMessageInfos = 2;  // in the header
  static constexpr std::uint64_t kInfoType = 1;      // in an info
  static constexpr std::uint64_t kInfoLength = 3;

  Fields header;
  std::vector<std::string> payloads;
  std::optional<std::uint64_t> statedHeaderLength = {};

  // The header states the lengths of the payloads as they are.
  std::string encode() const;
};

// Sets a number in an info of a header.
void setInfo(Field& info, std::uint64_t number, std::uint64_t value);

// An object stream: archives, and what is none any more.
struct StreamParts {
  std::vector<ArchiveParts> archives;
  std::string tail;

  std::string encode() const;
  static StreamParts decode(std::string_view stream);
};

// A chunk: its header as it stands, and its body.
struct Chunk {
  std::string header;
  std::string body;
};

// A member: chunks, and what is none any more.
struct MemberParts {
  std::vector<Chunk> chunks;
  std::string tail;

  std::string encode() const;
  static MemberParts decode(std::string_view member);

  // What the chunks hold; nothing if one of them is not sound, or for a megabyte
  // and more.
  std::optional<std::string> unpack() const;
};

}  // namespace dorvex::fuzz
