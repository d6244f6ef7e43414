// What the host saw while the reader was at work. The reader itself tells
// nothing but a number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "dorvex/result.h"
#include "looking/document_kind.h"
#include "looking/filed_objects.h"

namespace dorvex {

// A member that the container module would not hand out.
struct RefusedMember {
  std::string name;
  int status = 0;  // a number of the shared error numbering

  bool operator==(const RefusedMember&) const = default;
};

// Something that the operating system would not do.
struct SystemFailure {
  std::string name;  // of the stream
  int error = 0;     // errno

  bool operator==(const SystemFailure&) const = default;
};

// A limit that ended the document.
struct PassedLimit {
  Limit limit = Limit::kNone;
  std::uint64_t allowed = 0;  // in the limit's own unit
  std::string name;           // of the member; empty for the document itself

  bool operator==(const PassedLimit&) const = default;
};

struct Observations {
  KindEvidence kind;
  std::vector<SkippedMember> unsound;        // streams that the reader drops or cuts
  FiledObjects filed;                        // of the streams that it takes
  std::optional<RefusedMember> refused;      // the last member refused
  std::optional<std::string> notAContainer;  // what the container module would not open
  // What the refusal cost: how many other streams there are, and that one of them is
  // not sound either is among the unsound. Nothing where nobody looked.
  std::optional<std::size_t> soundBesides;
  std::optional<SystemFailure> listFailure;  // a folder of a package directory
  std::optional<SystemFailure> openFailure;
  std::optional<SystemFailure> readFailure;
  std::optional<SystemFailure> scratchFailure;
  std::optional<std::string> endlessRead;  // the stream read behind its end for ever
  bool outOfMemory = false;                // an allocation failed that the reader cannot report
  std::optional<PassedLimit> limitPassed;
  // A module that LoadDll could not load, or the one that the container module needs for
  // this zip, and why.
  std::optional<std::string> missingModule;
};

}  // namespace dorvex
