// The smallest host: documents in memory, modules from the installed folder.
#pragma once

#include <cstddef>
#include <string>

#include "Readers/hostapi/host_records.h"

namespace dorvex::consumer {

// An I/O object over bytes.
struct Stream : _VPTPIOobj {
  explicit Stream(std::string bytes = {});

  std::string contents;
  std::size_t position = 0;
};

// A service table with every slot that the module calls.
struct Host : tag_TPVAPIServices {
  Host();

  int liveBlocks = 0;            // of the allocator
  tagVNCharSet convertedFrom{};  // what ConvertText was asked
  std::int32_t convertedTo = 0;
};

}  // namespace dorvex::consumer
