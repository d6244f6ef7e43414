#include "Tools/vnose/vnose.h"

DIR* vnos_opendir(const char* path, int /*reserved*/) { return opendir(path); }

struct dirent* vnos_readdir_r(DIR* dir, struct dirent* /*entry*/, int /*reserved*/) {
  return readdir(dir);
}

int vnos_closedir(DIR* dir, int /*reserved*/) { return closedir(dir); }
