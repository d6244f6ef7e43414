#include "libzip_archive.h"

#include <zip.h>

#include <array>
#include <utility>

#include "Tools/vnexport.h"
#include "io_source.h"
#include "libzip_module.h"

namespace dorvex::unzip {
namespace {

struct CloseFile {
  void operator()(zip_file_t* file) const { zip_fclose(file); }
};
using File = std::unique_ptr<zip_file_t, CloseFile>;

struct Discard {
  void operator()(zip_t* archive) const { zip_discard(archive); }
};
using Archive = std::unique_ptr<zip_t, Discard>;

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
VNContainerStatus copyFile(zip_file_t* file, MemberOutlet& outlet) {
  std::array<char, kCopySize> block;
  for (;;) {
    const zip_int64_t got = zip_fread(file, block.data(), block.size());
    if (got < 0) return statusOf(zip_file_get_error(file));
    if (got == 0) return outlet.finish();
    const VNContainerStatus status = outlet.take(block.data(), static_cast<std::size_t>(got));
    if (status != VN_CONTAINER_OK) return status;
  }
}

// Two readings of one zip that differ make neither trustworthy.
bool isTheSame(const ZipEntry& entry, const zip_stat_t& stat) {
  return stat.size == entry.size && stat.comp_size == entry.compressedSize &&
         stat.crc == entry.crc && stat.comp_method == entry.method;
}

class OpenArchive final : public LibzipArchive {
 public:
  explicit OpenArchive(Archive archive) : archive_(std::move(archive)) {}

  std::uint64_t memberCount() const override {
    return static_cast<std::uint64_t>(zip_get_num_entries(archive_.get(), 0));
  }

  VNContainerStatus describe(std::uint64_t index, std::string_view& name,
                             std::uint64_t& size) const override {
    zip_stat_t stat;
    const char* raw = zip_get_name(archive_.get(), index, ZIP_FL_ENC_RAW);
    if (raw == nullptr || zip_stat_index(archive_.get(), index, 0, &stat) != 0) return lastStatus();
    name = raw;
    size = stat.size;
    return VN_CONTAINER_OK;
  }

  VNContainerStatus compare(std::uint64_t index, const ZipEntry& entry) const override {
    zip_stat_t stat;
    if (zip_stat_index(archive_.get(), index, 0, &stat) != 0) return lastStatus();
    if (stat.encryption_method != ZIP_EM_NONE) return VN_CONTAINER_ENCRYPTED;
    return isTheSame(entry, stat) ? VN_CONTAINER_OK : VN_CONTAINER_DAMAGED;
  }

  VNContainerStatus copy(std::uint64_t index, MemberOutlet& outlet) const override {
    const File file(zip_fopen_index(archive_.get(), index, 0));
    return file ? copyFile(file.get(), outlet) : lastStatus();
  }

 private:
  VNContainerStatus lastStatus() const { return statusOf(zip_get_error(archive_.get())); }

  Archive archive_;
};

}  // namespace
}  // namespace dorvex::unzip

extern "C" VN_API dorvex::unzip::LibzipArchive* unzipOpenByLibzip(
    _VPTPIOobj* io, std::vector<std::uint64_t>* flags) {
  using namespace dorvex::unzip;
  zip_source_t* source = makeIoSource(io, std::move(*flags));
  if (source == nullptr) return nullptr;
  Archive archive(zip_open_from_source(source, ZIP_RDONLY, nullptr));
  if (archive) return new OpenArchive(std::move(archive));
  zip_source_free(source);
  return nullptr;
}
