// The host's own look into a package directory.
#pragma once

#include <cstdint>
#include <optional>

#include "looking/document_kind.h"
#include "looking/observations.h"
#include "looking/package.h"

namespace dorvex {

struct FolderLook {
  PackageLook package;
  KindEvidence kind;
  std::uint64_t bytes = 0;  // of all files
  // Stands for names, sizes and times of what the reader may read. It differs where
  // one of them does.
  std::uint64_t streams = 0;
  // What of it the system would not list.
  std::optional<SystemFailure> failure;
};

// Goes through an open directory: at most 16 folders deep, and not through links
// but where the reader follows them. After 100,000 entries it stops.
FolderLook lookAtFolder(int directory);

// The same number for an open file, of its size and times; 0 where the system does
// not tell.
std::uint64_t stateOfFile(int file);

}  // namespace dorvex
