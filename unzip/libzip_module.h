// What unzip.so calls in the module that is linked with libzip.
#pragma once

#include <cstdint>
#include <vector>

#include "Readers/hostapi/host_records.h"
#include "Tools/vnexport.h"
#include "libzip_archive.h"

namespace dorvex::unzip {

// Its file, which lies beside unzip.so, and the name of what it exports.
inline constexpr char kLibzipModule[] = "unzip-libzip.so";
inline constexpr char kUnzipOpenByLibzip[] = "unzipOpenByLibzip";

}  // namespace dorvex::unzip

// An archive that is the caller's, or null. May throw std::bad_alloc.
extern "C" VN_API dorvex::unzip::LibzipArchive* unzipOpenByLibzip(
    _VPTPIOobj* io, std::vector<std::uint64_t>* flags);
