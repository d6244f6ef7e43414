// Bytes that grow without being moved.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace dorvex::cli {

class Blocks {
 public:
  // Room for what is to come is taken block by block: what is there stays where it is,
  // so that large output is in memory once.
  void append(std::string_view bytes);
  // Takes the blocks of another over. Nothing changes where there is no memory for it.
  void append(Blocks&& other);

  std::uint64_t size() const { return size_; }
  const std::vector<std::string>& parts() const { return parts_; }
  // All of it in one piece.
  std::string joined() const;

 private:
  std::vector<std::string> parts_;
  std::uint64_t size_ = 0;
};

}  // namespace dorvex::cli
