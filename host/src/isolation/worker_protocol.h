// What a worker and the process that it works for send each other.
//
// The worker sends frames: a type byte, the length of its payload in four bytes
// of the machine's order, and the payload. It takes a document and says so,
// sends token frames, one for each buffer, or frames of what it renders, and a result
// frame, and takes another or leaves. The receiver believes no length. Before anything
// else of a document it says what it lacks of the sandbox, a frame for each phrase, and may
// say that it cannot read the document, for want of libzip.
//
// The worker is sent single bytes, with a file descriptor each: an order for each
// document, and answers to what it asks for.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "dorvex/result.h"

namespace dorvex {

enum class FrameType : std::uint8_t {
  kTaken = 'D',  // what befalls the worker from here on is the document's doing
  kTokens = 'T',
  kOutput = 'O',  // the three pieces of a rendering
  kFileName = 'N',
  kFileBytes = 'B',
  kResult = 'R',
  kOutOfMemory = 'M',   // in place of a result; the worker leaves
  kNeedScratch = 'S',   // a scratch file is wanted, and the answer waited for
  kNeedLibzip = 'Z',    // in place of a result: only a worker that has libzip can read it
  kLessConfined = 'L',  // a phrase: what it lacks of the sandbox
};

// Comes with the document.
enum class Order : std::uint8_t {
  kReadFile = 'F',
  kReadDirectory = 'D',  // a package directory
};

// To kNeedScratch.
enum class ScratchAnswer : std::uint8_t {
  kFile = 'S',  // comes with an empty file
  kNone = 'N',  // there is none to be had
};

struct FrameHeader {
  FrameType type;
  std::uint32_t length;  // bytes of payload
};
constexpr std::size_t kFrameHeaderSize = 5;
constexpr std::uint32_t kLongestPhraseFrame = 256;
constexpr std::uint32_t kLargestPieceFrame = 64 * 1024;
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

// Sends all of it; false when the other end is gone or sending fails.
bool sendFrame(int channel, FrameType type, std::span<const unsigned char> payload);

}  // namespace dorvex
