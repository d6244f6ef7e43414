#include "diagnosis.h"

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
    {VN_CONTAINER_OUT_OF_MEMORY, Failure::out_of_memory, "does not fit into memory"},
    {VN_CONTAINER_WRITE_FAILURE, Failure::cannot_read, "cannot be written to scratch space"},
    {VN_CONTAINER_DAMAGED, Failure::damaged, "is damaged"},
    {VN_CONTAINER_ENCRYPTED, Failure::password_protected, "is encrypted"},
    {VN_CONTAINER_COMPRESSION_NOT_SUPPORTED, Failure::unsupported_compression,
     "has a compression that is not supported"},
};

struct ErrnoFailure {
  int error;
  Failure failure;
};

constexpr ErrnoFailure kErrnoFailures[] = {
    {ENOENT, Failure::no_such_file},      {ENOTDIR, Failure::no_such_file},
    {EACCES, Failure::permission_denied}, {EPERM, Failure::permission_denied},
    {ENOMEM, Failure::out_of_memory},
};

Failure failure_of(int error) {
  for (const ErrnoFailure& row : kErrnoFailures) {
    if (row.error == error) return row.failure;
  }
  return Failure::cannot_read;
}

// A member that is gone is no sign that the document is.
Failure member_failure_of(int error) {
  const Failure failure = failure_of(error);
  return failure == Failure::no_such_file ? Failure::cannot_read : failure;
}

Cause system_cause(const char* what, const SystemFailure& seen) {
  const std::string name = seen.name.empty() ? "" : " " + seen.name;
  return {member_failure_of(seen.error), what + name + ": " + std::strerror(seen.error)};
}

Cause refusal_cause(const RefusedMember& refused) {
  for (const RefusalText& row : kRefusals) {
    if (row.status == refused.status) {
      return {row.failure, "the zip member " + refused.name + " " + row.text};
    }
  }
  return {Failure::other, "the zip member " + refused.name + " cannot be extracted (status " +
                              std::to_string(refused.status) + ")"};
}

Cause unsound_cause(const std::vector<SkippedMember>& unsound) {
  const SkippedMember& first = unsound.front();
  const std::string name = first.name.empty() ? "a member without a name" : first.name;
  const std::string more =
      unsound.size() == 1 ? "" : " (" + std::to_string(unsound.size()) + " members in all)";
  return {Failure::damaged, "damaged member " + name + ": " + first.reason + more};
}

Cause no_container_cause(const std::string& name, const PackageLook& look) {
  if (!name.empty())
    return {Failure::damaged, "damaged package: " + name + " is not a readable zip"};
  if (look.empty) return {Failure::not_a_package, "not a package at all: the file is empty"};
  if (look.begins_like_a_zip) {
    return {Failure::damaged, "damaged zip: its list of members cannot be read"};
  }
  if (look.begins_like_a_chunk) {
    return {Failure::not_a_package,
            "not a package at all, maybe one stream of a package directory: give the directory"};
  }
  return {Failure::not_a_package, "not a package at all: neither a zip nor a package directory"};
}

std::optional<Cause> trouble_of_the_system(const Observations& seen) {
  if (seen.missing_module) {
    return Cause{Failure::module_unusable,
                 "the container module cannot be loaded: " + *seen.missing_module};
  }
  if (seen.scratch_failure)
    return system_cause("cannot write scratch space for", *seen.scratch_failure);
  if (seen.read_failure) return system_cause("cannot read", *seen.read_failure);
  if (seen.open_failure) return system_cause("cannot open", *seen.open_failure);
  return std::nullopt;
}

std::optional<Cause> trouble_of_the_package(const Observations& seen, const PackageLook& look) {
  if (look.password_protected) {
    return Cause{Failure::password_protected,
                 "password-protected: remove the password in the application that wrote it"};
  }
  if (look.iwork09) {
    return Cause{Failure::iwork09,
                 "an iWork '09 package: save it again with a later version of the application"};
  }
  if (seen.refused) return refusal_cause(*seen.refused);
  if (seen.not_a_container) return no_container_cause(*seen.not_a_container, look);
  if (seen.endless_read) {
    const std::string name = seen.endless_read->empty() ? "a member" : *seen.endless_read;
    return Cause{Failure::endless_read,
                 "stopped: reading " + name + " would never end" +
                     (seen.unsound.empty() ? "" : ", " + seen.unsound.back().reason)};
  }
  if (!seen.unsound.empty()) return unsound_cause(seen.unsound);
  return std::nullopt;
}

// Nothing was seen to go wrong, so the number is all there is.
Cause trouble_by_number(int module_result, const PackageLook& look) {
  if (module_result == 2) return {Failure::out_of_memory, "memory is out"};
  if (module_result != 4) return {Failure::other, "the reader gave up"};
  if (look.has_streams) return {Failure::nothing_recognised, "nothing recognised in the package"};
  if (look.directory) {
    return {Failure::not_a_package, "not a package at all: a directory without Index or Index.zip"};
  }
  return {Failure::nothing_recognised, "nothing recognised: a zip, but without iWork streams"};
}

bool saw_nothing_wrong(const Observations& seen) {
  return seen.unsound.empty() && !seen.refused && !seen.not_a_container && !seen.open_failure &&
         !seen.read_failure && !seen.scratch_failure && !seen.endless_read && !seen.missing_module;
}

Cause cause_of(int module_result, const Observations& seen, const PackageLook& look) {
  if (auto cause = trouble_of_the_system(seen)) return *cause;
  if (auto cause = trouble_of_the_package(seen, look)) return *cause;
  return trouble_by_number(module_result, look);
}

}  // namespace

std::string describe(const Result& result) {
  if (!result.module_result) return result.message;
  return result.message + " (the module returned " + std::to_string(*result.module_result) + ")";
}

Result system_failure(int error) {
  Result result;
  result.status = Status::failed;
  result.failure = failure_of(error);
  result.message = std::strerror(error);
  return result;
}

Result diagnose(int module_result, const Observations& seen,
                const std::function<PackageLook()>& look) {
  Result result;
  result.module_result = module_result;
  result.skipped = seen.unsound;
  if (module_result == 0 && saw_nothing_wrong(seen)) return result;
  Cause cause = cause_of(module_result, seen, look());
  result.failure = cause.failure;
  if (module_result == 0) {
    result.status = Status::partial;
    result.message = "partial text: " + cause.message;
  } else {
    result.status = Status::failed;
    result.message = std::move(cause.message);
  }
  return result;
}

}  // namespace dorvex
