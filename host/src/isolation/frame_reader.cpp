#include "isolation/frame_reader.h"

#include <sys/socket.h>

#include <cerrno>

namespace dorvex {

// kFrame stands for bytes that are full.
FrameReader::Outcome FrameReader::fill(std::span<unsigned char> bytes) {
  while (filled_ < bytes.size()) {
    const auto rest = bytes.subspan(filled_);
    const ssize_t got = ::recv(channel_, rest.data(), rest.size(), MSG_DONTWAIT);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return Outcome::kMore;
    if (got <= 0) return Outcome::kEnded;
    filled_ += static_cast<std::size_t>(got);
  }
  filled_ = 0;
  return Outcome::kFrame;
}

FrameReader::Outcome FrameReader::read() {
  if (whole_) header_.reset();
  whole_ = false;
  if (!header_) {
    const Outcome outcome = fill(headerBytes_);
    if (outcome != Outcome::kFrame) return outcome;
    header_ = decodeHeader(headerBytes_, largestTokens_);
    if (!header_) return Outcome::kNonsense;
    if (payload_.size() < header_->length) payload_.resize(header_->length);
  }
  const Outcome outcome = fill({payload_.data(), header_->length});
  whole_ = outcome == Outcome::kFrame;
  return outcome;
}

}  // namespace dorvex
