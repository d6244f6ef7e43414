// Waiting out what the machine is short of.
#pragma once

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace dorvex {

// Whether errno's value stands for something that others may give back:
// descriptors, processes, memory.
constexpr bool isShortage(int error) {
  return error == EMFILE || error == ENFILE || error == EAGAIN || error == ENOMEM;
}

// Calls until the result is true, or false for another reason than a shortage, or
// for patience's whole time. Gives the last result, and its errno.
template <typename Call>
auto patiently(Call call, std::chrono::milliseconds patience = std::chrono::seconds(10)) {
  using namespace std::chrono_literals;
  const auto end = std::chrono::steady_clock::now() + patience;
  for (auto pause = 10ms;; pause = std::min(2 * pause, 250ms)) {
    auto result = call();
    if (result || !isShortage(errno) || std::chrono::steady_clock::now() > end) return result;
    std::this_thread::sleep_for(pause);
  }
}

}  // namespace dorvex
