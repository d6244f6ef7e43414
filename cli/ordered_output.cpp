#include "ordered_output.h"

#include <iostream>
#include <utility>

namespace dorvex::cli {

// The part has its place from here on, so that ending it needs no memory.
void OrderedOutput::begin(std::uint64_t number) {
  std::unique_lock lock(mutex_);
  turned_.wait(lock, [&] { return broken_ || number <= turn_ + bounds_.parts; });
  waiting_.try_emplace(number);
}

template <typename Bytes>
void OrderedOutput::add(std::uint64_t number, Bytes bytes) {
  const std::uint64_t size = bytes.size();
  std::unique_lock lock(mutex_);
  turned_.wait(lock, [&] {
    return broken_ || number == turn_ || (held_ <= bounds_.bytes && size <= bounds_.bytes - held_);
  });
  if (broken_) return;
  if (number == turn_) {
    output_.write(bytes);
  } else {
    waiting_[number].bytes.append(std::move(bytes));
    held_ += size;
  }
}

void OrderedOutput::write(std::uint64_t number, std::string_view bytes) {
  during([&] { add(number, bytes); });
}

void OrderedOutput::write(std::uint64_t number, Blocks bytes) {
  try {
    add(number, std::move(bytes));
  } catch (const OutputError&) {
    giveUp();
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
  during([&] { endLocked(number, errorLine); });
}

void OrderedOutput::endLocked(std::uint64_t number, std::string_view errorLine) {
  const std::lock_guard lock(mutex_);
  Part& ended = waiting_[number];
  ended.errorLine = errorLine;
  ended.ended = true;
  while (!waiting_.empty() && waiting_.begin()->first == turn_) {
    Part& part = waiting_.begin()->second;
    held_ -= part.bytes.size();
    if (!part.ended) {
      // It is under way, and goes out directly from here on.
      output_.write(part.bytes);
      part.bytes = {};
      break;
    }
    put(part);
    waiting_.erase(waiting_.begin());
    ++turn_;
  }
  turned_.notify_all();
}

void OrderedOutput::giveUp() {
  const std::lock_guard lock(mutex_);
  broken_ = true;
  turned_.notify_all();
}

}  // namespace dorvex::cli
