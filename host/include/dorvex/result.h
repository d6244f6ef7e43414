// What became of one document.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dorvex {

enum class Status {
  ok,       // the document was read whole
  partial,  // texts came out, but some of the document did not
  failed,   // nothing came out that counts
};

// Why a document was not read whole.
enum class Failure {
  none,
  no_such_file,
  permission_denied,
  cannot_read,    // any other failure of the operating system
  not_a_package,  // neither a zip nor a package directory
  iwork09,        // a package of the generation before
  password_protected,
  damaged,
  unsupported_compression,  // a zip member that the container module cannot expand
  nothing_recognised,       // a package in which the reader found nothing it knows
  out_of_memory,
  endless_read,  // the reader would have read behind an end for ever
  timed_out,
  crashed,          // the child process died
  module_unusable,  // the reader module cannot be loaded or breaks its contract
  other,
};

// A member stream of the package that did not reach the text, or not whole.
struct SkippedMember {
  std::string name;    // its path in the package; empty when that is not known
  std::string reason;  // a phrase for people

  bool operator==(const SkippedMember&) const = default;
};

struct Result {
  Status status = Status::ok;
  Failure failure = Failure::none;
  // One sentence for people, without the document's name. Empty for ok.
  std::string message;
  // What the module returned last: 0, 2, 4 or 6; nothing when it was not asked
  // or gave no answer.
  std::optional<int> module_result;
  int signal = 0;  // that ended the child process, or 0
  std::vector<SkippedMember> skipped;
  std::uint64_t token_bytes = 0;  // length of the token stream so far

  bool operator==(const Result&) const = default;
};

// The message together with the module's return value, where there is one.
std::string describe(const Result& result);

}  // namespace dorvex
