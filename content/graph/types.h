// Which type ids of an object stream stand for which message. Ids below 300 and from
// 10000 on mean something else in each application.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "declarations.h"

namespace dorvex::content {

namespace TSWP = schema::TSWP;
namespace TSP = schema::TSP;
namespace TSD = schema::TSD;
namespace TSS = schema::TSS;
namespace TSK = schema::TSK;
namespace TSA = schema::TSA;
namespace TST = schema::TST;
namespace TSCE = schema::TSCE;
namespace TSCH = schema::TSCH;
namespace KN = schema::KN;
namespace TP = schema::TP;
namespace TN = schema::TN;
namespace newer = schema::newer;

// The ids of a message: Types<TSWP::StorageArchive>::ids.
template <typename M>
struct Types;

template <std::uint32_t... Ids>
struct TypeIds {
  static constexpr std::array<std::uint32_t, sizeof...(Ids)> ids{Ids...};
  static constexpr bool hold(std::uint32_t type) { return ((type == Ids) || ...); }
};

// clang-format off
template <> struct Types<TSP::PackageMetadata> : TypeIds<11006> {};
template <> struct Types<TSWP::StorageArchive> : TypeIds<2001, 2005> {};
template <> struct Types<TST::TableInfoArchive> : TypeIds<6000> {};
template <> struct Types<TST::TableModelArchive> : TypeIds<6001> {};
// clang-format on

}  // namespace dorvex::content
