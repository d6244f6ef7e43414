// One open zip: its members in central-directory order.
#pragma once

#include <zip.h>

#include <memory>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"

namespace dorvex::unzip {

// What a zip may hold and what becomes of it:
//
//  - A directory is a member of size 0 whose name ends in a slash.
//  - A name of 1048 bytes and more, which the record cannot hold, makes
//    entryInfo fail as damaged: cut short it could pass for another member, or
//    hide one that counts.
//  - A NUL within a name is shown as a blank (libzip's doing), so that it cannot
//    cut the name short either.
//  - A member of 4 GiB or more has the size 0xFFFFFFFF in its record, so that a
//    container can be listed past it; extracting it is a general failure.
//  - An encrypted member and one with a compression that libzip lacks are
//    listed like any other and fail on extraction only.
class ZipContainer {
 public:
  // Opens the zip held by io, which must stay open as long as the container.
  // Null when io cannot be read as a zip or memory is out.
  static std::unique_ptr<ZipContainer> open(_VPTPIOobj* io);

  // The number of members.
  int entryCount() const;

  // Fills entry for member index. On failure entry holds an empty name, size 0.
  VNContainerStatus entryInfo(std::int32_t index, ContainerEntryInfo& entry) const;

  // Writes the member's contents through the Write slot of stream: exactly as
  // many bytes as its record says, with a matching checksum, or the status is
  // not VN_CONTAINER_OK. A declared size is never believed: writing stops at
  // the first byte in excess.
  VNContainerStatus extract(std::int32_t index, _VPTPIOobj* stream) const;

 private:
  struct Discard {
    void operator()(zip_t* archive) const { zip_discard(archive); }
  };
  using Archive = std::unique_ptr<zip_t, Discard>;

  explicit ZipContainer(Archive archive) : archive_(std::move(archive)) {}
  bool has(std::int32_t index) const;

  Archive archive_;
};

}  // namespace dorvex::unzip
