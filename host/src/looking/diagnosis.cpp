#include "looking/diagnosis.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "Readers/hostapi/container_status.h"

namespace dorvex {
namespace {

struct Cause {
  Failure failure;
  std::string message;
};

struct RefusalText {
  int status;
  Failure failure;
  const char* text;
};

constexpr RefusalText kRefusals[] = {
    {VN_CONTAINER_OUT_OF_MEMORY, Failure::kOutOfMemory, "does not fit into memory"},
    {VN_CONTAINER_WRITE_FAILURE, Failure::kCannotRead, "cannot be written to scratch space"},
    {VN_CONTAINER_DAMAGED, Failure::kDamaged, "is damaged"},
    {VN_CONTAINER_ENCRYPTED, Failure::kPasswordProtected, "is encrypted"},
    {VN_CONTAINER_COMPRESSION_NOT_SUPPORTED, Failure::kUnsupportedCompression,
     "has a compression that is not supported"},
};

Failure failureOfRefusal(int status) {
  for (const RefusalText& row : kRefusals) {
    if (row.status == status) return row.failure;
  }
  return Failure::kOther;
}

struct ErrnoFailure {
  int error;
  Failure failure;
};

constexpr ErrnoFailure kErrnoFailures[] = {
    {ENOENT, Failure::kNoSuchFile},       {ENOTDIR, Failure::kNoSuchFile},
    {EACCES, Failure::kPermissionDenied}, {EPERM, Failure::kPermissionDenied},
    {ENOMEM, Failure::kOutOfMemory},      {EMFILE, Failure::kOutOfResources},
    {ENFILE, Failure::kOutOfResources},   {EAGAIN, Failure::kOutOfResources},
    {ENOSPC, Failure::kOutOfResources},   {EDQUOT, Failure::kOutOfResources},
};

Failure failureOf(int error) {
  for (const ErrnoFailure& row : kErrnoFailures) {
    if (row.error == error) return row.failure;
  }
  return Failure::kCannotRead;
}

// A member that is gone is no sign that the document is.
Failure memberFailureOf(int error) {
  const Failure failure = failureOf(error);
  return failure == Failure::kNoSuchFile ? Failure::kCannotRead : failure;
}

Cause systemCause(const char* what, const SystemFailure& seen) {
  const std::string name = seen.name.empty() ? "" : " " + seen.name;
  return {memberFailureOf(seen.error), what + name + ": " + std::strerror(seen.error)};
}

// What the reader would have read besides a refused member.
std::string othersText(const Observations& seen) {
  if (!seen.soundBesides) return "";
  const std::size_t others = *seen.soundBesides + seen.unsound.size();
  if (others == 0) return "";
  if (seen.unsound.empty()) {
    return others == 1 ? "; the other stream is sound"
                       : "; the other " + std::to_string(others) + " streams are sound";
  }
  return "; of the other streams " + std::to_string(*seen.soundBesides) + " are sound and " +
         std::to_string(seen.unsound.size()) + " not";
}

Cause refusalCause(const Observations& seen) {
  const RefusedMember& refused = *seen.refused;
  const Failure failure = failureOfRefusal(refused.status);
  return {failure,
          "the zip member " + refused.name + " " + refusalText(refused.status) + othersText(seen)};
}

std::string memberOrDocument(const std::string& name) {
  return name.empty() ? "the zip" : "the zip member " + name;
}

std::string limitText(const PassedLimit& passed) {
  const std::string name = memberOrDocument(passed.name);
  const std::string allowed = std::to_string(passed.allowed);
  switch (passed.limit) {
    case Limit::kMembers:
      return name + " has more than " + allowed + " members";
    case Limit::kDepth:
      return name + " lies in more than " + allowed + " containers";
    case Limit::kMemberBytes:
      return name + " expands to more than " + allowed + " bytes";
    case Limit::kTotalBytes:
      return "with " + name + " the members expand to more than " + allowed + " bytes";
    case Limit::kExpansion:
      return name + " expands beyond " + allowed + " to 1";
    case Limit::kScratch:
      return "with " + name + " more than " + allowed + " bytes of scratch space are in use";
    default:
      return name + " passes a limit";  // the others are not the reader's to pass
  }
}

Cause unsoundCause(const std::vector<SkippedMember>& unsound) {
  const SkippedMember& first = unsound.front();
  const std::string name = first.name.empty() ? "a member without a name" : first.name;
  const std::string more =
      unsound.size() == 1 ? "" : " (" + std::to_string(unsound.size()) + " members in all)";
  return {Failure::kDamaged, "damaged member " + name + ": " + first.reason + more};
}

Cause noContainerCause(const std::string& name, const PackageLook& look) {
  if (!name.empty())
    return {Failure::kDamaged, "damaged package: " + name + " is not a readable zip"};
  if (look.empty) return {Failure::kNotAPackage, "not a package at all: the file is empty"};
  if (look.beginsLikeAZip) {
    return {Failure::kDamaged, "damaged zip: its list of members cannot be read"};
  }
  if (look.beginsLikeAChunk) {
    return {Failure::kNotAPackage,
            "not a package at all, maybe one stream of a package directory: give the directory"};
  }
  return {Failure::kNotAPackage, "not a package at all: neither a zip nor a package directory"};
}

std::optional<Cause> troubleOfTheSystem(const Observations& seen) {
  if (seen.missingModule) {
    return Cause{Failure::kModuleMissing,
                 "the container module cannot be loaded: " + *seen.missingModule};
  }
  if (seen.outOfMemory) return Cause{Failure::kOutOfMemory, "memory is out"};
  if (seen.scratchFailure)
    return systemCause("cannot write scratch space for", *seen.scratchFailure);
  if (seen.readFailure) return systemCause("cannot read", *seen.readFailure);
  if (seen.listFailure) return systemCause("cannot list", *seen.listFailure);
  if (seen.openFailure) return systemCause("cannot open", *seen.openFailure);
  return std::nullopt;
}

std::optional<Cause> troubleOfThePackage(const Observations& seen, const PackageLook& look) {
  if (look.passwordProtected) {
    return Cause{Failure::kPasswordProtected,
                 "password-protected: remove the password in the application that wrote it"};
  }
  if (look.iwork09) {
    return Cause{Failure::kIwork09,
                 "an iWork '09 package: save it again with a later version of the application"};
  }
  if (seen.refused) return refusalCause(seen);
  if (seen.notAContainer) return noContainerCause(*seen.notAContainer, look);
  if (seen.endlessRead) {
    const std::string name = seen.endlessRead->empty() ? "a member" : *seen.endlessRead;
    return Cause{Failure::kEndlessRead,
                 "stopped: reading " + name + " would never end" +
                     (seen.unsound.empty() ? "" : ", " + seen.unsound.back().reason)};
  }
  if (!seen.unsound.empty()) return unsoundCause(seen.unsound);
  return std::nullopt;
}

// Nothing was seen to go wrong, so the number is all there is.
Cause troubleByNumber(int moduleResult, const PackageLook& look) {
  if (moduleResult == 2) return {Failure::kOutOfMemory, "memory is out"};
  if (moduleResult != 4) return {Failure::kOther, "the reader gave up"};
  if (look.hasStreams) return {Failure::kNothingRecognised, "nothing recognised in the package"};
  if (look.directory) {
    return {Failure::kNotAPackage, "not a package at all: a directory without Index or Index.zip"};
  }
  return {Failure::kNothingRecognised, "nothing recognised: a zip, but without iWork streams"};
}

bool sawNothingWrong(const Observations& seen) {
  return seen.unsound.empty() && !seen.refused && !seen.notAContainer && !seen.openFailure &&
         !seen.readFailure && !seen.scratchFailure && !seen.endlessRead && !seen.limitPassed &&
         !seen.missingModule && !seen.listFailure && !seen.outOfMemory;
}

Cause causeOf(int moduleResult, const Observations& seen, const PackageLook& look) {
  if (auto cause = troubleOfTheSystem(seen)) return *cause;
  if (auto cause = troubleOfThePackage(seen, look)) return *cause;
  return troubleByNumber(moduleResult, look);
}

}  // namespace

std::string refusalText(int status) {
  for (const RefusalText& row : kRefusals) {
    if (row.status == status) return row.text;
  }
  return "cannot be extracted (status " + std::to_string(status) + ")";
}

std::string describe(const Result& result) {
  if (!result.moduleResult) return result.message;
  return result.message + " (the module returned " + std::to_string(*result.moduleResult) + ")";
}

Result failedResult(Failure failure, std::string message, Limit limit) {
  Result result;
  result.status = Status::kFailed;
  result.failure = failure;
  result.message = std::move(message);
  result.limit = limit;
  return result;
}

// Memory is the machine's here: no limit of a document counts before it is read.
Result systemFailure(int error) {
  return failedResult(error == ENOMEM ? Failure::kOutOfResources : failureOf(error),
                      std::strerror(error));
}

Result diagnose(int moduleResult, const Observations& seen,
                const std::function<PackageLook()>& look) {
  Result result;
  result.moduleResult = moduleResult;
  if (seen.refused)
    result.skipped.push_back({seen.refused->name, refusalText(seen.refused->status)});
  result.skipped.insert(result.skipped.end(), seen.unsound.begin(), seen.unsound.end());
  if (moduleResult == 0 && sawNothingWrong(seen)) return result;
  if (seen.limitPassed) result.limit = seen.limitPassed->limit;
  Cause cause = seen.limitPassed
                    ? Cause{Failure::kLimitPassed, "stopped: " + limitText(*seen.limitPassed)}
                    : causeOf(moduleResult, seen, look());
  result.failure = cause.failure;
  if (moduleResult == 0) {
    result.status = Status::kPartial;
    result.message = "partial text: " + cause.message;
  } else {
    result.status = Status::kFailed;
    result.message = std::move(cause.message);
  }
  return result;
}

}  // namespace dorvex
