// What the inspector knows of a document once it has gone through it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "dorvex/result.h"
#include "inspect/objects.h"
#include "inspect/package.h"

namespace google::protobuf {
class Message;
}

namespace dorvex::cli {

// The application of a name as the command line has it ("pages"); kUnknown for
// any other.
Kind kindNamed(const std::string& name);
// The name as the command line has it, "unknown" for kUnknown.
std::string nameOf(Kind kind);

// A new instance of the class that a type id means in an application's
// documents; null for an unknown id. Of an unknown application the reader's own
// choice of classes counts.
std::unique_ptr<google::protobuf::Message> newMessage(Kind kind, int type);

struct ListedMember {
  PackageMember member;
  std::uint64_t chunks = 0;  // of a stream
};

struct Listing {
  std::string path;
  bool directory = false;
  Kind kind = Kind::kUnknown;     // as far as the package tells, as for the host
  Kind classes = Kind::kUnknown;  // whose classes the types are taken for
  std::vector<ListedMember> members;
  std::vector<ListedObject> objects;
  // Sentences about what the listing lacks; none for a sound package.
  std::vector<std::string> faults;
};

// Goes through a document. wanted: the object whose payloads are kept. The
// classes are those of what the package tells, or else of the end of the path. Throws what
// isOpen throws.
Listing listDocument(
    const std::string& path, const std::filesystem::path& moduleFolder,
    std::optional<std::uint64_t> wanted, const PackageIsOpen& isOpen = [](int) {});

}  // namespace dorvex::cli
