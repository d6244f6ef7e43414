// Durations in units from weeks to milliseconds.
#pragma once

#include <unicode/uversion.h>

#include <cstdint>
#include <memory>
#include <string>

#include "tables/number_format.h"
#include "tables/symbols.h"

U_NAMESPACE_BEGIN
class MeasureFormat;
U_NAMESPACE_END

namespace dorvex::content {

// How the units of a duration are written, as formats store it: 1:02, 1h 2m, 1 hour
// 2 minutes.
enum class DurationStyle : std::uint8_t { kCompact, kShort, kLong };

class DurationFormat {
 public:
  // The one of a cell without a format.
  DurationFormat() = default;
  DurationFormat(const FormatArchive& format, const Symbols& symbols);
  DurationFormat(DurationStyle style, std::uint32_t largest, std::uint32_t smallest, bool automatic,
                 const Symbols& symbols);

  void append(double seconds, const Symbols& symbols, std::string& out) const;

 private:
  struct Units {
    std::size_t largest, smallest;
  };
  Units unitsOf(std::uint64_t milliseconds) const;
  void appendCompact(std::uint64_t count, std::size_t unit, const Units& units,
                     std::string& out) const;
  void appendWords(std::uint64_t count, std::size_t unit, std::string& out) const;

  DurationStyle style_ = DurationStyle::kShort;
  Units units_{0, 0};
  bool automatic_ = true;
  std::shared_ptr<const icu::MeasureFormat> names_;  // of units; null for English
};

}  // namespace dorvex::content
