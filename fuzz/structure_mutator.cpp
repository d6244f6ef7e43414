#include "structure_mutator.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "support/package_writer.h"

namespace dorvex::fuzz {
namespace {

using testing::WireType;

constexpr int kMostMessageLevels = 12;
constexpr int kMostNestedPackages = 3;
constexpr std::uint64_t kMostUnpackedMembers = std::uint64_t{1} << 22;

}  // namespace

StructureMutator::StructureMutator(std::uint32_t seed, MutateBytes mutateBytes,
                                   std::span<const int> types)
    : random_(seed), mutateBytes_(std::move(mutateBytes)), types_(types) {}

std::string StructureMutator::mutate(Level level, const std::string& input) {
  std::string result = input;
  do {
    switch (level) {
      case Level::kMessage:
        result = mutateMessage(result, kMostMessageLevels);
        break;
      case Level::kObjectStream:
        result = mutateObjectStream(result);
        break;
      case Level::kMember:
        result = mutateMember(result);
        break;
      case Level::kPackage:
        result = mutatePackage(result, kMostNestedPackages);
    }
  } while (oneIn(3));
  return result;
}

std::uint32_t StructureMutator::below(std::size_t limit) {
  return static_cast<std::uint32_t>(random_() % limit);
}

template <typename Item>
Item& StructureMutator::anyOf(std::vector<Item>& items) {
  return items[below(items.size())];
}

int StructureMutator::anyType() {
  constexpr int kHighestType = 12100;
  if (types_.empty() || oneIn(16)) return static_cast<int>(below(kHighestType));
  return types_[below(types_.size())];
}

template <typename Item>
void StructureMutator::insertAnywhere(std::vector<Item>& items, Item item) {
  items.insert(items.begin() + below(items.size() + 1), std::move(item));
}

template <typename Item>
void StructureMutator::rearrange(std::vector<Item>& items) {
  switch (below(3)) {
    case 0:
      items.erase(items.begin() + below(items.size()));
      break;
    case 1:
      insertAnywhere(items, Item(anyOf(items)));
      break;
    default:
      std::swap(anyOf(items), anyOf(items));
  }
}

// ---------------------------------------------------------------------------
// Messages

std::string StructureMutator::makeText() {
  static const std::string kTexts[] = {
      "plain",
      "See text: ",
      " string: ",
      "text: \"",
      "\" text: \"\n",
      "it's \"quoted\" \\ back",
      "\\001\\n\\t\\'\\\"",
      "C:\\temp\\new",
      "\x01\x07\x0B\r\n\t\x7F",
      "caf\xC3\xA9 \xE2\x80\x98q\xE2\x80\x99 \xEF\xBF\xBC",
      "\\342\\200\\230\\357\\277\\274",
      "bad \xFF\x80 text: ",
      std::string("nul\0 string: ", 13),
      std::string(4096, 'x'),
      std::string(4082, 'y') + " text: ",
  };
  return kTexts[below(std::size(kTexts))];
}

std::uint64_t StructureMutator::makeNumber() {
  static constexpr std::uint64_t kNumbers[] = {
      0,          1,          2,          127,        128,         0x3FFF,
      0x4000,     0xFFFF,     0x1FFFFF,   0x7FFFFFFF, 0x80000000U, 0xFFFFFFFFU,
      1ULL << 32, 1ULL << 35, 1ULL << 63, ~0ULL,      ~0ULL - 1,   0x4000000};
  return oneIn(2) ? kNumbers[below(std::size(kNumbers))] : below(64);
}

Field StructureMutator::makeField() {
  static constexpr unsigned kWireTypes[] = {WireType::kVarint,          WireType::kFixed64,
                                            WireType::kFixed32,         WireType::kLengthDelimited,
                                            WireType::kStartGroup,      WireType::kEndGroup,
                                            WireType::kLengthDelimited, 6};
  Field field{.number = 1 + below(oneIn(4) ? 3000 : 24),
              .wireType = kWireTypes[below(std::size(kWireTypes))],
              .value = makeNumber()};
  if (field.wireType == WireType::kLengthDelimited)
    field.bytes = oneIn(2) ? makeText() : makeField().encode();
  return field;
}

void StructureMutator::mutateField(Field& field, int levels) {
  switch (below(field.wireType == WireType::kLengthDelimited ? 12 : 4)) {
    case 0:
      field.number = oneIn(2) ? field.number + 1 : 1 + below(40);
      break;
    case 1:
      field.wireType = below(8);
      break;
    case 2:
      field.value = makeNumber();
      field.width = oneIn(4) ? static_cast<int>(below(11)) : 0;
      break;
    case 3:
      field.value ^= 1ULL << below(64);
      if (oneIn(2)) field.statedLength = oneIn(2) ? makeNumber() : field.bytes.size() + 1;
      break;
    case 4:
      field.bytes = makeText();
      break;
    case 5:
      field.bytes.insert(below(field.bytes.size() + 1), makeText());
      break;
    case 6:
      field.bytes = mutateBytes_(std::move(field.bytes));
      break;
    default:
      if (levels > 0) field.bytes = mutateMessage(field.bytes, levels - 1);
  }
}

std::string StructureMutator::mutateMessage(const std::string& message, int levels) {
  auto fields = decodeFields(message);
  if (!fields) return mutateBytes_(message);
  if (fields->empty() || oneIn(8)) {
    insertAnywhere(*fields, makeField());
    return encodeFields(*fields);
  }
  switch (below(12)) {
    case 0:
    case 1:
      rearrange(*fields);
      break;
    case 2:  // one level deeper
      return Field{.number = 1 + below(8), .wireType = WireType::kLengthDelimited, .bytes = message}
          .encode();
    case 3:
      return message.substr(0, below(message.size() + 1));
    case 4:
      return mutateBytes_(message);
    default:
      mutateField(anyOf(*fields), levels);
  }
  return encodeFields(*fields);
}

// ---------------------------------------------------------------------------
// Object streams

ArchiveParts StructureMutator::makeArchive() {
  Field info{.number = ArchiveParts::kMessageInfos, .wireType = WireType::kLengthDelimited};
  setInfo(info, ArchiveParts::kInfoType, static_cast<std::uint64_t>(anyType()));
  return {{{.number = 1, .value = below(16)}, info}, {makeField().encode()}};
}

void StructureMutator::mutateHeader(ArchiveParts& archive) {
  const auto info = std::ranges::find(archive.header, ArchiveParts::kMessageInfos, &Field::number);
  switch (below(6)) {
    case 0:
    case 1:
      if (info != archive.header.end())
        setInfo(*info, ArchiveParts::kInfoType, static_cast<std::uint64_t>(anyType()));
      break;
    case 2:  // mostly the identifier
      archive.header.front().value = below(16);
      break;
    case 3:
      mutateField(anyOf(archive.header), 2);
      break;
    case 4:
      rearrange(archive.header);
      break;
    default:
      archive.statedHeaderLength = makeNumber();
  }
}

void StructureMutator::mutateArchive(ArchiveParts& archive) {
  if (!archive.header.empty() && oneIn(4)) {
    mutateHeader(archive);
  } else if (archive.payloads.empty() || oneIn(12)) {
    const ArchiveParts other = makeArchive();
    archive.header.push_back(other.header.back());
    archive.payloads.push_back(other.payloads.back());
  } else {
    std::string& payload = anyOf(archive.payloads);
    payload = mutateMessage(payload, kMostMessageLevels);
  }
}

std::string StructureMutator::mutateObjectStream(const std::string& bytes) {
  StreamParts stream = StreamParts::decode(bytes);
  if (stream.archives.empty() || oneIn(16)) {
    insertAnywhere(stream.archives, makeArchive());
    return stream.encode();
  }
  switch (below(12)) {
    case 0:
    case 1:
      rearrange(stream.archives);
      break;
    case 2:
      if (stream.tail.empty())
        stream.tail = makeField().encode();
      else
        stream.tail = oneIn(2) ? "" : mutateBytes_(stream.tail);
      break;
    case 3:
      return mutateBytes_(bytes);
    default:
      mutateArchive(anyOf(stream.archives));
  }
  return stream.encode();
}

// ---------------------------------------------------------------------------
// Members

std::string StructureMutator::makeMember(std::string_view objectStream) {
  const std::size_t pieceSize = oneIn(3) ? 1 + below(512) : 65536;
  std::string member;
  do {
    const std::string_view piece = objectStream.substr(0, pieceSize);
    member +=
        testing::chunk(oneIn(3) ? testing::literalBlock(piece) : testing::compressedBlock(piece));
    objectStream.remove_prefix(piece.size());
  } while (!objectStream.empty());
  return member;
}

void StructureMutator::mutateChunk(Chunk& chunk) {
  switch (below(3)) {
    case 0:
      chunk.header[below(chunk.header.size())] = static_cast<char>(random_());
      break;
    case 1:  // the header says so
      chunk.body = mutateBytes_(chunk.body);
      chunk.header = testing::chunk(chunk.body).substr(0, chunk.header.size());
      break;
    default:
      chunk.body.resize(below(chunk.body.size() + 1));
  }
}

std::string StructureMutator::mutateMember(const std::string& bytes) {
  MemberParts member = MemberParts::decode(bytes);
  const auto stream = member.unpack();
  if (stream && !oneIn(6)) return makeMember(mutateObjectStream(*stream)) + member.tail;
  if (member.chunks.empty() || oneIn(8)) return mutateBytes_(bytes);
  switch (below(4)) {
    case 0:
      rearrange(member.chunks);
      break;
    case 1:
      member.tail = member.tail.empty() ? std::string(1 + below(4), '\0') : "";
      break;
    default:
      mutateChunk(anyOf(member.chunks));
  }
  return member.encode();
}

// ---------------------------------------------------------------------------
// Packages

std::string StructureMutator::mutateNamedMember(const std::string& name,
                                                const std::string& contents, int levels) {
  if (name.ends_with(".iwa")) return mutateMember(contents);
  if (name.ends_with(".zip") && levels > 0) return mutatePackage(contents, levels - 1);
  return mutateBytes_(contents);
}

std::string StructureMutator::mutatePackage(const std::string& package, int levels) {
  static constexpr const char* kNames[] = {
      "Index/Document.iwa", "Document.iwa", "Index/Tables/Tile.iwa",    "Index.zip",
      "Data/Index.zip",     "Slide-1.iwa",  "Index/Slide.iwa",          "CalculationEngine.iwa",
      "Index/Other.iwa",    "preview.jpg",  "Metadata/Properties.plist"};
  try {
    if (oneIn(12)) return mutateBytes_(package);
    std::vector<testing::Member> members = testing::unzip(package, kMostUnpackedMembers);
    if (members.empty()) return mutateBytes_(package);
    testing::Member& member = anyOf(members);
    switch (below(16)) {
      case 0:
        rearrange(members);
        break;
      case 1:
        member.name = kNames[below(std::size(kNames))];
        break;
      case 2:
        member.deflated = !member.deflated;
        break;
      case 3:
        members.push_back({kNames[below(std::size(kNames))], makeMember(makeArchive().encode())});
        break;
      case 4:
        if (levels > 0) members = {{"Index.zip", package}};
        break;
      default:
        member.contents = mutateNamedMember(member.name, member.contents, levels);
    }
    return testing::zip(members);
  } catch (const std::exception&) {
    // No zip that can be read, or two members of one name, which libzip does not write.
    return mutateBytes_(package);
  }
}

// ---------------------------------------------------------------------------
// Crossing

std::string StructureMutator::cross(Level level, const std::string& left,
                                    const std::string& right) {
  if (level == Level::kObjectStream) {
    StreamParts stream = StreamParts::decode(left);
    StreamParts other = StreamParts::decode(right);
    if (!other.archives.empty()) {
      insertAnywhere(stream.archives, anyOf(other.archives));
      return stream.encode();
    }
  }
  if (level == Level::kPackage) {
    try {
      std::vector<testing::Member> members = testing::unzip(left, kMostUnpackedMembers);
      std::vector<testing::Member> others = testing::unzip(right, kMostUnpackedMembers);
      if (!others.empty()) insertAnywhere(members, anyOf(others));
      return testing::zip(members);
    } catch (const std::exception&) {
      // Joined as bytes, as all that is not understood.
    }
  }
  return left.substr(0, below(left.size() + 1)) + right.substr(below(right.size() + 1));
}

}  // namespace dorvex::fuzz
