#include "line_reader.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace dorvex::cli {

std::optional<std::string> LineReader::next() {
  auto end = buffer_.find(end_, start_);
  while (end == std::string::npos) {
    const std::size_t searched = buffer_.size() - start_;
    if (!fill()) break;
    end = buffer_.find(end_, searched);
  }
  ended_ = end != std::string::npos;
  if (!ended_ && start_ == buffer_.size()) return std::nullopt;
  std::string line = buffer_.substr(start_, end - start_);
  start_ = ended_ ? end + 1 : buffer_.size();
  return line;
}

// Puts more behind what is left, which then stands at the beginning. False at the
// end.
bool LineReader::fill() {
  std::array<char, 65536> block;
  ssize_t got = 0;
  do {
    got = ::read(fd_, block.data(), block.size());
  } while (got < 0 && errno == EINTR);
  if (got < 0) throw std::system_error(errno, std::generic_category());
  buffer_.erase(0, start_);
  start_ = 0;
  buffer_.append(block.data(), static_cast<std::size_t>(got));
  return got > 0;
}

}  // namespace dorvex::cli
