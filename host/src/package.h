// The host's own look at a document, for telling people what it is. The reader
// never decides that.
#pragma once

#include <string>
#include <vector>

#include "byte_store.h"

namespace dorvex {

struct PackageLook {
  bool directory = false;            // otherwise a file
  bool empty = false;                // a file of no bytes
  bool begins_like_a_zip = false;    // a file with the signature of a zip
  bool begins_like_a_chunk = false;  // a file that looks like a single member stream
  bool has_streams = false;          // holds what the reader looks for
  bool iwork09 = false;              // holds index.xml or index.apxl
  bool password_protected = false;   // holds .iwpv2 or .iwph
};

// Marks what the names of a package's members tell. Names are paths inside the
// package, or entries of its directory.
void look_at_names(const std::vector<std::string>& names, PackageLook& look);

// Marks what the first bytes of a file tell.
void look_at_start(ByteStore& store, PackageLook& look);

// The entries of an open directory, without the two dot entries, and "Index/"
// before those of its Index directory. Empty when it cannot be read.
std::vector<std::string> list_directory(int directory);

}  // namespace dorvex
