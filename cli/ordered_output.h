// Output of work that is done side by side and shown in order.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "output.h"

namespace dorvex::cli {

// Parts come out one after the other by their numbers, from 0 without a gap. The
// part whose turn it is goes out as it is written, the others wait in memory.
class OrderedOutput {
 public:
  // window: parts that may be begun ahead of the one whose turn it is. More have
  // to wait, so that one slow document does not pile the others up.
  OrderedOutput(Output& output, std::uint64_t window) : output_(output), window_(window) {}

  // Waits until the part may be begun.
  void begin(std::uint64_t number);
  // Adds bytes to a part. Throws OutputError.
  void write(std::uint64_t number, std::string_view bytes);
  // Ends a part, with a line for standard error unless it is empty. Throws
  // OutputError.
  void end(std::uint64_t number, std::string_view errorLine = {});
  // Nothing comes out any more once this has returned; for the end of the
  // process.
  void seal() { mutex_.lock(); }

 private:
  struct Part {
    std::string bytes;
    std::string errorLine;
    bool ended = false;
  };
  void put(const Part& part);

  Output& output_;
  const std::uint64_t window_;
  std::mutex mutex_;
  std::condition_variable turned_;
  std::uint64_t turn_ = 0;
  std::map<std::uint64_t, Part> waiting_;
  bool broken_ = false;  // output failed: whoever waits for a turn need not
};

}  // namespace dorvex::cli
