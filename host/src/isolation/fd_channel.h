// Messages between processes of the host: bytes, and file descriptors with them.
#pragma once

#include <span>
#include <utility>

#include "bytes/unique_fd.h"

namespace dorvex {

// Two ends of a stream socket, closed on exec. Empty descriptors, and errno, on
// failure.
std::pair<UniqueFd, UniqueFd> makeChannel();

// Writes all of it; false, and errno, when the other end is gone or the write
// fails. Never raises SIGPIPE.
bool sendBytes(int channel, std::span<const unsigned char> bytes);

// One byte, with a copy of the descriptor fd unless that is negative.
bool sendByte(int channel, unsigned char byte, int fd = -1);

struct ReceivedByte {
  unsigned char byte = 0;
  UniqueFd fd;        // closed on exec; empty when none came
  bool ended = true;  // no byte: the other end is gone, or reading failed
};

// Waits for what sendByte sent.
ReceivedByte receiveByte(int channel);

// Fills bytes; false at the end of the channel and on failure.
bool receiveBytes(int channel, std::span<unsigned char> bytes);

}  // namespace dorvex
