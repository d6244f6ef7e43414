// The lines of a descriptor, whatever they hold.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace dorvex::cli {

class LineReader {
 public:
  // Reads from where the descriptor stands, which stays the caller's. end: what
  // stands behind each line.
  LineReader(int fd, char end) : fd_(fd), end_(end) {}

  // The next line as it arrives, without its end; nothing at the end of all.
  // Throws std::system_error.
  std::optional<std::string> next();

  // Whether the line that was given last had its end.
  bool ended() const { return ended_; }

 private:
  bool fill();

  const int fd_;
  const char end_;
  std::string buffer_;
  std::size_t start_ = 0;  // of what has not been given yet
  bool ended_ = true;
};

}  // namespace dorvex::cli
