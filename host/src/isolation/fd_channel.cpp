#include "isolation/fd_channel.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace dorvex {
namespace {

// A message of one byte, which stays the caller's, with room for the control
// message that carries one descriptor.
struct OneByteMessage {
  explicit OneByteMessage(unsigned char& byte) : data{&byte, 1} {
    header.msg_iov = &data;
    header.msg_iovlen = 1;
    header.msg_control = control.data();
    header.msg_controllen = control.size();
  }
  OneByteMessage(const OneByteMessage&) = delete;
  OneByteMessage& operator=(const OneByteMessage&) = delete;

  iovec data;
  msghdr header{};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
};

template <typename Call>
ssize_t retried(Call call) {
  ssize_t done = 0;
  do done = call();
  while (done < 0 && errno == EINTR);
  return done;
}

}  // namespace

std::pair<UniqueFd, UniqueFd> makeChannel() {
  std::array<int, 2> ends{-1, -1};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return {};
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

bool sendBytes(int channel, std::span<const unsigned char> bytes) {
  while (!bytes.empty()) {
    const ssize_t sent =
        retried([&] { return ::send(channel, bytes.data(), bytes.size(), MSG_NOSIGNAL); });
    if (sent < 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(sent));
  }
  return true;
}

bool sendByte(int channel, unsigned char byte, int fd) {
  if (fd < 0) return sendBytes(channel, {&byte, 1});
  OneByteMessage carrier(byte);
  msghdr& message = carrier.header;
  cmsghdr* header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof fd);
  std::memcpy(CMSG_DATA(header), &fd, sizeof fd);
  return retried([&] { return ::sendmsg(channel, &message, MSG_NOSIGNAL); }) == 1;
}

ReceivedByte receiveByte(int channel) {
  ReceivedByte received;
  OneByteMessage carrier(received.byte);
  msghdr& message = carrier.header;
  received.ended = retried([&] { return ::recvmsg(channel, &message, MSG_CMSG_CLOEXEC); }) != 1;
  const cmsghdr* header = received.ended ? nullptr : CMSG_FIRSTHDR(&message);
  if (header != nullptr && header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_RIGHTS) {
    int fd = -1;
    std::memcpy(&fd, CMSG_DATA(header), sizeof fd);
    received.fd = UniqueFd(fd);
  }
  return received;
}

bool receiveBytes(int channel, std::span<unsigned char> bytes) {
  while (!bytes.empty()) {
    const ssize_t got = retried([&] { return ::recv(channel, bytes.data(), bytes.size(), 0); });
    if (got <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

}  // namespace dorvex
