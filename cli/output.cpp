#include "output.h"

#include <sys/uio.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <utility>

namespace dorvex::cli {
namespace {

constexpr std::size_t kBufferSize = 65536;

// A confined process may write, and may not write in several pieces.
ssize_t writeSome(int fd, std::span<const iovec> bytes) {
  return bytes.size() == 1 ? ::write(fd, bytes.front().iov_base, bytes.front().iov_len)
                           : ::writev(fd, bytes.data(), static_cast<int>(bytes.size()));
}

}  // namespace

Output::Output(int fd) : fd_(fd) { buffer_.reserve(kBufferSize); }

void Output::write(std::string_view bytes) {
  if (bytes.size() > kBufferSize - buffer_.size()) flush();
  if (bytes.size() > kBufferSize) {
    iovec all{const_cast<char*>(bytes.data()), bytes.size()};
    writeThrough({&all, 1});
  } else {
    buffer_ += bytes;
  }
}

void Output::write(const Blocks& bytes) {
  if (bytes.size() <= kBufferSize) {
    for (const std::string& part : bytes.parts()) write(part);
    return;
  }
  flush();
  std::array<iovec, IOV_MAX> vectors;
  std::size_t count = 0;
  for (const std::string& part : bytes.parts()) {
    vectors.at(count++) = {const_cast<char*>(part.data()), part.size()};
    if (count == vectors.size()) writeThrough({vectors.data(), std::exchange(count, 0)});
  }
  writeThrough({vectors.data(), count});
}

void Output::flush() {
  iovec all{buffer_.data(), buffer_.size()};
  writeThrough({&all, 1});
  buffer_.clear();
}

void Output::writeThrough(std::span<iovec> rest) {
  for (;;) {
    while (!rest.empty() && rest.front().iov_len == 0) rest = rest.subspan(1);
    if (rest.empty()) return;
    const ssize_t count = writeSome(fd_, rest);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw OutputError{errno};
    auto written = static_cast<std::size_t>(count);
    for (iovec& vector : rest) {
      const std::size_t ofThis = std::min(written, vector.iov_len);
      vector.iov_base = static_cast<char*>(vector.iov_base) + ofThis;
      vector.iov_len -= ofThis;
      written -= ofThis;
      if (written == 0) break;
    }
  }
}

}  // namespace dorvex::cli
