#include "zip_container.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <new>

#include "io_source.h"

namespace dorvex::unzip {
namespace {

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
VNContainerStatus copy(zip_file_t* file, zip_uint64_t size, _VPTPIOobj* stream) {
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
  }
  return total == size ? VN_CONTAINER_OK : VN_CONTAINER_DAMAGED;
}

}  // namespace

std::unique_ptr<ZipContainer> ZipContainer::open(_VPTPIOobj* io) {
  zip_source_t* source = makeIoSource(io);
  if (source == nullptr) return nullptr;
  Archive archive(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (!archive) {
    zip_source_free(source);
    return nullptr;
  }
  return std::unique_ptr<ZipContainer>(new ZipContainer(std::move(archive)));
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
  const std::size_t length = std::strlen(name);
  if (length >= sizeof(entry.name)) return VN_CONTAINER_DAMAGED;
  std::memcpy(entry.name, name, length + 1);
  entry.size = static_cast<std::uint32_t>(std::min<zip_uint64_t>(stat.size, kLargestSize));
  return VN_CONTAINER_OK;
}

VNContainerStatus ZipContainer::extract(std::int32_t index, _VPTPIOobj* stream) const {
  if (!has(index) || stream == nullptr) return VN_CONTAINER_INVALID_ARGUMENT;
  if (stream->Write == nullptr) return VN_CONTAINER_WRITE_FAILURE;
  const auto position = static_cast<zip_uint64_t>(index);
  zip_stat_t stat;
  if (zip_stat_index(archive_.get(), position, 0, &stat) != 0) {
    return statusOf(zip_get_error(archive_.get()));
  }
  if (stat.encryption_method != ZIP_EM_NONE) return VN_CONTAINER_ENCRYPTED;
  if (stat.size > kLargestSize) return VN_CONTAINER_GENERAL_FAILURE;
  const File file(zip_fopen_index(archive_.get(), position, 0));
  if (!file) return statusOf(zip_get_error(archive_.get()));
  return copy(file.get(), stat.size, stream);
}

}  // namespace dorvex::unzip
