// A host for the reader as it is linked into a fuzz target. It serves everything
// from memory, with reads of any length, and ends what the reader would never
// end: by rule that is the host's part, and not a fault of the reader.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/host_records.h"
#include "fuzz_input.h"

namespace dorvex::fuzz {

// Leaves a slot where the reader would go on for ever, or take more than a host
// gives. Not a std::exception: for one of those the reader drops a member only.
struct EndedByHost {};

class FuzzHost {
 public:
  enum class Reading {
    kAnywhere,  // reads of members end anywhere
    kInStep,    // reads of members end as the replacement host ends them
  };

  explicit FuzzHost(ReadLengths readLengths, Reading reading = Reading::kAnywhere);
  FuzzHost(const FuzzHost&) = delete;
  FuzzHost& operator=(const FuzzHost&) = delete;
  ~FuzzHost();

  tag_TPVAPIServices* services() { return &services_; }

  // The document, which lives as long as the host.
  _VPTPIOobj* addDocument(std::string contents, std::optional<std::string> path = {});

  // The paths that were to be opened, in order.
  const std::vector<std::string>& openedPaths() const { return openedPaths_; }

  // Whether an EndedByHost has left a slot.
  bool hasEndedTheDocument() const { return hasEnded_; }

  // Breaks a promise unless the reader closed every stream and container and
  // gave back every module.
  void requireAllClosed() const;
  // Breaks a promise if the reader freed what it did not have.
  void requireSoundFrees() const { require(soundFrees_, "the reader frees what it was given"); }

 private:
  struct Services : tag_TPVAPIServices {
    FuzzHost* host = nullptr;
  };
  struct Stream;
  struct Container;
  struct Slots;
  friend struct Slots;

  [[noreturn]] void endDocument();

  Services services_{};
  ReadLengths readLengths_;
  Reading reading_;
  ContainerReaderInterface module_{};
  std::vector<std::unique_ptr<Stream>> documents_;
  std::vector<std::unique_ptr<Stream>> streams_;
  std::unordered_set<void*> blocks_;
  std::vector<std::string> openedPaths_;
  std::size_t scratchBytes_ = 0;
  int loadedModules_ = 0;
  int openContainers_ = 0;
  bool soundFrees_ = true;
  bool hasEnded_ = false;
};

}  // namespace dorvex::fuzz
