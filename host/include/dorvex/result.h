// What became of one document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dorvex {

enum class Status {
  kOk,       // the document was read whole
  kPartial,  // texts came out, but some of the document did not
  kFailed,   // nothing came out that counts
};

// Why a document was not read whole.
enum class Failure {
  kNone,
  kNoSuchFile,
  kPermissionDenied,
  kCannotRead,   // any other failure of the operating system
  kNotAPackage,  // neither a zip nor a package directory
  kIwork09,      // a package of the generation before
  kPasswordProtected,
  kDamaged,
  kUnsupportedCompression,  // a zip member that the container module cannot expand
  kNothingRecognised,       // a package in which the reader found nothing it knows
  kOutOfMemory,
  kEndlessRead,  // the reader would have read behind an end for ever
  kTimedOut,
  kLimitPassed,     // a limit other than that of time; Result::limit tells which
  kCrashed,         // the worker process died
  kNotConfined,     // Sandbox::kRequired, and the kernel lacks something
  kModuleMissing,   // the reader module, or the container module, cannot be loaded
  kModuleUnusable,  // the reader module breaks its contract
  kChanged,         // the document was written to while it was read
  kOutOfResources,  // the machine ran out of something: worth another attempt later
  kOther,
};

// The application that wrote a document, as far as its package tells.
enum class Kind { kUnknown, kPages, kKeynote, kNumbers };

// The limit that ended a document.
enum class Limit {
  kNone,
  kWallTime,
  kProcessorTime,
  kMemory,
  kScratch,
  kOutput,
  kMembers,
  kDepth,
  kMemberBytes,
  kTotalBytes,
  kExpansion,
  kInput,
};

// A member stream of the package that did not reach the text, or not whole.
struct SkippedMember {
  std::string name;    // its path in the package; empty when that is not known
  std::string reason;  // a phrase for people

  bool operator==(const SkippedMember&) const = default;
};

struct Result {
  Status status = Status::kOk;
  Failure failure = Failure::kNone;
  Kind kind = Kind::kUnknown;
  // One sentence for people, without the document's name. Empty for ok.
  std::string message;
  // What the module returned last: 0, 2, 4 or 6; nothing when it was not asked
  // or gave no answer.
  std::optional<int> moduleResult;
  // Which of the limits was passed, if one was.
  Limit limit = Limit::kNone;
  int signal = 0;  // that ended the worker process, or 0
  std::vector<SkippedMember> skipped;
  // What the worker's sandbox lacked, a phrase for each, as missingConfinement() gives
  // them; of Landlock only where the document is a package directory. Empty where the
  // sandbox is off, and without workers.
  std::vector<std::string> missingConfinement;
  std::uint64_t tokenBytes = 0;  // length of the token stream, or the rendering, so far
  // Size of the file, or of all files of a package directory; 0 where it cannot
  // be told.
  std::uint64_t inputBytes = 0;

  bool operator==(const Result&) const = default;
};

// The message together with the module's return value, where there is one.
std::string describe(const Result& result);

}  // namespace dorvex
