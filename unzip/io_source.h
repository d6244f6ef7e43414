// A libzip source over the slots of a host's I/O object.
#pragma once

#include <zip.h>

#include <cstdint>
#include <vector>

#include "Readers/hostapi/host_records.h"

namespace dorvex::unzip {

// Makes a read-only, seekable source over io, which must be open and stays the
// caller's; it is read in place, nothing is copied aside. Null when io lacks
// Read, Seek or Tell, when it is empty, or when memory is out. The source is
// owned by the caller until an archive takes it over.
//
// flags: where the flags of members lie, in ascending order. There the mark that the
// name is UTF-8 reads as if it were not set: libzip refuses a whole zip for one name
// that is marked so and is not, be it the name of a picture. Names are given as
// bytes anyway.
zip_source_t* makeIoSource(_VPTPIOobj* io, std::vector<std::uint64_t> flags = {});

}  // namespace dorvex::unzip
