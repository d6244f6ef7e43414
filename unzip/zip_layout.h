// Where the members of a zip lie, and whether its headers agree about them.
//
// libzip goes by the central directory alone and shows neither the offsets in it
// nor the local headers. This reads both, so that no byte of a zip can belong to
// two members, and nothing can be hidden in what two readers take differently.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "io_reader.h"

namespace dorvex::unzip {

// Flags of a member's headers: how hard it was compressed; that its sizes and its checksum
// stand behind its data; that its name is UTF-8.
inline constexpr std::uint16_t kLevelFlags = 3U << 1;
inline constexpr std::uint16_t kDescriptorFlag = 1U << 3;
inline constexpr std::uint16_t kUtf8Flag = 1U << 11;
// Those that do not change how the data are read. Of others more would have to be known.
inline constexpr std::uint16_t kHarmlessFlags = kLevelFlags | kDescriptorFlag | kUtf8Flag;

// Compression methods.
inline constexpr std::uint16_t kStored = 0;
inline constexpr std::uint16_t kDeflated = 8;

// A member as the central directory has it.
struct ZipEntry {
  std::uint64_t offset = 0;  // of its local header
  std::uint64_t compressedSize = 0;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;
  std::uint16_t method = 0;
  std::uint16_t flags = 0;
  std::uint64_t flagsOffset = 0;  // of its flags in the central directory
  std::uint64_t room = 0;         // the offset of what follows it in the file
  std::size_t nameStart = 0;
  std::uint16_t nameLength = 0;
  bool overlaps = false;  // with another member, or with the central directory
};

class ZipLayout {
 public:
  // How far reading came.
  enum class Outcome { kRead, kNoZip, kTooManyMembers };

  explicit ZipLayout(IoReader reader) : reader_(reader) {}

  // Reads the central directory that ends nearest to the end of the file. More
  // members than mostMembers, unless that is 0, are not looked at. Linear, in
  // reads of 64 KiB.
  Outcome read(std::uint64_t mostMembers);

  // In the order of the central directory.
  const std::vector<ZipEntry>& entries() const { return entries_; }

  // As its bytes stand.
  std::string_view nameOf(const ZipEntry& entry) const;

  // Whether libzip is bound to read the same out of the central directory: nothing in it
  // could be taken in two ways, or refused. Not so of many a zip that is sound: of one
  // with ZIP64 records, say.
  bool isPlain() const { return isPlain_; }

  // Reads the local header of a member, and the data descriptor where there is
  // one: whether they say what the central directory says (method, encryption,
  // name, checksum, both sizes) and the member ends before what follows it. One
  // read for most members. Not asked of a member that overlaps. Gives where the data
  // of the member begin; nothing where the two disagree.
  std::optional<std::uint64_t> findData(const ZipEntry& entry);

  // Of the file that the layout is of.
  IoReader& reader() { return reader_; }

 private:
  // Where the central directory lies.
  struct Directory {
    std::uint64_t count = 0;
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    bool isPlain = false;
  };

  std::optional<Directory> findDirectory();
  std::optional<Directory> widen(Directory directory, std::uint64_t endOffset);
  bool readEntries(const Directory& directory);
  void findOverlaps(std::uint64_t directoryOffset);
  bool hasDescriptor(const ZipEntry& entry, std::uint64_t offset);
  IoReader reader_;
  std::vector<ZipEntry> entries_;
  std::string names_;  // of all members, one behind the other
  bool isPlain_ = false;
};

}  // namespace dorvex::unzip
