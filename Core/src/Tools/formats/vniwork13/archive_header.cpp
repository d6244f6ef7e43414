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

// The low 32 bits, as a signed number.
int low(std::uint64_t value) { return static_cast<int>(static_cast<std::uint32_t>(value)); }

// Reads headers in one pass, as nearly all of them are. The functions return false where
// it is not certain that parsing would read the bytes to their exact end; what they have
// read is then of no use.
class CertainPass {
 public:
  explicit CertainPass(MessageScanner& scanner) : scanner_(scanner) {}

  bool readHeader(std::string_view bytes, ArchiveHeader& header) {
    return readFields(
        bytes, layoutAt(kLayoutIndex<TSP::ArchiveInfo>),
        [&header](std::uint32_t number, std::uint64_t value) {
          if (number == kIdentifier) header.identifier = value;
        },
        [this, &header](const FieldLayout& field, std::string_view value) {
          if (field.number != kMessageInfos) return isCertain(field, value);
          return readPayload(value, header.payloads.emplace_back());
        });
  }

 private:
  bool readPayload(std::string_view info, ArchiveHeader::Payload& payload) {
    return readFields(
        info, layoutAt(kLayoutIndex<TSP::MessageInfo>),
        [&payload](std::uint32_t number, std::uint64_t value) {
          if (number == kType) payload.type = low(value);
          if (number == kLength) payload.length = low(value);
        },
        [this](const FieldLayout& field, std::string_view value) {
          return isCertain(field, value);
        });
  }

  // Calls onVarint for each varint, the last of a field behind the ones before it, and
  // onBytes for each value of known length of a field that the layout has.
  template <typename OnVarint, typename OnBytes>
  static bool readFields(std::string_view bytes, MessageLayout layout, OnVarint onVarint,
                         OnBytes onBytes) {
    for (WireCursor cursor(bytes); !cursor.atEnd();) {
      std::uint32_t tag = 0;
      if (!cursor.readTag(tag) || numberOf(tag) == 0) return false;
      if (wireTypeOf(tag) == WireType::kVarint) {
        std::uint64_t value = 0;
        if (!cursor.readVarint(value)) return false;
        onVarint(numberOf(tag), value);
      } else if (wireTypeOf(tag) == WireType::kLengthDelimited) {
        std::string_view value;
        if (!cursor.readBytes(value)) return false;
        const FieldLayout* const field = findField(layout, numberOf(tag));
        if (field != nullptr && !onBytes(*field, value)) return false;
      } else if (!cursor.skipValue(wireTypeOf(tag))) {
        return false;
      }
    }
    return true;
  }

  bool isCertain(const FieldLayout& field, std::string_view value) {
    if (field.kind == FieldKind::kPackedVarint) return isVarintRun(value);
    if (field.kind != FieldKind::kMessage) return field.kind == FieldKind::kScalar;
    std::vector<SweptValue> none;  // there is no swept field in it
    return scanner_.scan(layoutAt(field.typeIndex), value, none);
  }

  MessageScanner& scanner_;
};

void clear(ArchiveHeader& header) {
  header.identifier = 0;
  header.payloads.clear();  // and keeps their room
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
  clear(header);
  const std::string_view bytes = bytesAtHand(input);
  if (input.RecursionBudget() == kRecursionLimit && CertainPass(scanner).readHeader(bytes, header))
    return input.Skip(static_cast<int>(bytes.size()));
  clear(header);
  return readByRules(header, input);
}

}  // namespace vn::iwork13
