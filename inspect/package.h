// The inspector's way through a package: every member, in the order in which
// the reader meets them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "bytes/byte_store.h"
#include "dorvex/result.h"

namespace dorvex::cli {

struct PackageMember {
  std::string name;        // its path in the package, through nested containers
  std::uint64_t size = 0;  // bytes, unpacked
  bool selected = false;   // whether the reader reads it
  bool isStream = false;   // a member stream, selected or not
  std::string fault;       // why it cannot be read, a sentence for people; or empty
};

// contents is null for members that are no streams, and for those with a fault.
using VisitMember = std::function<void(const PackageMember& member, ByteStore* contents)>;

struct PackageOutcome {
  bool directory = false;
  // Failed where there is nothing that the reader would read; its message says
  // why. Faults of single members are the members' own.
  Result result;
};

// Called once the package is open and the container module loaded, before a
// byte is looked at. Gets the descriptor of a package directory, or -1 of a file.
// From there on nothing is opened but what lies in that directory.
using PackageIsOpen = std::function<void(int directory)>;

// Visits the members of the package at a path, "-" for standard input; moduleFolder holds the
// container module. Throws what visit and isOpen throw, and std::bad_alloc.
PackageOutcome visitPackage(
    const std::filesystem::path& path, const std::filesystem::path& moduleFolder,
    const VisitMember& visit, const PackageIsOpen& isOpen = [](int) {});

// The host's sentence about a member stream that is not sound.
std::string unsoundMember(const std::string& name, const std::string& reason);

}  // namespace dorvex::cli
