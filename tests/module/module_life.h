// Lives of the reader module, from load to unload, in a process that does
// nothing else.
#pragma once

#include <dlfcn.h>
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <string>

#include "module/reader_module.h"
#include "support/package_writer.h"
#include "support/reader_session.h"
#include "support/token_decoder.h"

namespace dorvex::testing {

inline bool isMapped(const std::string& path) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.ends_with(path)) return true;
  }
  return false;
}

// The module from one dlopen to its dlclose.
class ModuleLife {
 public:
  ModuleLife() : handle_(dlopen(ReaderModule::path(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) return;
    find<GetReaderInterfaceFunction>("dorvexGetReaderInterface")(&reader_);
    started_ = find<DllInitFunction>("vnDllInit")();
  }
  ModuleLife(const ModuleLife&) = delete;
  ModuleLife& operator=(const ModuleLife&) = delete;
  // Unloading runs the terminator, which shuts down once more.
  ~ModuleLife() {
    if (handle_ == nullptr) return;
    find<DllShutdownFunction>("vnDllShutdown")();
    dlclose(handle_);
  }

  bool started() const { return started_ && isMapped(ReaderModule::path()); }

  // Reads a document of two objects, one of which the reader has to print.
  bool read() const {
    BareHost host;
    const std::string bytes =
        zip({{"Index/Document.iwa", iwa({storage(1, {"alive"}), storage(2, {"a text: "})})}});
    const Pumped pumped = pump(reader_, host, &host.addDocument(bytes), 4096);
    return pumped.result() == 0 && textsOf(pumped.stream())[0] == "alive";
  }

 private:
  template <typename Function>
  Function find(const char* name) const {
    return reinterpret_cast<Function>(dlsym(handle_, name));
  }

  void* handle_;
  ReaderInterface reader_{};
  bool started_ = false;
};

// Loads, reads so many documents, shuts down and unloads. True if all went well
// and the mapping is gone.
inline bool liveAndRead(int documents) {
  {
    const ModuleLife life;
    if (!life.started()) return false;
    for (int i = 0; i < documents; ++i) {
      if (!life.read()) return false;
    }
  }
  return !isMapped(ReaderModule::path());
}

// What a process has taken.
struct Memory {
  std::size_t allocated;  // bytes of blocks that are in use
  std::size_t resident;   // bytes

  static Memory now() {
    std::ifstream file("/proc/self/statm");
    std::size_t pages = 0;
    file >> pages >> pages;
    return {mallinfo2().uordblks, pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))};
  }
};

// Lives one after the other, in this process, with a check behind each. Returns
// when every one went well and took no more memory than the documents of a life
// leave allocated by rule; else says what is wrong and ends the process.
inline void liveFlat(int rounds, const std::function<bool()>& check) {
  const auto fail = [](const char* what, int round) {
    std::fprintf(stderr, "%s in round %d\n", what, round);
    std::_Exit(1);
  };
  const auto growthOver = [&](int count, int documents) {
    const Memory before = Memory::now();
    for (int round = 0; round < count; ++round) {
      if (!liveAndRead(documents)) fail("a life went wrong", round);
      if (!check()) fail("the process went wrong", round);
    }
    const Memory after = Memory::now();
    return Memory{after.allocated - before.allocated,
                  after.resident - std::min(before.resident, after.resident)};
  };
  // The allocator keeps blocks for reuse and counts some of them as in use: over few
  // lives that outweighs what a document keeps.
  const int sample = std::max(rounds / 4, 1);
  growthOver(20, 2);  // what is made once per process is made now
  const std::size_t keptOfTwo = growthOver(sample, 2).allocated;
  const std::size_t keptOfOne = growthOver(sample, 1).allocated;
  const std::size_t keptOfADocument =
      (keptOfTwo - std::min(keptOfOne, keptOfTwo)) / static_cast<std::size_t>(sample);
  const std::size_t keptOfNone = growthOver(sample, 0).allocated;
  const Memory growth = growthOver(rounds, 1);
  std::fprintf(stderr,
               "%d rounds: %zu bytes allocated, %zu resident; a document keeps %zu, %d rounds "
               "without one %zu\n",
               rounds, growth.allocated, growth.resident, keptOfADocument, sample, keptOfNone);
#ifndef __SANITIZE_ADDRESS__  // which counts for itself
  constexpr std::size_t kSlack = 4096;
  constexpr std::size_t kRounding = 16;  // of the blocks that a document keeps
  constexpr std::size_t kResidentSlack = std::size_t{1} << 20;
  const std::size_t kept = static_cast<std::size_t>(rounds) * (keptOfADocument + kRounding);
  if (keptOfNone > kSlack) fail("memory is kept without a document", sample);
  if (growth.allocated > kept + kSlack) fail("more memory is kept than a document keeps", rounds);
  if (growth.resident > 2 * kept + kResidentSlack) fail("the process grows", rounds);
#endif
}

// How many lives a test takes: DORVEX_RELOAD_ROUNDS, or as many as are promised.
inline int reloadRounds() {
  const char* value = std::getenv("DORVEX_RELOAD_ROUNDS");
#ifdef __SANITIZE_ADDRESS__  // where loading takes many times as long
  constexpr int kUsual = 100;
#else
  constexpr int kUsual = 1000;
#endif
  return value != nullptr ? std::atoi(value) : kUsual;
}

}  // namespace dorvex::testing
