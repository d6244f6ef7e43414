// Processes that read damaged documents, so that one that crashes or has no end takes no
// test with it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <vector>

#include "damage/variants.h"

namespace dorvex::testing {

// What became of a variant; what is no failure is 0 and above, and below kUnstated.
enum Outcome : int {
  kCrashed = -2,
  kEndless = -1,
  kUnstated = 100,
  kLeftOpen = 101,
  kBadOutput = 102,
};

// A number from the environment: DORVEX_DAMAGE_VARIANTS is the number of variants of each
// document, DORVEX_DAMAGE_FIRST the first of them.
std::uint64_t firstVariant();
std::uint64_t endOfVariants();

// The samples, and the real documents that are at hand.
std::vector<std::filesystem::path> samples();
std::vector<std::filesystem::path> documents();

// Reads a variant in its process, and tells what became of it.
using Read = std::function<int(const DamagedDocument& document)>;

// Reads all variants that are asked for and tells of each. Many are read by one process,
// one after the other, until one crashes or takes more of the processor's time than
// patience. Choose it many times over: the processor's share of a busy machine is slow.
void readVariants(const Variants& variants, const Read& read, std::chrono::seconds patience,
                  const std::function<void(std::uint64_t variant, int outcome)>& tell);

// Prints how often each outcome came.
class OutcomeCounts {
 public:
  void add(int outcome) { ++counts_[outcome]; }
  void print(const std::filesystem::path& document) const;

 private:
  std::map<int, int> counts_;
};

}  // namespace dorvex::testing
