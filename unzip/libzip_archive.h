// A zip as libzip reads it: for those that our own reading must not decide alone, and
// for members that are encrypted or compressed in a rare way.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Readers/hostapi/container_status.h"
#include "Readers/hostapi/host_records.h"
#include "member_copy.h"
#include "zip_layout.h"

namespace dorvex::unzip {

// Implemented in a module of its own: libzip brings a library for encryption along
// that takes longer to load than all the others together, and most zips need neither.
class LibzipArchive {
 public:
  LibzipArchive() = default;
  virtual ~LibzipArchive() = default;
  LibzipArchive(const LibzipArchive&) = delete;
  LibzipArchive& operator=(const LibzipArchive&) = delete;

  virtual std::uint64_t memberCount() const = 0;

  // name is valid as long as the archive. Both only where the status is VN_CONTAINER_OK.
  virtual VNContainerStatus describe(std::uint64_t index, std::string_view& name,
                                     std::uint64_t& size) const = 0;

  // Whether libzip reads of a member what the layout has of it.
  virtual VNContainerStatus compare(std::uint64_t index, const ZipEntry& entry) const = 0;

  virtual VNContainerStatus copy(std::uint64_t index, MemberOutlet& outlet) const = 0;
};

// Opens the zip held by io, which must stay open as long as the archive. flags: as
// makeIoSource takes them. Null when libzip does not read it, or memory is out.
std::unique_ptr<LibzipArchive> openByLibzip(_VPTPIOobj* io, std::vector<std::uint64_t> flags);

// Loads what openByLibzip needs, which does so by itself otherwise. False where that
// cannot be done; dlerror() tells why.
bool loadLibzip();

}  // namespace dorvex::unzip
