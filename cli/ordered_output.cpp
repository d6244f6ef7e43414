#include "ordered_output.h"

#include <iostream>

namespace dorvex::cli {

void OrderedOutput::begin(std::uint64_t number) {
  std::unique_lock lock(mutex_);
  turned_.wait(lock, [&] { return broken_ || number <= turn_ + window_; });
}

void OrderedOutput::write(std::uint64_t number, std::string_view bytes) {
  const std::lock_guard lock(mutex_);
  if (number != turn_) {
    waiting_[number].bytes += bytes;
    return;
  }
  try {
    output_.write(bytes);
  } catch (const OutputError&) {
    broken_ = true;
    turned_.notify_all();
    throw;
  }
}

// The output is flushed first, so that the two appear in their order.
void OrderedOutput::put(const Part& part) {
  output_.write(part.bytes);
  output_.flush();
  if (!part.errorLine.empty()) std::cerr << part.errorLine << std::endl;
}

void OrderedOutput::end(std::uint64_t number, std::string_view errorLine) {
  const std::lock_guard lock(mutex_);
  Part& ended = waiting_[number];
  ended.errorLine = errorLine;
  ended.ended = true;
  try {
    while (!waiting_.empty() && waiting_.begin()->first == turn_) {
      Part& part = waiting_.begin()->second;
      if (!part.ended) {
        // It is under way, and goes out directly from here on.
        output_.write(part.bytes);
        part.bytes.clear();
        break;
      }
      put(part);
      waiting_.erase(waiting_.begin());
      ++turn_;
    }
  } catch (const OutputError&) {
    broken_ = true;
    turned_.notify_all();
    throw;
  }
  turned_.notify_all();
}

}  // namespace dorvex::cli
