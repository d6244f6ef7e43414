/* The layer between the readers and the operating system. C linkage; results
 * are return values and errno, nothing throws. */
#pragma once

#include <dirent.h>

#include "Tools/vnexport.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Opens a directory; null on failure. reserved is passed as 0. The caller
 * closes the result with vnos_closedir. */
VN_API DIR* vnos_opendir(const char* path, int reserved);

/* The next entry, or null at the end and on failure. entry and reserved
 * (passed as 0) are ignored: the name is read through the result, which the
 * next call for the same directory overwrites. */
VN_API struct dirent* vnos_readdir_r(DIR* dir, struct dirent* entry, int reserved);

/* Closes a directory. reserved is passed as 0. 0, or -1 on failure. */
VN_API int vnos_closedir(DIR* dir, int reserved);

#ifdef __cplusplus
}
#endif
