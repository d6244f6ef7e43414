#include "zip_container.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

namespace dorvex::unzip {
namespace {

constexpr std::uint64_t kLargestSize = std::numeric_limits<std::uint32_t>::max();

bool hasHarmlessFlags(const ZipEntry& entry) { return (entry.flags & ~kHarmlessFlags) == 0; }

// A member whose bytes lie in the zip as they are.
bool isPlainStored(const ZipEntry& entry) {
  return entry.method == kStored && entry.compressedSize == entry.size && hasHarmlessFlags(entry);
}

// Without data it would be an empty member to libzip, whatever its method.
bool isPlainDeflated(const ZipEntry& entry) {
  return entry.method == kDeflated && entry.compressedSize > 0 && hasHarmlessFlags(entry);
}

bool isPlainMember(const ZipEntry& entry) { return isPlainStored(entry) || isPlainDeflated(entry); }

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
  const bool isOpen = container->readLayout() && container->hasWhatItNeeds() &&
                      (container->layout_.isPlain() || container->openArchive());
  return isOpen ? std::move(container) : nullptr;
}

ZipContainer::ZipContainer(_VPTPIOobj* io, ZipLayout layout, UnzipLimits* limits)
    : io_(io), layout_(std::move(layout)), limits_(limits != nullptr ? *limits : ownLimits_) {}

bool ZipContainer::readLayout() {
  const ZipLayout::Outcome outcome = layout_.read(limits_.members);
  if (outcome == ZipLayout::Outcome::kTooManyMembers) limits_.passed = UNZIP_LIMIT_MEMBERS;
  return outcome == ZipLayout::Outcome::kRead;
}

// Asked before anything is read of the zip, so that whoever has to read it elsewhere
// begins there anew.
bool ZipContainer::hasWhatItNeeds() {
  const bool needsLibzip =
      !layout_.isPlain() || !std::ranges::all_of(layout_.entries(), isPlainMember);
  if (!needsLibzip || loadLibzip()) return true;
  limits_.passed = UNZIP_LIBZIP_MISSING;
  return false;
}

bool ZipContainer::openArchive() {
  std::vector<std::uint64_t> flags;
  for (const ZipEntry& entry : layout_.entries()) {
    if ((entry.flags & kUtf8Flag) != 0) flags.push_back(entry.flagsOffset);
  }
  archive_ = openByLibzip(io_, std::move(flags));
  const bool isSame = archive_ && archive_->memberCount() == layout_.entries().size();
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
  std::string_view name;
  std::uint64_t size = 0;
  const auto status = archive_->describe(static_cast<std::uint64_t>(index), name, size);
  if (status != VN_CONTAINER_OK) return status;
  if (!copyName(name, info.name)) return VN_CONTAINER_DAMAGED;
  info.size = recordSize(size);
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
  return archive_->copy(static_cast<std::uint64_t>(index), outlet);
}

// libzip would pass the bytes from one of its layers to the next.
VNContainerStatus ZipContainer::extract(std::int32_t index, _VPTPIOobj* stream) {
  if (!has(index) || stream == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  if (stream->Write == nullptr) return VN_CONTAINER_WRITE_FAILURE;
  const auto position = static_cast<std::size_t>(index);
  const ZipEntry& entry = layout_.entries()[position];
  VNContainerStatus status =
      layout_.isPlain() ? VN_CONTAINER_OK : archive_->compare(position, entry);
  if (status != VN_CONTAINER_OK) return status;
  std::uint64_t data = 0;
  status = check(entry, data);
  if (status != VN_CONTAINER_OK) return status;
  MemberOutlet outlet(entry, stream, limits_.writtenBytes);
  if (isPlainStored(entry)) return copyStored(layout_.reader(), data, entry, outlet);
  if (isPlainDeflated(entry)) return copyDeflated(layout_.reader(), data, entry, outlet);
  return copyByLibzip(index, outlet);
}

}  // namespace dorvex::unzip
