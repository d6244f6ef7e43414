// Documents damaged at random, the same ones each time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/package_writer.h"

namespace dorvex::testing {

// A document in memory: the bytes of a zip, or the files of a package directory.
struct DamagedDocument {
  std::string zip;
  std::vector<Member> files;  // of a directory; zip is empty then
};

// One document and its variants. A variant is damaged at one of three levels:
//
//  - the zip: the bytes of the file as they lie, half of the time near its end,
//    where the list of members is;
//  - the chunks of one member stream, in a sound zip;
//  - the objects of one member stream, in sound chunks and a sound zip.
//
// Damage is one or a few of: bytes flipped, a range cut out, doubled, or swapped
// with another. The name and the number decide all of it.
class Variants {
 public:
  // A file or a package directory.
  explicit Variants(const std::filesystem::path& path);

  DamagedDocument make(std::uint64_t number) const;

  // The decompressed member streams of a variant, as far as they are sound: what
  // the reader walks.
  static std::vector<std::string> objectStreams(const DamagedDocument& document);

 private:
  std::string name_;
  DamagedDocument whole_;
  DamagedDocument lean_;  // without the contents of members that no reader takes
};

}  // namespace dorvex::testing
