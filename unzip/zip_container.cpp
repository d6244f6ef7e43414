#include "zip_container.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "io_source.h"

namespace dorvex::unzip {
namespace {

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

// Reads to the end, since libzip compares the checksum only there.
VNContainerStatus copy(zip_file_t* file, MemberOutlet& outlet) {
  std::array<char, kCopySize> block;
  for (;;) {
    const zip_int64_t got = zip_fread(file, block.data(), block.size());
    if (got < 0) return statusOf(zip_file_get_error(file));
    if (got == 0) return outlet.finish();
    const VNContainerStatus status = outlet.take(block.data(), static_cast<std::size_t>(got));
    if (status != VN_CONTAINER_OK) return status;
  }
}

bool hasHarmlessFlags(const ZipEntry& entry) { return (entry.flags & ~kHarmlessFlags) == 0; }

// A member whose bytes lie in the zip as they are.
bool isPlainStored(const ZipEntry& entry) {
  return entry.method == ZIP_CM_STORE && entry.compressedSize == entry.size &&
         hasHarmlessFlags(entry);
}

// Without data it would be an empty member to libzip, whatever its method.
bool isPlainDeflated(const ZipEntry& entry) {
  return entry.method == ZIP_CM_DEFLATE && entry.compressedSize > 0 && hasHarmlessFlags(entry);
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
  char* end = std::ranges::replace_copy(name.substr(0, length), shown, '\0', ' ').out;
  if (isCut) end = std::ranges::copy(kCut, end).out;
  *end = '\0';
  return true;
}

std::uint32_t recordSize(std::uint64_t size) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(size, kLargestSize));
}

bool expandsBeyond(const ZipEntry& entry, std::uint32_t expansion) {
  const std::uint64_t least = entry.size / expansion + (entry.size % expansion != 0 ? 1 : 0);
  return entry.compressedSize < least;
}

}  // namespace

std::unique_ptr<ZipContainer> ZipContainer::open(_VPTPIOobj* io, UnzipLimits* limits) {
  const auto reader = IoReader::over(io);
  if (!reader) return nullptr;
  std::unique_ptr<ZipContainer> container(new ZipContainer(io, ZipLayout(*reader), limits));
  const bool isOpen =
      container->readLayout() && (container->layout_.isPlain() || container->openArchive());
  return isOpen ? std::move(container) : nullptr;
}

ZipContainer::ZipContainer(_VPTPIOobj* io, ZipLayout layout, UnzipLimits* limits)
    : io_(io), layout_(std::move(layout)), limits_(limits != nullptr ? *limits : ownLimits_) {}

bool ZipContainer::readLayout() {
  const ZipLayout::Outcome outcome = layout_.read(limits_.members);
  if (outcome == ZipLayout::Outcome::kTooManyMembers) limits_.passed = UNZIP_LIMIT_MEMBERS;
  return outcome == ZipLayout::Outcome::kRead;
}

bool ZipContainer::openArchive() {
  std::vector<std::uint64_t> flags;
  for (const ZipEntry& entry : layout_.entries()) {
    if ((entry.flags & kUtf8Flag) != 0) flags.push_back(entry.flagsOffset);
  }
  zip_source_t* source = makeIoSource(io_, std::move(flags));
  if (source == nullptr) return false;
  archive_.reset(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (!archive_) zip_source_free(source);
  const bool isSame =
      archive_ && std::cmp_equal(zip_get_num_entries(archive_.get(), 0), layout_.entries().size());
  if (!isSame) archive_.reset();
  return isSame;
}

int ZipContainer::entryCount() const {
  constexpr std::size_t kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(layout_.entries().size(), kMost));
}

bool ZipContainer::has(std::int32_t index) const { return index >= 0 && index < entryCount(); }

VNContainerStatus ZipContainer::entryInfo(std::int32_t index, ContainerEntryInfo& entry) const {
  entry.name[0] = '\0';
  entry.size = 0;
  if (!has(index)) return VN_CONTAINER_INVALID_ARGUMENT;
  return layout_.isPlain() ? plainInfo(index, entry) : infoByLibzip(index, entry);
}

VNContainerStatus ZipContainer::plainInfo(std::int32_t index, ContainerEntryInfo& info) const {
  const ZipEntry& entry = layout_.entries()[static_cast<std::size_t>(index)];
  if (!copyName(layout_.nameOf(entry), info.name)) return VN_CONTAINER_DAMAGED;
  info.size = recordSize(entry.size);
  return VN_CONTAINER_OK;
}

VNContainerStatus ZipContainer::infoByLibzip(std::int32_t index, ContainerEntryInfo& info) const {
  const auto position = static_cast<zip_uint64_t>(index);
  zip_stat_t stat;
  const char* name = zip_get_name(archive_.get(), position, ZIP_FL_ENC_RAW);
  if (name == nullptr || zip_stat_index(archive_.get(), position, 0, &stat) != 0) {
    return statusOf(zip_get_error(archive_.get()));
  }
  if (!copyName(name, info.name)) return VN_CONTAINER_DAMAGED;
  info.size = recordSize(stat.size);
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

// Whether libzip reads of a member what the layout has of it.
VNContainerStatus ZipContainer::compareWithLibzip(std::int32_t index) const {
  const auto position = static_cast<zip_uint64_t>(index);
  zip_stat_t stat;
  if (zip_stat_index(archive_.get(), position, 0, &stat) != 0) {
    return statusOf(zip_get_error(archive_.get()));
  }
  if (stat.encryption_method != ZIP_EM_NONE) return VN_CONTAINER_ENCRYPTED;
  return isTheSame(layout_.entries()[position], stat) ? VN_CONTAINER_OK : VN_CONTAINER_DAMAGED;
}

// data: where they begin.
VNContainerStatus ZipContainer::check(const ZipEntry& entry, std::uint64_t& data) {
  if (entry.overlaps) return VN_CONTAINER_DAMAGED;
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

VNContainerStatus ZipContainer::copyByLibzip(std::int32_t index, MemberOutlet& outlet) {
  errno = 0;
  if (!archive_ && !openArchive()) {
    return errno == ENOMEM ? VN_CONTAINER_OUT_OF_MEMORY : VN_CONTAINER_DAMAGED;
  }
  const File file(zip_fopen_index(archive_.get(), static_cast<zip_uint64_t>(index), 0));
  if (!file) return statusOf(zip_get_error(archive_.get()));
  return copy(file.get(), outlet);
}

// libzip would pass the bytes from one of its layers to the next.
VNContainerStatus ZipContainer::extract(std::int32_t index, _VPTPIOobj* stream) {
  if (!has(index) || stream == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  if (stream->Write == nullptr) return VN_CONTAINER_WRITE_FAILURE;
  VNContainerStatus status = layout_.isPlain() ? VN_CONTAINER_OK : compareWithLibzip(index);
  if (status != VN_CONTAINER_OK) return status;
  const ZipEntry& entry = layout_.entries()[static_cast<std::size_t>(index)];
  std::uint64_t data = 0;
  status = check(entry, data);
  if (status != VN_CONTAINER_OK) return status;
  MemberOutlet outlet(entry, stream, limits_.writtenBytes);
  if (isPlainStored(entry)) return copyStored(layout_.reader(), data, entry, outlet);
  if (isPlainDeflated(entry)) return copyDeflated(layout_.reader(), data, entry, outlet);
  return copyByLibzip(index, outlet);
}

}  // namespace dorvex::unzip
