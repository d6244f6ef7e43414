// Mutations that know how documents are built. Blind changes of a zip are stopped
// by its checksums, those of a chunk by Snappy and those of an archive by its
// lengths; these take a document apart as far as it can be, change one thing at a
// random level, and build sound layers around it again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "document_parts.h"

namespace dorvex::fuzz {

// What an input is, from the inside to the outside.
enum class Level { kMessage, kObjectStream, kMember, kPackage };

class StructureMutator {
 public:
  // Changes bytes without regard to their meaning.
  using MutateBytes = std::function<std::string(std::string bytes)>;

  // The same seed gives the same mutations, if mutateBytes does. types are the
  // type ids that archives are given, and must outlive the mutator.
  StructureMutator(std::uint32_t seed, MutateBytes mutateBytes, std::span<const int> types);

  // Changes one thing, now and then a few.
  std::string mutate(Level level, const std::string& input);

  // An input that has parts of both.
  std::string cross(Level level, const std::string& left, const std::string& right);

 private:
  // Random choices.
  std::uint32_t below(std::size_t limit);
  bool oneIn(std::uint32_t count) { return below(count) == 0; }
  template <typename Item>
  Item& anyOf(std::vector<Item>& items);
  int anyType();

  std::string mutateMessage(const std::string& message, int levels);
  std::string mutateObjectStream(const std::string& stream);
  std::string mutateMember(const std::string& member);
  std::string mutatePackage(const std::string& package, int levels);

  void mutateField(Field& field, int levels);
  void mutateArchive(ArchiveParts& archive);
  void mutateHeader(ArchiveParts& archive);
  void mutateChunk(Chunk& chunk);
  std::string mutateNamedMember(const std::string& name, const std::string& contents, int levels);
  // Deletes, doubles or swaps items.
  template <typename Item>
  void rearrange(std::vector<Item>& items);
  template <typename Item>
  void insertAnywhere(std::vector<Item>& items, Item item);

  Field makeField();
  ArchiveParts makeArchive();
  std::string makeText();
  std::uint64_t makeNumber();
  std::string makeMember(std::string_view objectStream);

  std::mt19937 random_;
  MutateBytes mutateBytes_;
  std::span<const int> types_;
};

}  // namespace dorvex::fuzz
