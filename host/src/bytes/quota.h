// What the scratch streams of one document may take together.
#pragma once

#include <cstdint>

#include "dorvex/host.h"

namespace dorvex {

// Counts bytes on their way into scratch streams. It holds whatever container
// module writes them and whatever that module has stated beforehand.
class Quota {
 public:
  // Zero stands for no limit, everywhere.
  Quota(std::uint64_t scratchBytes, const ContainerLimits& containers)
      : scratch_(scratchBytes), member_(containers.memberBytes), total_(containers.totalBytes) {}

  // Counts more bytes for a stream that holds size bytes, or names the limit
  // that they would pass and counts nothing.
  Limit take(std::uint64_t size, std::uint64_t more) {
    if (wouldPass(member_, size, more)) return Limit::kMemberBytes;
    if (wouldPass(total_, written_, more)) return Limit::kTotalBytes;
    if (wouldPass(scratch_, open_, more)) return Limit::kScratch;
    written_ += more;
    open_ += more;
    return Limit::kNone;
  }

  // What a limit allows, in bytes.
  std::uint64_t allowed(Limit limit) const {
    if (limit == Limit::kMemberBytes) return member_;
    return limit == Limit::kTotalBytes ? total_ : scratch_;
  }

  // A stream that holds size bytes is closed.
  void giveBack(std::uint64_t size) { open_ -= size; }

 private:
  static bool wouldPass(std::uint64_t limit, std::uint64_t have, std::uint64_t more) {
    return limit != 0 && (have > limit || more > limit - have);
  }

  std::uint64_t scratch_;
  std::uint64_t member_;
  std::uint64_t total_;
  std::uint64_t written_ = 0;  // into all streams so far
  std::uint64_t open_ = 0;     // in the streams that are open
};

}  // namespace dorvex
