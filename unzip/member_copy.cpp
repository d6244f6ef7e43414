#include "member_copy.h"

#include <zlib.h>

#include <algorithm>
#include <array>

namespace dorvex::unzip {
namespace {

// What a host's slot throws counts as a read that fails, as it does below libzip.
bool readBlock(IoReader& reader, std::uint64_t offset, void* block, std::uint64_t count) {
  try {
    return reader.readAll(offset, block, count);
  } catch (...) {
    return false;
  }
}

// A stream of zlib's, for data without a header of its own.
class Inflater {
 public:
  Inflater() : isReady_(inflateInit2(&stream, -MAX_WBITS) == Z_OK) {}
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  ~Inflater() {
    if (isReady_) inflateEnd(&stream);
  }

  bool isReady() const { return isReady_; }

  z_stream stream{};

 private:
  bool isReady_;
};

VNContainerStatus statusOf(int zlibResult) {
  return zlibResult == Z_MEM_ERROR ? VN_CONTAINER_OUT_OF_MEMORY : VN_CONTAINER_DAMAGED;
}

}  // namespace

VNContainerStatus MemberOutlet::take(const char* bytes, std::size_t count) {
  if (count > entry_.size - total_) return VN_CONTAINER_DAMAGED;
  total_ += count;
  crc_ = static_cast<std::uint32_t>(
      crc32_z(crc_, reinterpret_cast<const Bytef*>(bytes), static_cast<z_size_t>(count)));
  if (!writeAll(bytes, count)) return VN_CONTAINER_WRITE_FAILURE;
  written_ += count;
  return VN_CONTAINER_OK;
}

VNContainerStatus MemberOutlet::finish() const {
  return total_ == entry_.size && crc_ == entry_.crc ? VN_CONTAINER_OK : VN_CONTAINER_DAMAGED;
}

bool MemberOutlet::writeAll(const char* bytes, std::size_t count) {
  while (count > 0) {
    const int taken = stream_->Write(stream_, bytes, static_cast<std::uint32_t>(count));
    if (taken <= 0 || static_cast<std::size_t>(taken) > count) return false;
    bytes += taken;
    count -= static_cast<std::size_t>(taken);
  }
  return true;
}

VNContainerStatus copyStored(IoReader& reader, std::uint64_t data, const ZipEntry& entry,
                             MemberOutlet& outlet) {
  std::array<char, kCopySize> block;
  for (std::uint64_t left = entry.size; left > 0;) {
    const std::uint64_t count = std::min<std::uint64_t>(left, block.size());
    if (!readBlock(reader, data, block.data(), count)) return VN_CONTAINER_DAMAGED;
    const VNContainerStatus status = outlet.take(block.data(), count);
    if (status != VN_CONTAINER_OK) return status;
    data += count;
    left -= count;
  }
  return outlet.finish();
}

// To the end of the deflated data, also once the stated size has come: there may be more.
// Data that lack nothing but the mark of their end are whole, to libzip as well.
VNContainerStatus copyDeflated(IoReader& reader, std::uint64_t data, const ZipEntry& entry,
                               MemberOutlet& outlet) {
  Inflater inflater;
  if (!inflater.isReady()) return VN_CONTAINER_OUT_OF_MEMORY;
  std::array<Bytef, kCopySize> taken;
  std::array<Bytef, kCopySize> given;
  z_stream& stream = inflater.stream;
  for (std::uint64_t left = entry.compressedSize;;) {
    if (stream.avail_in == 0 && left > 0) {
      const std::uint64_t count = std::min<std::uint64_t>(left, taken.size());
      if (!readBlock(reader, data, taken.data(), count)) return VN_CONTAINER_DAMAGED;
      stream.next_in = taken.data();
      stream.avail_in = static_cast<uInt>(count);
      data += count;
      left -= count;
    }
    stream.next_out = given.data();
    stream.avail_out = static_cast<uInt>(given.size());
    const int result = inflate(&stream, Z_NO_FLUSH);
    if (result == Z_BUF_ERROR) return outlet.finish();
    if (result != Z_OK && result != Z_STREAM_END) return statusOf(result);
    const std::size_t count = given.size() - stream.avail_out;
    const auto* bytes = reinterpret_cast<const char*>(given.data());
    const VNContainerStatus status = outlet.take(bytes, count);
    if (status != VN_CONTAINER_OK) return status;
    if (result == Z_STREAM_END) return outlet.finish();
  }
}

}  // namespace dorvex::unzip
