// What a reader must do with a package, host call by host call: the rules of the
// container walk, of package discovery and of the pump written down once more,
// without any of the reader's code. Tests run the reader against it, with and
// without a fault.
#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "support/bare_host.h"
#include "support/package_writer.h"

namespace dorvex::testing {

// The call-th call (from 1) of a slot fails; status is what a container slot gives.
struct Fault {
  Slot slot;
  int call;
  int status = VN_CONTAINER_DAMAGED;
};

// A null slot of the call-th stream (from 1) that the host opens.
struct NullSlot {
  enum Which { kOpen, kSeek, kTell, kClose } which;
  int stream;
};

// What is done to a document.
struct Faults {
  std::optional<Fault> fault = {};
  std::optional<NullSlot> nullSlot = {};
};

// What must come of it.
struct StatedRun {
  int result = 0;                    // of the first call of the pump
  std::vector<std::string> log;      // as the host keeps it
  std::vector<std::string> members;  // the member streams that were read whole, by path
  bool faultHappened = false;        // the document has that many calls
  std::size_t unclosed = 0;          // streams without a Close slot
};

// For a zip that the host gives from memory.
StatedRun statedRunOfZip(const std::string& bytes, const Faults& faults);

// For a package directory, as the system lists it now.
StatedRun statedRunOfDirectory(const std::filesystem::path& root, const Faults& faults);

}  // namespace dorvex::testing
