// The host's own look at a document, for telling people what it is. The reader
// never decides that.
#pragma once

#include <string>
#include <vector>

#include "bytes/byte_store.h"

namespace dorvex {

struct PackageLook {
  bool directory = false;          // otherwise a file
  bool empty = false;              // a file of no bytes
  bool beginsLikeAZip = false;     // a file with the signature of a zip
  bool beginsLikeAChunk = false;   // a file that looks like a single member stream
  bool hasStreams = false;         // holds what the reader looks for
  bool iwork09 = false;            // holds index.xml or index.apxl
  bool passwordProtected = false;  // holds .iwpv2 or .iwph
};

// Marks what the names of a package's members tell. Names are paths inside the
// package, or entries of its directory.
void lookAtNames(const std::vector<std::string>& names, PackageLook& look);

// Marks what the first bytes of a file tell.
void lookAtStart(ByteStore& store, PackageLook& look);

// The entries of an open directory, without the two dot entries, and "Index/"
// before those of its Index directory. Empty when it cannot be read.
std::vector<std::string> listDirectory(int directory);

}  // namespace dorvex
