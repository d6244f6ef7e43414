// Makes a package from a description that people can read and write.
//
// A description is a JSON object:
//
//   file          the package's file name
//   application   pages, keynote or numbers: whose messages its types mean
//   members       the files of the package, in their order
//
// A member has a name and either a text, its contents as they stand, or objects,
// its archives. An object has an identifier, a type id and a message, whose
// fields stand under their names. The members that it gives as "deflated" are
// compressed. An object may have besides
//
//   extensions    fields that extend its message, by their full names
//   cells         the rows of a tile, see cell_buffer.h
//   newer         fields that the archive schema lacks, see raw_fields.h
//
// and one of a type that no registry knows has, in place of a message, raw fields.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/package_writer.h"

namespace dorvex::samples {

struct Sample {
  std::string fileName;
  std::vector<testing::Member> members;
};

// The file names of all descriptions.
inline constexpr const char* kDescriptions[] = {
    "pages-sample.json",    "keynote-sample.json",  "numbers-sample.json",  "tea-shop-deck.json",
    "tea-shop-prices.json", "tea-shop-letter.json", "tea-shop-poster.json", "tea-shop-recipe.json",
    "tea-shop-tree.json",   "tea-shop-stock.json",  "formats.json"};

// The package of a description. Throws std::runtime_error, or what the JSON
// library throws, for a description that cannot be read.
Sample makeSample(std::string_view description);

}  // namespace dorvex::samples
