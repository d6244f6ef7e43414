/* Calls the system layer from C: it compiles and links without C++. */
#include <stddef.h>

#include "Tools/vnose/vnose.h"

int dorvex_countEntriesInC(const char* path) {
  DIR* dir = vnos_opendir(path, 0);
  int count = 0;
  if (dir == NULL) return -1;
  while (vnos_readdir_r(dir, NULL, 0) != NULL) ++count;
  vnos_closedir(dir, 0);
  return count;
}

int dorvex_holdsNothingInC(void) {
  vnos_flock record;
  return vnos_flock_init(&record, 0, NULL) == 0 && record.fd == -1 && record.path == NULL;
}
