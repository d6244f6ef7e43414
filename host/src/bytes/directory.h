// A folder that is being listed.
#pragma once

#include <dirent.h>

#include <memory>

namespace dorvex {

struct CloseDirectory {
  void operator()(DIR* stream) const { ::closedir(stream); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

}  // namespace dorvex
