// The documents that the program is run on.
#pragma once

#include <string>

namespace dorvex::consumer {

// Identifiers of the objects in both documents.
inline constexpr unsigned long long kStorage = 10;   // a TSWP.StorageArchive, "Hello" and "world"
inline constexpr unsigned long long kTile = 20;      // a TST.Tile: a text cell and a number cell
inline constexpr unsigned long long kTexts = 21;     // the TST.TableDataList of its texts
inline constexpr unsigned long long kUnused = 4711;  // no object

// What the command line gave.
struct Documents {
  std::string package;       // path of a zip package
  std::string member;        // path of the same objects as an .iwa member
  std::string moduleFolder;  // where the installed modules are
};

// Set by main before anything else runs.
extern Documents documents;

// A whole file. Throws std::runtime_error where there is none.
std::string readFile(const std::string& path);

}  // namespace dorvex::consumer
