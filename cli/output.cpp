#include "output.h"

#include <unistd.h>

#include <cerrno>

namespace dorvex::cli {
namespace {

constexpr std::size_t kBufferSize = 65536;

}  // namespace

void Output::write(std::string_view bytes) {
  buffer_ += bytes;
  if (buffer_.size() >= kBufferSize) flush();
}

void Output::flush() {
  std::string_view rest = buffer_;
  while (!rest.empty()) {
    const ssize_t written = ::write(fd_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw OutputError{errno};
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
  buffer_.clear();
}

}  // namespace dorvex::cli
