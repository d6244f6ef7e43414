// What each registry claims to know, without the classes that it builds.
#include <algorithm>
#include <cstddef>
#include <iterator>

#include "Tools/formats/vniwork13/registry.h"

namespace vn::iwork13 {
namespace {

// clang-format off

// Has ranges: what each registry claims to know. This is a statement of its own,
// not derived from the rows above: the common registry claims ten ids that it
// cannot build (204, 2104, 2117, 5114, 6110, 6207 to 6210 and 6219). Deriving one
// from the other would lose that difference, which callers see.

struct Range {
  int first;
  int last;
};

constexpr Range kCommonRanges[] = {
    {200, 206}, {210, 213}, {215, 215}, {400, 402}, {410, 417}, {600, 602}, {2001, 2011},
    {2013, 2014}, {2021, 2026}, {2031, 2043}, {2050, 2052}, {2060, 2062}, {2101, 2101},
    {2104, 2104}, {2107, 2107}, {2116, 2122}, {2206, 2207}, {2231, 2231}, {2240, 2242},
    {2400, 2406}, {3002, 3009}, {3015, 3016}, {3020, 3028}, {3030, 3034}, {3036, 3043},
    {3045, 3045}, {3047, 3059}, {4000, 4005}, {5000, 5000}, {5002, 5002}, {5004, 5004},
    {5010, 5017}, {5020, 5029}, {5103, 5105}, {5107, 5110}, {5114, 5116}, {5118, 5127},
    {5129, 5132}, {6000, 6010}, {6100, 6103}, {6107, 6108}, {6110, 6111}, {6114, 6114},
    {6117, 6117}, {6120, 6120}, {6123, 6123}, {6125, 6129}, {6131, 6132}, {6136, 6137},
    {6142, 6142}, {6144, 6148}, {6179, 6179}, {6181, 6201}, {6204, 6210}, {6218, 6221},
    {6224, 6224}, {6226, 6229}, {6235, 6235}, {6238, 6239}, {6244, 6244}, {6246, 6247},
    {6250, 6250}, {6255, 6255}, {11000, 11000}, {11006, 11008},
};

constexpr Range kKeynoteRanges[] = {
    {1, 12}, {14, 25}, {100, 107}, {109, 110}, {112, 112}, {114, 115}, {118, 119}, {123, 124},
    {128, 132}, {134, 146}, {148, 148}, {10011, 10011},
};

constexpr Range kNumbersRanges[] = {
    {1, 3}, {7, 7}, {10011, 10011}, {12002, 12006}, {12008, 12009}, {12011, 12019},
    {12024, 12024}, {12026, 12026}, {12028, 12028},
};

constexpr Range kPagesRanges[] = {
    {7, 7}, {10000, 10001}, {10010, 10012}, {10015, 10015}, {10101, 10102}, {10110, 10120},
    {10125, 10127}, {10130, 10133}, {10140, 10140}, {10143, 10143}, {10147, 10147},
    {10149, 10149}, {10152, 10155}, {10157, 10157},
};

// clang-format on

template <std::size_t N>
bool holds(const Range (&ranges)[N], int type) {
  const Range* range = std::ranges::lower_bound(ranges, type, {}, &Range::last);
  return range != std::end(ranges) && range->first <= type;
}

}  // namespace

bool commonRegistryHasMessageType(int type) { return holds(kCommonRanges, type); }
bool keynoteRegistryHasMessageType(int type) { return holds(kKeynoteRanges, type); }
bool numbersRegistryHasMessageType(int type) { return holds(kNumbersRanges, type); }
bool pagesRegistryHasMessageType(int type) { return holds(kPagesRanges, type); }

bool registryHasMessageType(IWorkRegistryType registry, int type) {
  switch (registry) {
    case CommonRegistry:
      return commonRegistryHasMessageType(type);
    case KeynoteRegistry:
      return keynoteRegistryHasMessageType(type);
    case NumbersRegistry:
      return numbersRegistryHasMessageType(type);
    case PagesRegistry:
      return pagesRegistryHasMessageType(type);
  }
  return false;
}

}  // namespace vn::iwork13
