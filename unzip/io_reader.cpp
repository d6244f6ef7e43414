#include "io_reader.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace dorvex::unzip {
namespace {

bool canReadAndSeek(const _VPTPIOobj* io) {
  return io != nullptr && io->Read != nullptr && io->Seek != nullptr && io->Tell != nullptr;
}

}  // namespace

std::optional<IoReader> IoReader::over(_VPTPIOobj* io) {
  if (!canReadAndSeek(io)) return std::nullopt;
  io->Seek(io, 0, VN_SEEK_END);
  const std::int64_t size = io->Tell(io);
  // libzip would take an empty file for an archive without members.
  if (size <= 0) return std::nullopt;
  return IoReader(io, static_cast<std::uint64_t>(size));
}

// Seek has no result to rely on, so the position is asked for.
bool IoReader::moveTo(std::uint64_t offset) {
  const auto position = static_cast<std::int64_t>(offset);
  io_->Seek(io_, position, VN_SEEK_START);
  return io_->Tell(io_) == position;
}

std::int64_t IoReader::readSome(std::uint64_t offset, void* buffer, std::uint64_t count) {
  if (count > kShort) return readThrough(offset, buffer, count);
  if (offset < aheadOffset_ || offset >= aheadOffset_ + aheadSize_) {
    aheadSize_ = 0;
    const std::int64_t got = readThrough(offset, ahead_.data(), ahead_.size());
    if (got <= 0) return got;
    aheadOffset_ = offset;
    aheadSize_ = static_cast<std::uint64_t>(got);
  }
  const std::uint64_t start = offset - aheadOffset_;
  count = std::min(count, aheadSize_ - start);
  std::memcpy(buffer, ahead_.data() + start, static_cast<std::size_t>(count));
  return static_cast<std::int64_t>(count);
}

// The host may move the object between two calls, so every read seeks first.
std::int64_t IoReader::readThrough(std::uint64_t offset, void* buffer, std::uint64_t count) {
  if (offset >= size_) return 0;
  constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
  const auto wanted = static_cast<std::uint32_t>(std::min({count, size_ - offset, kMost}));
  if (wanted == 0) return 0;
  if (!moveTo(offset)) return -1;
  const int got = io_->Read(io_, buffer, wanted);
  return got < 0 || static_cast<std::uint32_t>(got) > wanted ? -1 : got;
}

bool IoReader::readAll(std::uint64_t offset, void* buffer, std::uint64_t count) {
  auto* bytes = static_cast<unsigned char*>(buffer);
  while (count > 0) {
    const std::int64_t got = readSome(offset, bytes, count);
    if (got <= 0) return false;
    bytes += got;
    offset += static_cast<std::uint64_t>(got);
    count -= static_cast<std::uint64_t>(got);
  }
  return true;
}

}  // namespace dorvex::unzip
