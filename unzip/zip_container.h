// One open zip: its members in central-directory order.
#pragma once

#include <cstdint>
#include <memory>

#include "Readers/hostapi/container_reader.h"
#include "Readers/hostapi/container_status.h"
#include "dorvex/unzip_limits.h"
#include "libzip_archive.h"
#include "member_copy.h"
#include "zip_layout.h"

namespace dorvex::unzip {

// What a zip may hold and what becomes of it:
//
//  - A directory is a member of size 0 whose name ends in a slash.
//  - Names are given as their bytes stand, absolute ones and those with ".." too:
//    nobody takes them for paths of a file system.
//  - A NUL within a name is shown as a blank (as libzip does), so that it cannot
//    cut the name short.
//  - A name of 1048 bytes and more, which the record cannot hold, is cut to 1044
//    bytes and "...". One that ends in ".iwa" or "Index.zip" makes entryInfo fail as
//    damaged instead: cut short it would hide a member that may count.
//  - A name that is marked as UTF-8 and is not is like any other.
//  - Of members with the same name each is listed and extracted.
//  - A member of 4 GiB or more has the size 0xFFFFFFFF in its record, so that a
//    container can be listed past it; extracting it is a general failure.
//  - An encrypted member and one with a compression that libzip lacks are
//    listed like any other and fail on extraction only.
//  - A member whose bytes, from its local header to its data descriptor, are also
//    those of another member or of the central directory is damaged, and so is
//    one of which local header, data descriptor or data say something else than
//    the central directory. It is listed, and fails on extraction.
//  - ZIP64 records and fields, data descriptors in all their forms, an archive
//    comment, up to 64 KiB of bytes behind the zip, and a prefix that the offsets
//    take into account are read over. A prefix that they do not is no zip.
//  - A zip that takes libzip, be it for a member that nobody extracts, is not opened
//    where libzip cannot be loaded, and the limits record says so.
//  - A zip of more members than the limit is not opened; a member that would pass
//    a limit is a general failure, and the limits record says which.
class ZipContainer {
 public:
  // Opens the zip held by io, which must stay open as long as the container.
  // limits, too, must outlive it; null stands for the default ones. Null when io
  // cannot be read as a zip, holds too many members, or memory is out.
  static std::unique_ptr<ZipContainer> open(_VPTPIOobj* io, UnzipLimits* limits = nullptr);

  // The number of members.
  int entryCount() const;

  // Fills entry for member index. On failure entry holds an empty name, size 0.
  VNContainerStatus entryInfo(std::int32_t index, ContainerEntryInfo& entry) const;

  // Writes the member's contents through the Write slot of stream: exactly as
  // many bytes as its record says, with a matching checksum, or the status is
  // not VN_CONTAINER_OK. A declared size is never believed: writing stops at
  // the first byte in excess.
  VNContainerStatus extract(std::int32_t index, _VPTPIOobj* stream);

 private:
  ZipContainer(_VPTPIOobj* io, ZipLayout layout, UnzipLimits* limits);
  bool readLayout();
  bool hasWhatItNeeds();
  bool openArchive();
  bool has(std::int32_t index) const;
  VNContainerStatus plainInfo(std::int32_t index, ContainerEntryInfo& info) const;
  VNContainerStatus infoByLibzip(std::int32_t index, ContainerEntryInfo& info) const;
  VNContainerStatus check(const ZipEntry& entry, std::uint64_t& data);
  VNContainerStatus copyByLibzip(std::int32_t index, MemberOutlet& outlet);
  UnzipLimit limitPassedBy(const ZipEntry& entry) const;

  _VPTPIOobj* io_;
  ZipLayout layout_;
  UnzipLimits ownLimits_;
  UnzipLimits& limits_;
  // Of a plain zip only once a member needs it: opening costs more than all the rest.
  std::unique_ptr<LibzipArchive> archive_;
};

}  // namespace dorvex::unzip
