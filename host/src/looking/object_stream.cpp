#include "looking/object_stream.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "looking/read_types.h"

namespace dorvex {
namespace {

using MessageInfo = ObjectLook::MessageInfo;
using ArchiveInfo = ObjectLook::ArchiveInfo;

enum WireType : unsigned {
  kVarint = 0,
  kFixed64 = 1,
  kLengthDelimited = 2,
  kStartGroup = 3,
  kEndGroup = 4,
  kFixed32 = 5,
};

// Fields of an archive header and of its entries.
constexpr std::uint64_t kIdentifier = 1;
constexpr std::uint64_t kMessageInfos = 2;
constexpr std::uint64_t kMessageType = 1;
constexpr std::uint64_t kMessageLength = 3;

constexpr std::uint64_t kRootIdentifier = 1;

constexpr int kGroupLevels = 100;

// One field: its number and what it holds.
struct Field {
  std::uint64_t number = 0;
  std::uint64_t value = 0;  // of a varint
  std::string_view bytes;   // of a length-delimited field
};

// Takes bytes from the front of a view; false where they are not there. A host looks
// through every byte of a document that the reader reads, so it has to be quick.
class Bytes {
 public:
  explicit Bytes(std::string_view left) : at_(left.data()), end_(at_ + left.size()) {}

  bool empty() const { return at_ == end_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - at_); }

  bool take(std::uint64_t count, std::string_view& taken) {
    if (count > size()) return false;
    taken = {at_, count};
    at_ += count;
    return true;
  }

  bool takeVarint(std::uint64_t& value) {
    if (!empty() && !continues(*at_)) {  // most are of one byte
      value = static_cast<unsigned char>(*at_++);
      return true;
    }
    return takeLongVarint(value);
  }

  bool takeField(Field& field) {
    std::uint64_t tag = 0;
    if (!takeVarint(tag)) return false;
    field.number = tag >> 3;
    return field.number != 0 && takeValue(static_cast<unsigned>(tag & 7), field, kGroupLevels);
  }

 private:
  static bool continues(char byte) { return static_cast<signed char>(byte) < 0; }

  bool takeLongVarint(std::uint64_t& value) {
    value = 0;
    for (unsigned shift = 0; shift < 70 && !empty(); shift += 7) {
      const auto byte = static_cast<unsigned char>(*at_++);
      if (shift < 64) value |= std::uint64_t{byte & 0x7FU} << shift;
      if (byte < 0x80) return true;
    }
    return false;
  }

  // What the field does not hold is 0 or empty.
  bool takeValue(unsigned wireType, Field& field, int levels) {
    field.value = 0;
    field.bytes = {};
    std::uint64_t length = 0;
    switch (wireType) {
      case kVarint:
        return takeVarint(field.value);
      case kFixed64:
        return take(8, field.bytes);
      case kFixed32:
        return take(4, field.bytes);
      case kLengthDelimited:
        return takeVarint(length) && take(length, field.bytes);
      case kStartGroup:
        return levels > 0 && takeGroup(field.number, levels - 1);
      default:
        return false;
    }
  }

  bool takeGroup(std::uint64_t number, int levels) {
    std::uint64_t tag = 0;
    while (takeVarint(tag)) {
      if ((tag & 7) == kEndGroup) return tag >> 3 == number;
      Field field{tag >> 3, 0, {}};
      if (!takeValue(static_cast<unsigned>(tag & 7), field, levels)) return false;
    }
    return false;
  }

  const char* at_;
  const char* end_;
};

bool isRunOfFields(std::string_view message) {
  Bytes bytes(message);
  Field field;
  while (!bytes.empty()) {
    if (!bytes.takeField(field)) return false;
  }
  return true;
}

bool readMessageInfo(std::string_view entry, MessageInfo& info) {
  Bytes bytes(entry);
  Field field;
  while (!bytes.empty()) {
    if (!bytes.takeField(field)) return false;
    if (field.number == kMessageType) info.type = field.value;
    if (field.number == kMessageLength) info.length = field.value;
  }
  return true;
}

bool readArchiveInfo(std::string_view header, ArchiveInfo& info) {
  info.identifier = 0;
  info.messages.clear();
  Bytes bytes(header);
  Field field;
  while (!bytes.empty()) {
    if (!bytes.takeField(field)) return false;
    if (field.number == kIdentifier) info.identifier = field.value;
    if (field.number != kMessageInfos) continue;
    if (!readMessageInfo(field.bytes, info.messages.emplace_back())) return false;
  }
  return true;
}

// An object of several messages has one identifier for them, and the first that the
// reader knows is the object.
bool isFiled(const ArchiveInfo& info) {
  return std::any_of(info.messages.begin(), info.messages.end(),
                     [](const MessageInfo& message) { return isReadType(message.type); });
}

// The type of the first message that a header lists, if the header is the
// document's.
std::optional<std::uint64_t> rootTypeIn(std::string_view header) {
  std::uint64_t identifier = 0;
  std::optional<std::uint64_t> type;
  Bytes bytes(header);
  Field field;
  while (!bytes.empty() && bytes.takeField(field)) {
    if (field.number == kIdentifier) identifier = field.value;
    if (field.number != kMessageInfos || type) continue;
    Bytes entry(field.bytes);
    Field inner;
    while (!entry.empty() && entry.takeField(inner)) {
      if (inner.number == kMessageType) type = inner.value;
    }
  }
  return identifier == kRootIdentifier ? type : std::nullopt;
}

std::string atArchive(std::uint64_t number, const char* fault) {
  return "object " + std::to_string(number) + " " + fault;
}

// Of room that is kept for the next look of a thread, in bytes.
constexpr std::size_t kMostKept = std::size_t{1024} * 1024;

thread_local std::string spareRoom;

constexpr std::size_t kLongestVarint = 10;

}  // namespace

ObjectLook::ObjectLook(Root root)
    : room_(std::exchange(spareRoom, {})), wantsRoot_(root == Root::kWanted) {}

ObjectLook::~ObjectLook() {
  if (room_.size() <= kMostKept) spareRoom = std::move(room_);
}

char* ObjectLook::room(std::size_t count) {
  if (end_ + count > room_.size() && begin_ > 0) {
    std::copy(room_.data() + begin_, room_.data() + end_, room_.data());
    end_ -= std::exchange(begin_, 0);
  }
  if (end_ + count > room_.size()) room_.resize(std::max(end_ + count, 2 * room_.size()));
  return room_.data() + end_;
}

void ObjectLook::take(std::size_t count) {
  end_ += count;
  while (!lost_ && next()) {
  }
  if (lost_ || begin_ == end_) begin_ = end_ = 0;
}

void ObjectLook::takeCopy(std::string_view bytes) {
  constexpr std::size_t kPiece = std::size_t{64} * 1024;
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kPiece))) {
    const std::size_t count = bytes.copy(room(std::min(bytes.size(), kPiece)), kPiece);
    take(count);
  }
}

// False where there is nothing more to be seen in what has come.
bool ObjectLook::next() {
  if (fault_ && (root_ || !wantsRoot_)) {
    lost_ = true;
    return false;
  }
  if (end_ - begin_ < needed_) return false;
  return message_ < archive_.messages.size() ? nextMessage() : nextHeader();
}

// Archives without a header, of one zero byte each, of which a bomb may hold 64 million.
void ObjectLook::passEmptyArchives() {
  const std::string_view bytes = atHand();
  const std::size_t count = std::min(bytes.find_first_not_of('\0'), bytes.size());
  begin_ += count;
  number_ += count;
}

bool ObjectLook::nextHeader() {
  passEmptyArchives();
  if (begin_ == end_) return false;
  Bytes stream(atHand());
  std::uint64_t length = 0;
  std::string_view header;
  if (!stream.takeVarint(length)) {
    if (end_ - begin_ >= kLongestVarint) return lose("is cut short");
    needed_ = end_ - begin_ + 1;
    return false;
  }
  if (length > kMostReadableObjects) return lose("is cut short");
  if (!stream.take(length, header)) {
    needed_ = end_ - begin_ - stream.size() + length;
    return false;
  }
  if (wantsRoot_ && !root_) root_ = rootTypeIn(header);
  message_ = 0;
  needed_ = 0;
  if (!readArchiveInfo(header, archive_)) return lose("has a damaged header");
  begin_ = end_ - stream.size();
  if (archive_.messages.empty()) finishArchive();
  return true;
}

bool ObjectLook::nextMessage() {
  const std::uint64_t length = archive_.messages[message_].length;
  if (length > kMostReadableObjects) return lose("is cut short");
  if (length > end_ - begin_) {
    needed_ = length;
    return false;
  }
  if (!fault_ && !isRunOfFields(atHand().substr(0, length))) note("holds damaged data");
  begin_ += length;
  needed_ = 0;
  if (++message_ == archive_.messages.size()) finishArchive();
  return true;
}

void ObjectLook::finishArchive() {
  if (!fault_ && isFiled(archive_)) filed_.push_back(archive_.identifier);
  ++number_;
}

void ObjectLook::note(const char* fault) {
  if (!fault_) fault_ = atArchive(number_, fault);
}

bool ObjectLook::lose(const char* fault) {
  note(fault);
  lost_ = true;
  return false;
}

std::optional<std::string> ObjectLook::fault() const {
  if (fault_) return fault_;
  if (begin_ == end_ && message_ == archive_.messages.size()) return std::nullopt;
  return atArchive(number_, "is cut short");
}

std::optional<std::string> findObjectFault(std::string_view objectStream,
                                           std::vector<std::uint64_t>* filed) {
  ObjectLook look(ObjectLook::Root::kIgnored);
  look.takeCopy(objectStream);
  if (filed != nullptr) *filed = look.takeFiled();
  return look.fault();
}

std::optional<std::uint64_t> findRootType(std::string_view objectStream) {
  ObjectLook look(ObjectLook::Root::kWanted);
  look.takeCopy(objectStream);
  return look.rootType();
}

}  // namespace dorvex
