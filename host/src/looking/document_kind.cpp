#include "looking/document_kind.h"

#include <algorithm>
#include <array>

#include "looking/file_name.h"
#include "looking/object_stream.h"

namespace dorvex {
namespace {

// Only Keynote has slides, each in a stream of its own.
constexpr std::array<std::string_view, 3> kSlides = {"Slide", "MasterSlide", "TemplateSlide"};

// The type of the document object tells Pages from the other two.
constexpr std::uint64_t kPagesRoot = 10000;
constexpr std::uint64_t kOtherRoot = 1;

}  // namespace

void KindEvidence::noteName(std::string_view name) {
  const std::string_view file = fileName(name);
  hasSlides_ = hasSlides_ || (file.ends_with(".iwa") &&
                              std::any_of(kSlides.begin(), kSlides.end(),
                                          [&](auto slide) { return file.starts_with(slide); }));
}

bool KindEvidence::mayHoldRoot(std::string_view name) { return fileName(name) == "Document.iwa"; }

void KindEvidence::noteRoot(std::string_view name, std::optional<std::uint64_t> type) {
  noteName(name);
  if (!mayHoldRoot(name)) return;
  hasPagesRoot_ = hasPagesRoot_ || type == kPagesRoot;
  hasOtherRoot_ = hasOtherRoot_ || type == kOtherRoot;
}

void KindEvidence::noteObjects(std::string_view name, std::string_view objectStream) {
  noteRoot(name, mayHoldRoot(name) ? findRootType(objectStream) : std::nullopt);
}

void KindEvidence::add(const KindEvidence& other) {
  hasSlides_ = hasSlides_ || other.hasSlides_;
  hasPagesRoot_ = hasPagesRoot_ || other.hasPagesRoot_;
  hasOtherRoot_ = hasOtherRoot_ || other.hasOtherRoot_;
}

Kind KindEvidence::kind() const {
  if (hasPagesRoot_) return Kind::kPages;
  if (hasSlides_) return Kind::kKeynote;
  return hasOtherRoot_ ? Kind::kNumbers : Kind::kUnknown;
}

}  // namespace dorvex
