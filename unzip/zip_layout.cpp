#include "zip_layout.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <numeric>

namespace dorvex::unzip {
namespace {

constexpr std::uint32_t kLocalSignature = 0x04034B50;
constexpr std::uint32_t kCentralSignature = 0x02014B50;
constexpr std::uint32_t kEndSignature = 0x06054B50;
constexpr std::uint32_t kEnd64Signature = 0x06064B50;
constexpr std::uint32_t kEnd64LocatorSignature = 0x07064B50;
constexpr std::uint32_t kDescriptorSignature = 0x08074B50;

constexpr std::size_t kLocalSize = 30;
constexpr std::size_t kCentralSize = 46;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kEnd64Size = 56;
constexpr std::size_t kEnd64LocatorSize = 20;
constexpr std::size_t kLongestComment = 0xFFFF;
constexpr std::size_t kUsualExtra = 64;  // bytes that a local extra field seldom exceeds

constexpr std::uint16_t kEncryptedFlag = 1U << 0;
constexpr std::uint16_t kZip64Field = 1;
constexpr std::uint32_t kInZip64Field = 0xFFFFFFFF;

using Byte = unsigned char;

std::uint64_t little(const Byte* bytes, int count) {
  std::uint64_t value = 0;
  for (int i = count; i-- > 0;) value = value << 8 | bytes[i];
  return value;
}
std::uint16_t u16(const Byte* bytes) { return static_cast<std::uint16_t>(little(bytes, 2)); }
std::uint32_t u32(const Byte* bytes) { return static_cast<std::uint32_t>(little(bytes, 4)); }
std::uint64_t u64(const Byte* bytes) { return little(bytes, 8); }

// Takes the eight-byte values of a ZIP64 extra field, in order, for those of the
// given values that the header leaves to it. False where they are not there.
bool takeZip64(const Byte* extra, std::size_t length,
               std::initializer_list<std::uint64_t*> values) {
  while (length >= 4) {
    const std::size_t field = u16(extra + 2);
    if (field > length - 4) break;
    if (u16(extra) == kZip64Field) {
      const Byte* next = extra + 4;
      const Byte* const end = next + field;
      for (std::uint64_t* value : values) {
        if (*value != kInZip64Field) continue;
        if (end - next < 8) return false;
        *value = u64(next);
        next += 8;
      }
      return true;
    }
    extra += 4 + field;
    length -= 4 + field;
  }
  return true;  // without the field, the value is what it looks like
}

// --- What makes a zip plain ---

// Whether the end record at that place in the tail of a file is the only one there, is
// of one disk and leaves nothing to ZIP64 records.
bool isPlainEnd(std::string_view tail, std::size_t at) {
  constexpr std::string_view kSignature = "PK\5\6";
  constexpr std::uint16_t kCountInZip64 = 0xFFFF;
  const auto* end = reinterpret_cast<const Byte*>(tail.data()) + at;
  return tail.find(kSignature) == at && tail.find(kSignature, at + 1) == std::string_view::npos &&
         u32(end + 4) == 0 && u16(end + 8) == u16(end + 10) && u16(end + 10) != kCountInZip64 &&
         u32(end + 12) != kInZip64Field && u32(end + 16) != kInZip64Field;
}

// Extra fields that change what a header says: of ZIP64, names and comments in UTF-8,
// encryption.
constexpr std::array<std::uint16_t, 4> kTellingFields = {kZip64Field, 0x7075, 0x6375, 0x9901};

// Fields that end where they say, and none that tells something.
bool isPlainExtra(const Byte* extra, std::size_t length) {
  while (length >= 4) {
    const std::size_t field = u16(extra + 2);
    if (field > length - 4 || std::ranges::count(kTellingFields, u16(extra)) > 0) return false;
    extra += 4 + field;
    length -= 4 + field;
  }
  return length == 0;
}

bool isPlainHeader(const Byte* header) {
  constexpr std::uint16_t kEncryptedMethod = 99;
  return (u16(header + 8) & ~kHarmlessFlags) == 0 && u16(header + 10) != kEncryptedMethod &&
         u32(header + 20) != kInZip64Field && u32(header + 24) != kInZip64Field &&
         u16(header + 34) == 0 && u32(header + 42) != kInZip64Field;
}

// Reads a range of the file from front to back.
class Window {
 public:
  Window(IoReader& reader, std::uint64_t offset, std::uint64_t size)
      : reader_(reader), offset_(offset), left_(size) {}

  // The next count bytes, valid until the next call; null where they are not
  // there.
  const Byte* take(std::size_t count) {
    if (buffer_.size() - start_ < count && !fill(count)) return nullptr;
    const Byte* bytes = buffer_.data() + start_;
    start_ += count;
    return bytes;
  }

  bool atEnd() const { return left_ == 0 && start_ == buffer_.size(); }

 private:
  static constexpr std::size_t kBlock = 65536;

  bool fill(std::size_t count) {
    buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(start_));
    start_ = 0;
    const std::size_t had = buffer_.size();
    if (left_ < count - had) return false;
    const auto more =
        static_cast<std::size_t>(std::min<std::uint64_t>(left_, std::max(count - had, kBlock)));
    buffer_.resize(had + more);
    if (!reader_.readAll(offset_, buffer_.data() + had, more)) return false;
    offset_ += more;
    left_ -= more;
    return true;
  }

  IoReader& reader_;
  std::uint64_t offset_;
  std::uint64_t left_;
  std::vector<Byte> buffer_;
  std::size_t start_ = 0;
};

// Whether the range [offset, offset + size) ends at or before end.
bool fits(std::uint64_t offset, std::uint64_t size, std::uint64_t end) {
  return offset <= end && size <= end - offset;
}

// Without extra field and descriptor, which only the local header knows of.
std::uint64_t leastSize(const ZipEntry& entry) {
  return kLocalSize + entry.nameLength + entry.compressedSize;
}

}  // namespace

ZipLayout::Outcome ZipLayout::read(std::uint64_t mostMembers) {
  const auto directory = findDirectory();
  if (!directory) return Outcome::kNoZip;
  if (mostMembers != 0 && directory->count > mostMembers) return Outcome::kTooManyMembers;
  if (!readEntries(*directory)) return Outcome::kNoZip;
  isPlain_ = isPlain_ && directory->isPlain;
  findOverlaps(directory->offset);
  return Outcome::kRead;
}

std::optional<ZipLayout::Directory> ZipLayout::findDirectory() {
  const std::uint64_t size = reader_.size();
  // libzip takes end records that begin a little further back, too.
  constexpr std::uint64_t kLongestTail = kEnd64LocatorSize + kEndSize + kLongestComment;
  std::string tail(static_cast<std::size_t>(std::min(size, kLongestTail)), '\0');
  const std::uint64_t tailOffset = size - tail.size();
  if (tail.size() < kEndSize || !reader_.readAll(tailOffset, tail.data(), tail.size())) {
    return std::nullopt;
  }
  const std::size_t first = tail.size() - std::min(tail.size(), kEndSize + kLongestComment);
  for (std::size_t at = tail.size() - kEndSize + 1; at-- > first;) {
    const auto* end = reinterpret_cast<const Byte*>(tail.data()) + at;
    if (u32(end) != kEndSignature || u16(end + 20) > tail.size() - at - kEndSize) continue;
    const auto directory = widen({.count = u16(end + 10),
                                  .offset = u32(end + 16),
                                  .size = u32(end + 12),
                                  .isPlain = isPlainEnd(tail, at)},
                                 tailOffset + at);
    if (directory && fits(directory->offset, directory->size, tailOffset + at)) return directory;
  }
  return std::nullopt;
}

// A ZIP64 locator before the end record leads to the true values.
std::optional<ZipLayout::Directory> ZipLayout::widen(Directory directory, std::uint64_t endOffset) {
  std::array<Byte, kEnd64LocatorSize> locator;
  if (endOffset < locator.size()) return directory;
  if (!reader_.readAll(endOffset - locator.size(), locator.data(), locator.size())) {
    return std::nullopt;
  }
  if (u32(locator.data()) != kEnd64LocatorSignature) return directory;
  std::array<Byte, kEnd64Size> end;
  const std::uint64_t offset = u64(&locator[8]);
  if (!fits(offset, end.size(), endOffset) || !reader_.readAll(offset, end.data(), end.size()) ||
      u32(end.data()) != kEnd64Signature) {
    return std::nullopt;
  }
  return Directory{.count = u64(&end[32]), .offset = u64(&end[48]), .size = u64(&end[40])};
}

bool ZipLayout::readEntries(const Directory& directory) {
  if (directory.count > directory.size / kCentralSize) return false;
  entries_.reserve(static_cast<std::size_t>(directory.count));
  Window window(reader_, directory.offset, directory.size);
  isPlain_ = true;
  std::uint64_t offset = directory.offset;
  for (std::uint64_t i = 0; i < directory.count; ++i) {
    const Byte* header = window.take(kCentralSize);
    if (header == nullptr || u32(header) != kCentralSignature) return false;
    ZipEntry entry{.offset = u32(header + 42),
                   .compressedSize = u32(header + 20),
                   .size = u32(header + 24),
                   .crc = u32(header + 16),
                   .method = u16(header + 10),
                   .flags = u16(header + 8),
                   .flagsOffset = offset + 8,
                   .nameStart = names_.size(),
                   .nameLength = u16(header + 28)};
    const std::size_t extraLength = u16(header + 30);
    const std::size_t commentLength = u16(header + 32);
    isPlain_ = isPlain_ && isPlainHeader(header);
    const Byte* name = window.take(entry.nameLength + extraLength + commentLength);
    if (name == nullptr) return false;
    offset += kCentralSize + entry.nameLength + extraLength + commentLength;
    names_.append(reinterpret_cast<const char*>(name), entry.nameLength);
    isPlain_ = isPlain_ && isPlainExtra(name + entry.nameLength, extraLength);
    if (!takeZip64(name + entry.nameLength, extraLength,
                   {&entry.size, &entry.compressedSize, &entry.offset})) {
      return false;
    }
    entries_.push_back(entry);
  }
  return window.atEnd();
}

// In the order of the file, a member overlaps when it begins before the furthest
// end so far, and so does the one that reached there.
void ZipLayout::findOverlaps(std::uint64_t directoryOffset) {
  std::vector<std::size_t> order(entries_.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::ranges::stable_sort(order, {}, [this](std::size_t i) { return entries_[i].offset; });
  ZipEntry* furthest = nullptr;
  for (std::size_t i = 0; i < order.size(); ++i) {
    ZipEntry& entry = entries_[order[i]];
    entry.room = i + 1 < order.size() ? entries_[order[i + 1]].offset : directoryOffset;
    entry.overlaps = !fits(entry.offset, leastSize(entry), directoryOffset);
    if (furthest != nullptr && !fits(furthest->offset, leastSize(*furthest), entry.offset)) {
      furthest->overlaps = true;
      entry.overlaps = true;
      if (fits(entry.offset, leastSize(entry), furthest->offset + leastSize(*furthest))) continue;
    }
    furthest = &entry;
  }
}

std::string_view ZipLayout::nameOf(const ZipEntry& entry) const {
  return std::string_view(names_).substr(entry.nameStart, entry.nameLength);
}

std::optional<std::uint64_t> ZipLayout::findData(const ZipEntry& entry) {
  std::vector<Byte> header(static_cast<std::size_t>(std::min<std::uint64_t>(
      kLocalSize + entry.nameLength + kUsualExtra, reader_.size() - entry.offset)));
  if (!reader_.readAll(entry.offset, header.data(), header.size())) return std::nullopt;
  const Byte* local = header.data();
  const std::uint16_t flags = u16(local + 6);
  if (u32(local) != kLocalSignature || u16(local + 8) != entry.method ||
      (flags & kEncryptedFlag) != (entry.flags & kEncryptedFlag) ||
      u16(local + 26) != entry.nameLength ||
      nameOf(entry) !=
          std::string_view(reinterpret_cast<const char*>(local) + kLocalSize, entry.nameLength)) {
    return std::nullopt;
  }
  const std::uint32_t crc = u32(local + 14);
  std::uint64_t compressedSize = u32(local + 18);
  std::uint64_t size = u32(local + 22);
  const std::size_t extraLength = u16(local + 28);
  const std::uint64_t data = entry.offset + kLocalSize + entry.nameLength + extraLength;
  if (!fits(data, entry.compressedSize, entry.room)) return std::nullopt;

  const std::size_t needed = kLocalSize + entry.nameLength + extraLength;
  if (needed > header.size()) {
    header.resize(needed);
    if (!reader_.readAll(entry.offset, header.data(), needed)) return std::nullopt;
  }
  if (!takeZip64(header.data() + kLocalSize + entry.nameLength, extraLength,
                 {&size, &compressedSize})) {
    return std::nullopt;
  }
  if (crc == entry.crc && size == entry.size && compressedSize == entry.compressedSize) return data;
  if ((flags & kDescriptorFlag) == 0) return std::nullopt;
  // What a local header does not know yet is 0 there, and follows the data.
  const auto isOpen = [](std::uint64_t local, std::uint64_t central) {
    return local == 0 || local == central;
  };
  const bool agrees = isOpen(crc, entry.crc) && isOpen(size, entry.size) &&
                      isOpen(compressedSize, entry.compressedSize) &&
                      hasDescriptor(entry, data + entry.compressedSize);
  return agrees ? std::optional(data) : std::nullopt;
}

// A descriptor may have a signature or not, and sizes of four bytes or of eight.
bool ZipLayout::hasDescriptor(const ZipEntry& entry, std::uint64_t offset) {
  std::array<Byte, 24> bytes{};
  const std::uint64_t length = std::min<std::uint64_t>(bytes.size(), entry.room - offset);
  if (!reader_.readAll(offset, bytes.data(), length)) return false;
  const auto matches = [&](std::size_t at, int width) {
    const auto sizeWidth = static_cast<std::size_t>(width);
    return at + 4 + 2 * sizeWidth <= length && u32(&bytes[at]) == entry.crc &&
           little(&bytes[at + 4], width) == entry.compressedSize &&
           little(&bytes[at + 4 + sizeWidth], width) == entry.size;
  };
  const bool isSigned = u32(bytes.data()) == kDescriptorSignature;
  return (isSigned && (matches(4, 4) || matches(4, 8))) || matches(0, 4) || matches(0, 8);
}

}  // namespace dorvex::unzip
