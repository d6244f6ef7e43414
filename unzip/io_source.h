// A libzip source over the slots of a host's I/O object.
#pragma once

#include <zip.h>

#include "Readers/hostapi/host_records.h"

namespace dorvex::unzip {

// Makes a read-only, seekable source over io, which must be open and stays the
// caller's; it is read in place, nothing is copied aside. Null when io lacks
// Read, Seek or Tell, when it is empty, or when memory is out. The source is
// owned by the caller until an archive takes it over.
zip_source_t* makeIoSource(_VPTPIOobj* io);

}  // namespace dorvex::unzip
