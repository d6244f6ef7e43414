// The smallest host that can drive a reader: nothing but the slots that readers
// use, over memory. It records what is called, hands out dirty memory, and fails
// on request at any call of any slot.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "Readers/hostapi/host_records.h"

namespace dorvex::testing {

class BareHost;

// An I/O object over memory. All its slots are set; tests may null any of them.
struct Stream : _VPTPIOobj {
  BareHost* host = nullptr;
  std::string name;  // as the log has it
  std::string path;  // what pathName points at
  std::string contents;
  std::size_t position = 0;
  std::uint32_t maxRead = UINT32_MAX;  // reads come no longer than this
  // Takes the place of Read; may throw anything.
  std::function<int(Stream& stream, void* buffer, std::uint32_t count)> onRead = {};
};

// What Read does by default.
int readFromMemory(Stream& stream, void* buffer, std::uint32_t count);

// What a host throws out of Read that knows the end to have been reported.
struct EndOfDocument {};

// Ends the document at the second read behind the end of a stream.
int readToTheEndOnce(Stream& stream, void* buffer, std::uint32_t count);

// The slots whose calls are counted and can be made to fail.
enum class Slot {
  kAlloc,
  kLoadDll,
  kGetDllSymbol,
  kOpenFile,
  kOpen,
  kOpenContainer,
  kGetEntryInfo,
  kExtractEntry,
  kCount
};

class BareHost {
 public:
  BareHost();
  BareHost(const BareHost&) = delete;
  BareHost& operator=(const BareHost&) = delete;
  ~BareHost();

  tag_TPVAPIServices* services() { return &services_; }
  int lastError() const { return services_.lastError; }

  // A document over memory, without a path unless one is given. Lives as long as
  // the host, which logs it as "document".
  Stream& addDocument(std::string contents, std::optional<std::string> path = {});

  // A document of which only the path matters: a member of a directory package.
  Stream& addDirectoryDocument(const std::string& memberPath) {
    return addDocument("", memberPath);
  }

  // Makes the call-th call (from 1) of a slot fail. status is what a container
  // slot then returns; the other slots return 0 or null.
  void failAt(Slot slot, int call, int status = VN_CONTAINER_DAMAGED);
  int calls(Slot slot) const { return counts_[static_cast<std::size_t>(slot)]; }

  // Called on each object that OpenFile gives, before the reader gets it.
  std::function<void(Stream& stream)> onOpenFile = {};

  // Takes the place of the emulated container's answers.
  std::optional<int> entryCount = {};
  std::map<int, std::uint32_t> statedSizes = {};  // by index

  // Loads a container module by dlopen instead of emulating it.
  void useContainerModule(const std::string& path) { containerModulePath_ = path; }

  // What was called, in order: "LoadDll unzip.so", "GetDllSymbol ...", "FreeDll",
  // "OpenFile scratch", "OpenFile <path>", "Open <name>", "Close <name>",
  // "OpenContainer", "GetEntryInfo 0", "ExtractEntry 0", "CloseContainer".
  const std::vector<std::string>& log() const { return log_; }
  int logged(const std::string& entry) const;
  // Adds an entry of the test's own.
  void note(std::string entry) { record(std::move(entry)); }

  // Blocks of the allocator that have not come back, and objects of OpenFile
  // that have not been closed.
  std::size_t liveBlocks() const { return blocks_.size(); }
  std::size_t openStreams() const { return streams_.size(); }
  // Disposes of streams that had no Close slot.
  void forgetStreams() { streams_.clear(); }
  // Modules and containers that are held.
  int loadedModules() const { return loadedModules_; }
  int openContainers() const { return openContainers_; }
  // Frees of what this host never gave, or gave and took back.
  int badFrees() const { return badFrees_; }

 private:
  struct Services : tag_TPVAPIServices {
    BareHost* host = nullptr;
  };
  struct EmulatedContainer;
  struct Slots;  // the functions behind the records' slots
  friend struct Slots;

  bool failsNow(Slot slot, int* status = nullptr);
  void record(std::string entry) { log_.push_back(std::move(entry)); }

  Services services_{};
  std::array<int, static_cast<std::size_t>(Slot::kCount)> counts_{};
  std::map<std::pair<Slot, int>, int> failures_;  // status by slot and call
  std::vector<std::string> log_;
  std::unordered_set<void*> blocks_;
  std::vector<std::unique_ptr<Stream>> documents_;
  std::vector<std::unique_ptr<Stream>> streams_;
  std::optional<std::string> containerModulePath_;
  int loadedModules_ = 0;
  int openContainers_ = 0;
  int badFrees_ = 0;
};

}  // namespace dorvex::testing
