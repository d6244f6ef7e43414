// Puts frames together from what a worker sends.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "isolation/worker_protocol.h"

namespace dorvex {

// Never waits: what has come of a frame is kept until the rest comes.
class FrameReader {
 public:
  // channel stays the caller's. largestTokens: of the payload of a token frame.
  FrameReader(int channel, std::size_t largestTokens)
      : channel_(channel), largestTokens_(largestTokens) {}

  enum class Outcome {
    kFrame,     // a whole frame is there
    kMore,      // the channel has no more for now
    kEnded,     // the other end is gone
    kNonsense,  // what came is no frame
  };
  // Takes what the channel has, up to the end of a frame.
  Outcome read();

  // Of the frame that is there, until the next read.
  FrameType type() const { return header_->type; }
  std::span<const unsigned char> payload() const {
    return std::span(payload_).first(header_->length);
  }

 private:
  Outcome fill(std::span<unsigned char> bytes);

  int channel_;
  std::size_t largestTokens_;
  std::array<unsigned char, kFrameHeaderSize> headerBytes_{};
  std::optional<FrameHeader> header_;
  std::vector<unsigned char> payload_;
  std::size_t filled_ = 0;  // of the header or, once that is known, of the payload
  bool whole_ = false;
};

}  // namespace dorvex
