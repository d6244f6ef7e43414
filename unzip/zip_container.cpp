#include "zip_container.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "io_source.h"

namespace dorvex::unzip {
namespace {

constexpr std::uint16_t kUtf8Flag = 1U << 11;
constexpr std::uint16_t kLevelFlags = 3U << 1;
constexpr std::uint16_t kDescriptorFlag = 1U << 3;
constexpr std::size_t kCopySize = 65536;
constexpr zip_uint64_t kLargestSize = std::numeric_limits<std::uint32_t>::max();

struct CloseFile {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using File = std::unique_ptr<zip_file_t, CloseFile>;

VNContainerStatus statusOf(const zip_error_t* error) {
  switch (zip_error_code_zip(error)) {
    case ZIP_ER_MEMORY:
      return VN_CONTAINER_OUT_OF_MEMORY;
    case ZIP_ER_COMPNOTSUPP:
      return VN_CONTAINER_COMPRESSION_NOT_SUPPORTED;
    case ZIP_ER_ENCRNOTSUPP:
    case ZIP_ER_NOPASSWD:
    case ZIP_ER_WRONGPASSWD:
      return VN_CONTAINER_ENCRYPTED;
    default:
      return VN_CONTAINER_DAMAGED;
  }
}

bool writeAll(_VPTPIOobj* stream, const char* data, std::size_t size) {
  while (size > 0) {
    const int written = stream->Write(stream, data, static_cast<std::uint32_t>(size));
    if (written <= 0 || static_cast<std::size_t>(written) > size) return false;
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

// Reads to the end, since libzip compares the checksum only there.
VNContainerStatus copy(zip_file_t* file, zip_uint64_t size, _VPTPIOobj* stream,
                       std::uint64_t& written) {
  std::array<char, kCopySize> block;
  zip_uint64_t total = 0;
  for (;;) {
    const zip_int64_t got = zip_fread(file, block.data(), block.size());
    if (got < 0) return statusOf(zip_file_get_error(file));
    if (got == 0) break;
    total += static_cast<zip_uint64_t>(got);
    if (total > size) return VN_CONTAINER_DAMAGED;
    if (!writeAll(stream, block.data(), static_cast<std::size_t>(got))) {
      return VN_CONTAINER_WRITE_FAILURE;
    }
    written += static_cast<std::uint64_t>(got);
  }
  return total == size ? VN_CONTAINER_OK : VN_CONTAINER_DAMAGED;
}

// What a host's slot throws counts as a read that fails, as it does below libzip.
bool readBlock(IoReader& reader, std::uint64_t offset, char* block, std::uint64_t count) {
  try {
    return reader.readAll(offset, block, count);
  } catch (...) {
    return false;
  }
}

// A member whose bytes lie in the zip as they are, and of which nothing has to be known
// that this does not know.
bool isPlainStored(const ZipEntry& entry) {
  constexpr std::uint16_t kKnownFlags = kLevelFlags | kDescriptorFlag | kUtf8Flag;
  return entry.method == ZIP_CM_STORE && entry.compressedSize == entry.size &&
         (entry.flags & ~kKnownFlags) == 0;
}

// Two readings of one zip that differ make neither trustworthy.
bool isTheSame(const ZipEntry& entry, const zip_stat_t& stat) {
  return stat.size == entry.size && stat.comp_size == entry.compressedSize &&
         stat.crc == entry.crc && stat.comp_method == entry.method;
}

// What cannot be shown whole is shown cut, but marked, so that it passes for no
// other member. False where a reader might want the member for the end of its name.
bool copyName(std::string_view name, char (&shown)[sizeof(ContainerEntryInfo::name)]) {
  constexpr std::string_view kCut = "...";
  std::size_t length = name.size();
  const bool isCut = length >= sizeof shown;
  if (isCut && (name.ends_with(".iwa") || name.ends_with("Index.zip"))) return false;
  if (isCut) length = sizeof shown - 1 - kCut.size();
  char* end = std::copy_n(name.data(), length, shown);
  if (isCut) end = std::ranges::copy(kCut, end).out;
  *end = '\0';
  return true;
}

bool expandsBeyond(const ZipEntry& entry, std::uint32_t expansion) {
  const std::uint64_t least = entry.size / expansion + (entry.size % expansion != 0 ? 1 : 0);
  return entry.compressedSize < least;
}

}  // namespace

std::unique_ptr<ZipContainer> ZipContainer::open(_VPTPIOobj* io, UnzipLimits* limits) {
  const auto reader = IoReader::over(io);
  if (!reader) return nullptr;
  std::unique_ptr<ZipContainer> container(new ZipContainer(ZipLayout(*reader), limits));
  return container->openArchive(io) ? std::move(container) : nullptr;
}

ZipContainer::ZipContainer(ZipLayout layout, UnzipLimits* limits)
    : layout_(std::move(layout)), limits_(limits != nullptr ? *limits : ownLimits_) {}

bool ZipContainer::openArchive(_VPTPIOobj* io) {
  const ZipLayout::Outcome outcome = layout_.read(limits_.members);
  if (outcome == ZipLayout::Outcome::kTooManyMembers) limits_.passed = UNZIP_LIMIT_MEMBERS;
  if (outcome != ZipLayout::Outcome::kRead) return false;
  std::vector<std::uint64_t> flags;
  for (const ZipEntry& entry : layout_.entries()) {
    if ((entry.flags & kUtf8Flag) != 0) flags.push_back(entry.flagsOffset);
  }
  zip_source_t* source = makeIoSource(io, std::move(flags));
  if (source == nullptr) return false;
  archive_.reset(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (!archive_) zip_source_free(source);
  return archive_ && static_cast<std::size_t>(entryCount()) == layout_.entries().size();
}

int ZipContainer::entryCount() const {
  const zip_int64_t count = zip_get_num_entries(archive_.get(), 0);
  return static_cast<int>(std::clamp<zip_int64_t>(count, 0, std::numeric_limits<int>::max()));
}

bool ZipContainer::has(std::int32_t index) const { return index >= 0 && index < entryCount(); }

VNContainerStatus ZipContainer::entryInfo(std::int32_t index, ContainerEntryInfo& entry) const {
  entry.name[0] = '\0';
  entry.size = 0;
  if (!has(index)) return VN_CONTAINER_INVALID_ARGUMENT;
  const auto position = static_cast<zip_uint64_t>(index);
  zip_stat_t stat;
  const char* name = zip_get_name(archive_.get(), position, ZIP_FL_ENC_RAW);
  if (name == nullptr || zip_stat_index(archive_.get(), position, 0, &stat) != 0) {
    return statusOf(zip_get_error(archive_.get()));
  }
  if (!copyName(name, entry.name)) return VN_CONTAINER_DAMAGED;
  entry.size = static_cast<std::uint32_t>(std::min<zip_uint64_t>(stat.size, kLargestSize));
  return VN_CONTAINER_OK;
}

UnzipLimit ZipContainer::limitPassedBy(const ZipEntry& entry) const {
  const UnzipLimits& limits = limits_;
  const std::uint64_t left = limits.totalBytes - std::min(limits.totalBytes, limits.writtenBytes);
  if (limits.memberBytes != 0 && entry.size > limits.memberBytes) return UNZIP_LIMIT_MEMBER_BYTES;
  if (limits.expansion != 0 && expandsBeyond(entry, limits.expansion)) return UNZIP_LIMIT_EXPANSION;
  if (limits.totalBytes != 0 && entry.size > left) return UNZIP_LIMIT_TOTAL_BYTES;
  return UNZIP_LIMIT_NONE;
}

// data: where they begin.
VNContainerStatus ZipContainer::check(const ZipEntry& entry, const zip_stat_t& stat,
                                      std::uint64_t& data) {
  if (entry.overlaps || !isTheSame(entry, stat)) return VN_CONTAINER_DAMAGED;
  const auto found = layout_.findData(entry);
  if (!found) return VN_CONTAINER_DAMAGED;
  data = *found;
  const UnzipLimit passed = limitPassedBy(entry);
  if (passed != UNZIP_LIMIT_NONE) {
    limits_.passed = passed;
    return VN_CONTAINER_GENERAL_FAILURE;
  }
  return entry.size > kLargestSize ? VN_CONTAINER_GENERAL_FAILURE : VN_CONTAINER_OK;
}

// Without libzip, which would pass the bytes from one of its layers to the next.
VNContainerStatus ZipContainer::copyStored(const ZipEntry& entry, std::uint64_t data,
                                           _VPTPIOobj* stream) {
  std::array<char, kCopySize> block;
  uLong crc = 0;
  for (std::uint64_t left = entry.size; left > 0;) {
    const std::uint64_t count = std::min<std::uint64_t>(left, block.size());
    if (!readBlock(layout_.reader(), data, block.data(), count)) return VN_CONTAINER_DAMAGED;
    crc = crc32(crc, reinterpret_cast<const Bytef*>(block.data()), static_cast<uInt>(count));
    if (!writeAll(stream, block.data(), count)) return VN_CONTAINER_WRITE_FAILURE;
    limits_.writtenBytes += count;
    data += count;
    left -= count;
  }
  return crc == entry.crc ? VN_CONTAINER_OK : VN_CONTAINER_DAMAGED;
}

VNContainerStatus ZipContainer::extract(std::int32_t index, _VPTPIOobj* stream) {
  if (!has(index) || stream == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  if (stream->Write == nullptr) return VN_CONTAINER_WRITE_FAILURE;
  const auto position = static_cast<zip_uint64_t>(index);
  zip_stat_t stat;
  if (zip_stat_index(archive_.get(), position, 0, &stat) != 0) {
    return statusOf(zip_get_error(archive_.get()));
  }
  if (stat.encryption_method != ZIP_EM_NONE) return VN_CONTAINER_ENCRYPTED;
  const ZipEntry& entry = layout_.entries()[position];
  std::uint64_t data = 0;
  const VNContainerStatus status = check(entry, stat, data);
  if (status != VN_CONTAINER_OK) return status;
  if (isPlainStored(entry)) return copyStored(entry, data, stream);
  const File file(zip_fopen_index(archive_.get(), position, 0));
  if (!file) return statusOf(zip_get_error(archive_.get()));
  return copy(file.get(), stat.size, stream, limits_.writtenBytes);
}

}  // namespace dorvex::unzip
