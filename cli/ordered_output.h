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
// part whose turn it is goes out as it is written, the others wait in memory, up
// to a limit: whoever would pass it waits for its turn.
class OrderedOutput {
 public:
  struct Bounds {
    // Parts that may be begun ahead of the one whose turn it is. More have to wait,
    // so that one slow document does not pile the others up.
    std::uint64_t parts;
    std::uint64_t bytes = std::uint64_t{64} << 20;  // of all that wait together
  };
  OrderedOutput(Output& output, Bounds bounds) : output_(output), bounds_(bounds) {}

  // Waits until the part may be begun.
  void begin(std::uint64_t number);
  // Adds bytes to a part. Throws OutputError.
  void write(std::uint64_t number, std::string_view bytes);
  // The same for bytes in blocks: all of them are added, or, where an exception
  // leaves that is no OutputError, none.
  void write(std::uint64_t number, Blocks bytes);
  // Ends a part, with a line for standard error unless it is empty. Throws
  // OutputError, and nothing else for a part that was begun and has no such line.
  void end(std::uint64_t number, std::string_view errorLine = {});
  // Does the work on a part. Where that throws, nobody waits any more for the turn of
  // another, which will not come.
  template <typename Work>
  void during(Work work) {
    try {
      work();
    } catch (...) {
      giveUp();
      throw;
    }
  }
  // Nothing comes out any more once this has returned; for the end of the
  // process.
  void seal() { mutex_.lock(); }

 private:
  struct Part {
    Blocks bytes;
    std::string errorLine;
    bool ended = false;
  };
  template <typename Bytes>
  void add(std::uint64_t number, Bytes bytes);
  void endLocked(std::uint64_t number, std::string_view errorLine);
  void put(const Part& part);
  void giveUp();

  Output& output_;
  const Bounds bounds_;
  std::mutex mutex_;
  std::condition_variable turned_;
  std::uint64_t turn_ = 0;
  std::map<std::uint64_t, Part> waiting_;
  std::uint64_t held_ = 0;  // bytes in waiting_
  bool broken_ = false;     // nothing comes out any more: whoever waits for a turn need not
};

}  // namespace dorvex::cli
