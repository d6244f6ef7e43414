// What the container module loads otherwise, linked in, so that it is fuzzed too.

#include <utility>

#include "libzip_archive.h"
#include "libzip_module.h"

namespace dorvex::unzip {

bool loadLibzip() { return true; }

std::unique_ptr<LibzipArchive> openByLibzip(_VPTPIOobj* io, std::vector<std::uint64_t> flags) {
  return std::unique_ptr<LibzipArchive>(unzipOpenByLibzip(io, &flags));
}

}  // namespace dorvex::unzip
