// The packages that faults are tried on, and how a reader is run over them.
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "faults/stated_run.h"
#include "support/temporary_directory.h"

namespace dorvex::testing {

// A buffer that holds all tokens of a document here.
inline constexpr unsigned kBuffer = 65536;

// A package of every shape: zip, zip with a nested Index.zip, directory with an
// Index folder, directory with an Index.zip.
enum class Shape { kZip, kNestedZip, kDirectory, kDirectoryWithZip };
std::string nameOf(Shape shape);

// One of them, with one text in each member that counts.
class Package {
 public:
  explicit Package(Shape shape);

  // The document as the host is given it.
  Stream& addTo(BareHost& host) const;
  StatedRun stated(const Faults& faults = {}) const;

  // The texts of these members, in the order in which they come out.
  std::vector<std::string> textsOf(const std::vector<std::string>& members) const;

 private:
  std::string pathOf(const std::string& member) const;

  Shape shape_;
  TemporaryDirectory folder_;
  std::string bytes_;                             // of a zip
  std::map<std::string, std::uint64_t> objects_;  // identifier by the end of a member's path
};

// Open descriptors of this process.
std::size_t openDescriptors();

}  // namespace dorvex::testing
