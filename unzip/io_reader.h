// Reads at any position of a host's I/O object.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "Readers/hostapi/host_records.h"

namespace dorvex::unzip {

// Works through Read, Seek and Tell of an open object, which stays the caller's
// and does not change. The headers of a zip lie close together and are read in
// small pieces: a short read takes what lies behind it along.
class IoReader {
 public:
  // Nothing when io is null, lacks one of the slots, or is empty.
  static std::optional<IoReader> over(_VPTPIOobj* io);

  // Bytes of the object when it was handed over; above 0.
  std::uint64_t size() const { return size_; }

  // Reads up to count bytes at offset: the number read, which may be short of
  // the end; 0 at or behind the end; -1 when the object does not seek or read
  // as it should.
  std::int64_t readSome(std::uint64_t offset, void* buffer, std::uint64_t count);

  // Reads exactly count bytes, or returns false.
  bool readAll(std::uint64_t offset, void* buffer, std::uint64_t count);

 private:
  IoReader(_VPTPIOobj* io, std::uint64_t size) : io_(io), size_(size) {}
  bool moveTo(std::uint64_t offset);
  std::int64_t readThrough(std::uint64_t offset, void* buffer, std::uint64_t count);

  static constexpr std::size_t kShort = 1024;
  static constexpr std::size_t kAhead = 4096;

  _VPTPIOobj* io_;
  std::uint64_t size_;
  std::array<unsigned char, kAhead> ahead_{};  // the aheadSize_ bytes at aheadOffset_
  std::uint64_t aheadOffset_ = 0;
  std::uint64_t aheadSize_ = 0;
};

}  // namespace dorvex::unzip
