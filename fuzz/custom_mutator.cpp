// The structure-aware mutator behind libFuzzer's hooks.
#include <google/protobuf/message.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Tools/formats/vniwork13/registry.h"
#include "input_form.h"

// libFuzzer's own mutations.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);
// Its hooks.
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t maxSize, unsigned int seed);
extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* left, std::size_t leftSize,
                                                 const std::uint8_t* right, std::size_t rightSize,
                                                 std::uint8_t* out, std::size_t maxSize,
                                                 unsigned int seed);

namespace dorvex::fuzz {
namespace {

constexpr std::size_t kRoomToGrow = 64;

std::string mutateBlindly(std::string bytes) {
  const std::size_t size = bytes.size();
  bytes.resize(size + kRoomToGrow);
  bytes.resize(LLVMFuzzerMutate(reinterpret_cast<std::uint8_t*>(bytes.data()), size, bytes.size()));
  return bytes;
}

// Every type id that the reader builds.
const std::vector<int>& knownTypes() {
  static const std::vector<int> types = [] {
    constexpr int kHighest = 12100;
    std::vector<int> known;
    for (int type = 0; type < kHighest; ++type) {
      const std::unique_ptr<google::protobuf::Message> message(
          vn::iwork13::getKeynoteMessage(type));
      if (message != nullptr) known.push_back(type);
    }
    return known;
  }();
  return types;
}

std::string textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

std::size_t put(const std::string& input, std::uint8_t* data) {
  std::ranges::copy(input, data);
  return input.size();
}

}  // namespace
}  // namespace dorvex::fuzz

std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                    unsigned int seed) {
  using namespace dorvex::fuzz;
  const std::size_t headerSize = kInputForm.headerSize;
  // Blind ones too: the layers themselves are under test.
  if (size <= headerSize || seed % 16 == 0) return LLVMFuzzerMutate(data, size, maxSize);
  StructureMutator mutator(seed, mutateBlindly, knownTypes());
  const std::string document = textOf(data + headerSize, size - headerSize);
  const std::string mutated = mutator.mutate(kInputForm.level, document);
  if (headerSize + mutated.size() > maxSize) return LLVMFuzzerMutate(data, size, maxSize);
  return headerSize + put(mutated, data + headerSize);
}

std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* left, std::size_t leftSize,
                                      const std::uint8_t* right, std::size_t rightSize,
                                      std::uint8_t* out, std::size_t maxSize, unsigned int seed) {
  using namespace dorvex::fuzz;
  const std::size_t headerSize = kInputForm.headerSize;
  if (leftSize <= headerSize || rightSize <= headerSize) return 0;
  StructureMutator mutator(seed, mutateBlindly, knownTypes());
  const std::string crossed =
      textOf(left, headerSize) + mutator.cross(kInputForm.level,
                                               textOf(left + headerSize, leftSize - headerSize),
                                               textOf(right + headerSize, rightSize - headerSize));
  return crossed.size() <= maxSize ? put(crossed, out) : 0;
}
