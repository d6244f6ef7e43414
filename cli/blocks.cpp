#include "blocks.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

namespace dorvex::cli {
namespace {

// A block grows up to this, and is left as it is from then on.
constexpr std::size_t kBlockSize = 65536;

}  // namespace

void Blocks::append(std::string_view bytes) {
  while (!bytes.empty()) {
    if (parts_.empty() || parts_.back().size() >= kBlockSize) parts_.emplace_back();
    std::string& last = parts_.back();
    const std::string_view fitting = bytes.substr(0, kBlockSize - last.size());
    last += fitting;
    size_ += fitting.size();
    bytes.remove_prefix(fitting.size());
  }
}

void Blocks::append(Blocks&& other) {
  parts_.reserve(parts_.size() + other.parts_.size());
  std::move(other.parts_.begin(), other.parts_.end(), std::back_inserter(parts_));
  size_ += std::exchange(other.size_, 0);
  other.parts_.clear();
}

std::string Blocks::joined() const {
  std::string all;
  all.reserve(size_);
  for (const std::string& part : parts_) all += part;
  return all;
}

}  // namespace dorvex::cli
