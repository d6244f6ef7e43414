#include "Tools/formats/vniwork13/archive_header.h"

#include <google/protobuf/io/coded_stream.h>

#include <memory>
#include <string_view>
#include <variant>

#include "TSPArchiveMessages.pb.h"
#include "Tools/formats/vniwork13/field_tree.h"
#include "Tools/formats/vniwork13/layout_index.h"
#include "Tools/formats/vniwork13/message_scanner.h"
#include "Tools/formats/vniwork13/rule_parser.h"
#include "Tools/formats/vniwork13/wire_cursor.h"

namespace vn::iwork13 {
namespace {

using google::protobuf::io::CodedInputStream;

constexpr auto kIdentifier = TSP::ArchiveInfo::kIdentifierFieldNumber;
constexpr auto kMessageInfos = TSP::ArchiveInfo::kMessageInfosFieldNumber;
constexpr auto kType = TSP::MessageInfo::kTypeFieldNumber;
constexpr auto kLength = TSP::MessageInfo::kLengthFieldNumber;

constexpr std::uint32_t tag(int number, WireType type) {
  return static_cast<std::uint32_t>(number) << 3U | static_cast<std::uint32_t>(type);
}

// The low 32 bits, as a signed number.
int low(std::uint64_t value) { return static_cast<int>(static_cast<std::uint32_t>(value)); }

// Whether parsing would read the bytes to their exact end. False where that is not
// certain.
bool isWellFormed(std::string_view bytes, MessageScanner& scanner) {
  std::vector<SweptValue> none;  // there is no swept field in it
  return scanner.scan(layoutAt(kLayoutIndex<TSP::ArchiveInfo>), bytes, none);
}

// Of well-formed bytes. The last value of a field counts.
ArchiveHeader::Payload payloadOf(std::string_view info) {
  ArchiveHeader::Payload payload{0, 0};
  for (WireCursor cursor(info); !cursor.atEnd();) {
    std::uint32_t field = 0;
    cursor.readTag(field);
    if (field == tag(kType, WireType::kVarint))
      payload.type = low(cursor.varint());
    else if (field == tag(kLength, WireType::kVarint))
      payload.length = low(cursor.varint());
    else
      cursor.skipValue(wireTypeOf(field));
  }
  return payload;
}

void readWellFormed(std::string_view bytes, ArchiveHeader& header) {
  for (WireCursor cursor(bytes); !cursor.atEnd();) {
    std::uint32_t field = 0;
    cursor.readTag(field);
    if (field == tag(kIdentifier, WireType::kVarint))
      header.identifier = cursor.varint();
    else if (field == tag(kMessageInfos, WireType::kLengthDelimited))
      header.payloads.push_back(payloadOf(cursor.bytes()));
    else
      cursor.skipValue(wireTypeOf(field));
  }
}

bool readByRules(ArchiveHeader& header, CodedInputStream& input) {
  FieldTree archive(layoutAt(kLayoutIndex<TSP::ArchiveInfo>));
  if (!archive.parse(input)) return false;
  header.identifier = archive.number(kIdentifier);
  const auto infos = archive.fields().find(kMessageInfos);
  if (infos == archive.fields().end()) return true;
  for (const FieldTree::Value& value : infos->second.values) {
    const auto& info = *std::get<std::unique_ptr<FieldTree>>(value);
    header.payloads.push_back({low(info.number(kType)), low(info.number(kLength))});
  }
  return true;
}

}  // namespace

bool readArchiveHeader(ArchiveHeader& header, CodedInputStream& input, MessageScanner& scanner) {
  header.identifier = 0;
  header.payloads.clear();
  const std::string_view bytes = bytesAtHand(input);
  if (input.RecursionBudget() != kRecursionLimit || !isWellFormed(bytes, scanner))
    return readByRules(header, input);
  readWellFormed(bytes, header);
  return input.Skip(static_cast<int>(bytes.size()));
}

}  // namespace vn::iwork13
