// What a child process sends to its parent through a pipe.
//
// A frame is a type byte, the length of its payload in four bytes of the
// machine's order, and the payload. Token frames come first, one for each
// buffer; a result frame ends the conversation. The parent believes no length.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "dorvex/result.h"

namespace dorvex {

enum class FrameType : std::uint8_t { kTokens = 'T', kResult = 'R', kOutOfMemory = 'M' };

struct FrameHeader {
  FrameType type;
  std::uint32_t length;  // bytes of payload
};
constexpr std::size_t kFrameHeaderSize = 5;
constexpr std::uint32_t kLargestResultFrame = 16 * 1024 * 1024;

std::array<unsigned char, kFrameHeaderSize> encodeHeader(FrameHeader header);
// Nothing for a type that is unknown or a length that its type never has.
std::optional<FrameHeader> decodeHeader(std::span<const unsigned char> bytes,
                                        std::size_t largestTokens);

// A result as a payload of at most kLargestResultFrame bytes; what is too much
// of the list of skipped members is left out.
std::vector<unsigned char> encodeResult(const Result& result);
// Nothing for anything but the whole of what encodeResult gives.
std::optional<Result> decodeResult(std::span<const unsigned char> payload);

// Writes all of it; false when the other end is gone or the write fails.
bool sendFrame(int pipe, FrameType type, std::span<const unsigned char> payload);

}  // namespace dorvex
