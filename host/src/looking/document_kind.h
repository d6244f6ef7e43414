// Which application a package tells of. The reader never asks: it takes every
// document for a Pages document.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "dorvex/result.h"

namespace dorvex {

class KindEvidence {
 public:
  // A member of the package, by its name there.
  void noteName(std::string_view name);
  // Whether the type of the document object is to be looked for in a member.
  static bool mayHoldRoot(std::string_view name);
  // A member together with that type, where it was found.
  void noteRoot(std::string_view name, std::optional<std::uint64_t> type);
  // A member together with what it holds once decompressed.
  void noteObjects(std::string_view name, std::string_view objectStream);

  // What another look has found.
  void add(const KindEvidence& other);

  Kind kind() const;

 private:
  bool hasSlides_ = false;
  bool hasPagesRoot_ = false;
  bool hasOtherRoot_ = false;
};

}  // namespace dorvex
