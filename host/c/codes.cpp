#include "codes.h"

#include <array>
#include <cstddef>

#include "dorvex/dorvex.h"

namespace dorvex::c {
namespace {

// By their numbers in the C interface.
constexpr std::array kFailureNames = {
    "none",
    "no-such-file",
    "permission-denied",
    "cannot-read",
    "not-a-package",
    "iwork09",
    "password-protected",
    "damaged",
    "unsupported-compression",
    "nothing-recognised",
    "out-of-memory",
    "endless-read",
    "timed-out",
    "limit-passed",
    "crashed",
    "not-confined",
    "module-missing",
    "module-unusable",
    "other",
    "changed",
    "out-of-resources",
};

// By their numbers in the C interface.
constexpr std::array kLimitNames = {
    "none",    "wall-time", "processor-time", "memory",      "scratch",   "output",
    "members", "depth",     "member-bytes",   "total-bytes", "expansion", "input",
};

template <typename Names>
const char* nameAt(const Names& names, std::int32_t number, std::int32_t otherwise) {
  const bool known = number >= 0 && static_cast<std::size_t>(number) < names.size();
  return names[static_cast<std::size_t>(known ? number : otherwise)];
}

}  // namespace

// Without a default, so that an enumerator without a number does not compile.

std::int32_t codeOf(Status status) {
  switch (status) {
    case Status::kOk:
      return DORVEX_STATUS_OK;
    case Status::kPartial:
      return DORVEX_STATUS_PARTIAL;
    case Status::kFailed:
      return DORVEX_STATUS_FAILED;
  }
  return DORVEX_STATUS_FAILED;
}

std::int32_t codeOf(Failure failure) {
  switch (failure) {
    case Failure::kNone:
      return DORVEX_FAILURE_NONE;
    case Failure::kNoSuchFile:
      return DORVEX_FAILURE_NO_SUCH_FILE;
    case Failure::kPermissionDenied:
      return DORVEX_FAILURE_PERMISSION_DENIED;
    case Failure::kCannotRead:
      return DORVEX_FAILURE_CANNOT_READ;
    case Failure::kNotAPackage:
      return DORVEX_FAILURE_NOT_A_PACKAGE;
    case Failure::kIwork09:
      return DORVEX_FAILURE_IWORK09;
    case Failure::kPasswordProtected:
      return DORVEX_FAILURE_PASSWORD_PROTECTED;
    case Failure::kDamaged:
      return DORVEX_FAILURE_DAMAGED;
    case Failure::kUnsupportedCompression:
      return DORVEX_FAILURE_UNSUPPORTED_COMPRESSION;
    case Failure::kNothingRecognised:
      return DORVEX_FAILURE_NOTHING_RECOGNISED;
    case Failure::kOutOfMemory:
      return DORVEX_FAILURE_OUT_OF_MEMORY;
    case Failure::kEndlessRead:
      return DORVEX_FAILURE_ENDLESS_READ;
    case Failure::kTimedOut:
      return DORVEX_FAILURE_TIMED_OUT;
    case Failure::kLimitPassed:
      return DORVEX_FAILURE_LIMIT_PASSED;
    case Failure::kCrashed:
      return DORVEX_FAILURE_CRASHED;
    case Failure::kModuleMissing:
      return DORVEX_FAILURE_MODULE_MISSING;
    case Failure::kModuleUnusable:
      return DORVEX_FAILURE_MODULE_UNUSABLE;
    case Failure::kNotConfined:
      return DORVEX_FAILURE_NOT_CONFINED;
    case Failure::kChanged:
      return DORVEX_FAILURE_CHANGED;
    case Failure::kOutOfResources:
      return DORVEX_FAILURE_OUT_OF_RESOURCES;
    case Failure::kOther:
      return DORVEX_FAILURE_OTHER;
  }
  return DORVEX_FAILURE_OTHER;
}

std::int32_t codeOf(Kind kind) {
  switch (kind) {
    case Kind::kUnknown:
      return DORVEX_KIND_UNKNOWN;
    case Kind::kPages:
      return DORVEX_KIND_PAGES;
    case Kind::kKeynote:
      return DORVEX_KIND_KEYNOTE;
    case Kind::kNumbers:
      return DORVEX_KIND_NUMBERS;
  }
  return DORVEX_KIND_UNKNOWN;
}

std::int32_t codeOf(Limit limit) {
  switch (limit) {
    case Limit::kNone:
      return DORVEX_LIMIT_NONE;
    case Limit::kWallTime:
      return DORVEX_LIMIT_WALL_TIME;
    case Limit::kProcessorTime:
      return DORVEX_LIMIT_PROCESSOR_TIME;
    case Limit::kMemory:
      return DORVEX_LIMIT_MEMORY;
    case Limit::kScratch:
      return DORVEX_LIMIT_SCRATCH;
    case Limit::kOutput:
      return DORVEX_LIMIT_OUTPUT;
    case Limit::kMembers:
      return DORVEX_LIMIT_MEMBERS;
    case Limit::kDepth:
      return DORVEX_LIMIT_DEPTH;
    case Limit::kMemberBytes:
      return DORVEX_LIMIT_MEMBER_BYTES;
    case Limit::kTotalBytes:
      return DORVEX_LIMIT_TOTAL_BYTES;
    case Limit::kExpansion:
      return DORVEX_LIMIT_EXPANSION;
    case Limit::kInput:
      return DORVEX_LIMIT_INPUT;
  }
  return DORVEX_LIMIT_NONE;
}

bool isolationOf(std::uint32_t number, Isolation& isolation) {
  isolation = number == DORVEX_ISOLATION_IN_PROCESS ? Isolation::kInProcess : Isolation::kWorkers;
  return number <= DORVEX_ISOLATION_IN_PROCESS;
}

bool sandboxOf(std::uint32_t number, Sandbox& sandbox) {
  constexpr std::array kSandboxes = {Sandbox::kOff, Sandbox::kWherePossible, Sandbox::kRequired};
  if (number >= kSandboxes.size()) return false;
  sandbox = kSandboxes[number];
  return true;
}

}  // namespace dorvex::c

const char* dorvex_failure_name(int32_t failure) {
  return dorvex::c::nameAt(dorvex::c::kFailureNames, failure, DORVEX_FAILURE_OTHER);
}

const char* dorvex_limit_name(int32_t limit) {
  return dorvex::c::nameAt(dorvex::c::kLimitNames, limit, DORVEX_LIMIT_NONE);
}
