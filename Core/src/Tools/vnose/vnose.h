/// @file
/// The layer between the readers and the operating system. All functions have C
/// linkage, throw nothing, keep no state, and report by their results and errno.
///
/// Files are plain descriptors, also where a name is that of a stdio call. A
/// function whose comment does no more than name a call passes its arguments on
/// and returns what that call returns. Offsets are 64 bits wide in either form
/// of a name. Pointers may not be null unless a function says so.
#pragma once

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/time.h>
#include <sys/types.h>

#include "Tools/vnexport.h"

#ifdef __cplusplus
extern "C" {
#endif

/// @name Modules
/// @{

/// dlopen, with a log. While the environment variable VN_DLL_LOG exists, with
/// whatever value, lines are added to dll_debug.log in the current directory:
/// one for each call, and two more for one that fails. They are lost when that
/// file cannot be opened.
/// @param filename The module; null stands for the program itself.
/// @param flag The flags of dlopen.
/// @return The handle, for vnos_dlclose; null on failure, with the text of
///     dlerror used up.
VN_API void* vnos_dlopen(const char* filename, int flag);

/// dlclose.
/// @param handle What vnos_dlopen gave.
/// @return 0, or another number on failure.
VN_API int vnos_dlclose(void* handle);

/// dlerror.
/// @return The text of the last failure, or null; the system's.
VN_API char* vnos_dlerror(void);

/// dlsym.
/// @param handle What vnos_dlopen gave.
/// @param symbol The name.
/// @return The address, or null.
VN_API void* vnos_dlsym(void* handle, const char* symbol);

/// @}

/// @name Memory
/// No block of 0x80000000 bytes or more is handed out, except by vnos_valloc.
/// Each function draws that line in a way of its own. Sizes are in bytes; the
/// caller owns every block and gives it back with vnos_free.
/// @{

/// malloc, for 1 to 0x7FFFFFFF bytes.
/// @param size The size; for 0 there is no block.
/// @return The block, or null.
VN_API void* vnos_malloc(unsigned long size);

/// malloc, without any limit and, despite the name, without alignment to a page.
/// @param size The size.
/// @return The block, or null.
VN_API void* vnos_valloc(unsigned long size);

/// calloc. There is no block when count, size or their product is 0 or above
/// 0x7FFFFFFF.
/// @param count The number of items.
/// @param size The size of one.
/// @return The block, all zero; or null.
VN_API void* vnos_calloc(unsigned long count, unsigned long size);

/// realloc, for up to 0x7FFFFFFF bytes. A size of 0 is passed on.
/// @param block The block; may be null.
/// @param size The new size.
/// @return The block, or null. Above the limit the old block stays valid.
VN_API void* vnos_realloc(void* block, unsigned long size);

/// realloc that gives up the block when the size is out of range: for 0 and for
/// 0x80000000 or more.
/// @param block The block; may be null.
/// @param size The new size.
/// @return The block, or null. After a null the old block is gone if the size
///     was out of range, and valid otherwise.
VN_API void* vnos_Saferealloc(void* block, unsigned long size);

/// free.
/// @param block The block; may be null.
VN_API void vnos_free(void* block);

/// @}

/// @name Files
/// Every function that opens a file keeps the descriptor out of the low range:
/// it is 256 or above, unless no such descriptor can be had. New files get the
/// mode 0644.
/// @{

/// Opens a file. Only the first character of the mode and a plus sign anywhere
/// in it count: r, w and a are those of fopen, anything else is r without plus.
/// @param path The file.
/// @param mode The mode.
/// @return The descriptor, for vnos_fclose; -1 on failure.
VN_API long vnos_fopen(const char* path, const char* mode);

/// The same as vnos_fopen.
/// @param path The file.
/// @param mode The mode.
/// @return The descriptor, for vnos_fclose; -1 on failure.
VN_API long vnos_fopen64(const char* path, const char* mode);

/// open.
/// @param path The file.
/// @param flags The flags of open.
/// @return The descriptor, for vnos_close; -1 on failure.
VN_API int vnos_open(const char* path, int flags);

/// close.
/// @param fd The descriptor.
/// @return 0, or -1 on failure.
VN_API int vnos_fclose(int fd);

/// close.
/// @param fd The descriptor.
/// @return 0, or -1 on failure.
VN_API int vnos_close(int fd);

/// Reads whole items with one read. Bytes of an item that is cut off are read
/// and not counted; a failure counts as no items.
/// @param fd The descriptor.
/// @param[out] buffer Room for all the items.
/// @param size The size of one item in bytes; may not be 0.
/// @param count The number of items.
/// @return The number of whole items.
VN_API long vnos_fread(int fd, void* buffer, unsigned long size, unsigned long count);

/// Writes whole items with one write; the counterpart of vnos_fread.
/// @param fd The descriptor.
/// @param buffer The items.
/// @param size The size of one item in bytes; may not be 0.
/// @param count The number of items.
/// @return The number of whole items.
VN_API long vnos_fwrite(int fd, const void* buffer, unsigned long size, unsigned long count);

/// read.
/// @param fd The descriptor.
/// @param[out] buffer Room for length bytes.
/// @param length The number of bytes at most.
/// @return The number of bytes, or -1 on failure.
VN_API long vnos_read(int fd, void* buffer, unsigned long length);

/// write.
/// @param fd The descriptor.
/// @param buffer The bytes.
/// @param length Their number.
/// @return The number of bytes, or -1 on failure.
VN_API long vnos_write(int fd, const void* buffer, unsigned long length);

/// lseek.
/// @param fd The descriptor.
/// @param offset In bytes.
/// @param whence SEEK_SET, SEEK_CUR or SEEK_END.
/// @return The new position, or -1 on failure.
VN_API long vnos_lseek(int fd, long offset, int whence);

/// The same as vnos_lseek.
/// @param fd The descriptor.
/// @param offset In bytes.
/// @param whence SEEK_SET, SEEK_CUR or SEEK_END.
/// @return The new position, or -1 on failure.
VN_API long vnos_lseek64(int fd, long offset, int whence);

/// lseek, with the result of fseek.
/// @param fd The descriptor.
/// @param offset In bytes; the end of the file is no limit.
/// @param whence SEEK_SET, SEEK_CUR or SEEK_END.
/// @return 0, or -1 on failure.
VN_API int vnos_fseek(int fd, long offset, int whence);

/// The same as vnos_fseek.
/// @param fd The descriptor.
/// @param offset In bytes; the end of the file is no limit.
/// @param whence SEEK_SET, SEEK_CUR or SEEK_END.
/// @return 0, or -1 on failure.
VN_API int vnos_fseek64(int fd, long offset, int whence);

/// The position of a descriptor.
/// @param fd The descriptor.
/// @return The position in bytes, or -1 on failure.
VN_API long vnos_ftell(int fd);

/// The same as vnos_ftell.
/// @param fd The descriptor.
/// @return The position in bytes, or -1 on failure.
VN_API long vnos_ftell64(int fd);

/// The size of an open file; the position does not move.
/// @param fd The descriptor.
/// @return The size in bytes, or -1 on failure.
VN_API long vnos_filesize(int fd);

/// The same as vnos_filesize.
/// @param fd The descriptor.
/// @return The size in bytes, or -1 on failure.
VN_API long vnos_filesize64(int fd);

/// ftruncate.
/// @param fd The descriptor.
/// @param length The new size in bytes.
/// @return 0, or -1 on failure.
VN_API int vnos_ftruncate(int fd, long length);

/// fsync.
/// @param fd The descriptor.
/// @return 0, or -1 on failure.
VN_API int vnos_fsync(int fd);

/// fstat.
/// @param fd The descriptor.
/// @param[out] buffer The answer.
/// @return 0, or -1 on failure.
VN_API int vnos_fstat(int fd, struct stat* buffer);

/// Does nothing, despite its name: callers use vnos_fstat.
/// @param fd Not looked at.
/// @param buffer Not filled.
VN_API void vnos_fstat64(int fd, void* buffer);

/// @}

/// @name Paths
/// @{

/// stat.
/// @param path The path.
/// @param[out] buffer The answer.
/// @return 0, or -1 on failure.
VN_API int vnos_stat(const char* path, struct stat* buffer);

/// statfs.
/// @param path A path in the file system.
/// @param[out] buffer The answer.
/// @return 0, or -1 on failure.
VN_API int vnos_statfs(const char* path, struct statfs* buffer);

/// access.
/// @param path The path.
/// @param mode F_OK, or R_OK, W_OK and X_OK.
/// @return 0, or -1 on failure.
VN_API int vnos_access(const char* path, int mode);

/// utimes.
/// @param path The path.
/// @param times Two times, of access and of change; null stands for now.
/// @return 0, or -1 on failure.
VN_API int vnos_utimes(const char* path, const struct timeval* times);

/// chmod.
/// @param path The path.
/// @param mode The permissions.
/// @return 0, or -1 on failure.
VN_API int vnos_chmod(const char* path, mode_t mode);

/// rename.
/// @param from The old path.
/// @param to The new path.
/// @return 0, or -1 on failure.
VN_API int vnos_rename(const char* from, const char* to);

/// unlink.
/// @param path The path.
/// @return 0, or -1 on failure.
VN_API int vnos_unlink(const char* path);

/// Makes a directory and all that are missing above it. Of a path that begins
/// with two slashes the first name is a server's and is not made; with nothing
/// behind it there is nothing to make.
/// @param path The path; null or empty gives -1. Cut at 1024 bytes.
/// @param mode The permissions of each new directory.
/// @return What the last mkdir gave; -1 if there was nothing to make, so also
///     for a directory that exists.
VN_API int vnos_mkdir(const char* path, int mode);

/// rmdir.
/// @param path The path.
/// @return 0, or -1 on failure.
VN_API int vnos_rmdir(const char* path);

/// chdir.
/// @param path The path.
/// @return 0, or -1 on failure.
VN_API int vnos_chdir(const char* path);

/// getcwd.
/// @param[out] buffer Room for size bytes; null has the system allocate.
/// @param size The size of buffer.
/// @return The path; null on failure. What the system allocated, the caller
///     gives back with vnos_free.
VN_API char* vnos_getcwd(char* buffer, unsigned long size);

/// Makes an empty temporary file with a new name.
/// @param directory Where; null stands for /tmp, and no environment variable is
///     looked at.
/// @param prefix How its name begins; may be null.
/// @return The path, which the caller gives back with vnos_free; null on failure.
///     The caller owns the file too.
VN_API char* vnos_tempnam(const char* directory, const char* prefix);

/// @}

/// @name Directories
/// One directory stream belongs to one thread.
/// @{

/// opendir.
/// @param path The directory.
/// @param reserved Passed as 0; no effect.
/// @return The directory, for vnos_closedir; null on failure.
VN_API DIR* vnos_opendir(const char* path, int reserved);

/// readdir.
/// @param dir The directory.
/// @return The next entry, valid until the next call for the same directory; null
///     at the end and on failure.
VN_API struct dirent* vnos_readdir(DIR* dir);

/// readdir, despite the name no re-entrant form.
/// @param dir The directory.
/// @param entry Ignored: the name is read through the result. May be null.
/// @param reserved Passed as 0; ignored.
/// @return The next entry, valid until the next call for the same directory; null
///     at the end and on failure.
VN_API struct dirent* vnos_readdir_r(DIR* dir, struct dirent* entry, int reserved);

/// closedir.
/// @param dir The directory.
/// @param reserved Passed as 0; no effect.
/// @return 0, or -1 on failure.
VN_API int vnos_closedir(DIR* dir, int reserved);

/// @}

/// @name Locks
/// Advisory locks on ranges of a file, by fcntl. They belong to the process:
/// they keep out other processes, not other threads.
/// @{

/// A lock file. The caller provides the storage; what is in it belongs to the
/// record from vnos_flock_init to vnos_flock_free.
// NOLINTNEXTLINE(modernize-use-using): the header is C, too
typedef struct vnos_flock {
  struct flock lock;  ///< The range and type of the last request.
  char* path;         ///< A copy of the path; owned by the record.
  int fd;             ///< The lock file, or -1 when none is open.
} vnos_flock;

/// Opens a lock file.
/// @param[out] record The record; overwritten.
/// @param flags The flags of open.
/// @param path The file; null gives a record that holds nothing, and no error.
/// @return 0, or -1 if the file cannot be opened. The record has its copy of the
///     path in either case, and vnos_flock_free releases it only if the file is
///     open.
VN_API int vnos_flock_init(vnos_flock* record, int flags, const char* path);

/// Locks a range for writing, without waiting.
/// @param record An open record.
/// @param whence What start counts from: SEEK_SET, SEEK_CUR or SEEK_END.
/// @param start In bytes.
/// @param length In bytes; 0 stands for the size of the file, and moves its
///     position to the end.
/// @return The result of fcntl: 0, or -1 on failure. When another process holds
///     the range, errno is EBUSY.
VN_API int vnos_flock_trywrlock(vnos_flock* record, int whence, long start, long length);

/// Unlocks a range.
/// @param record An open record.
/// @param whence What start counts from: SEEK_SET, SEEK_CUR or SEEK_END.
/// @param start In bytes.
/// @param length In bytes; 0 stands for the size of the file, and moves its
///     position to the end.
/// @return The result of fcntl: 0, or -1 on failure.
VN_API int vnos_flock_unlock(vnos_flock* record, int whence, long start, long length);

/// Unlocks and closes a lock file, and releases the copy of its path. The file
/// stays. A record without an open file is left as it is, path included.
/// @param record A record that vnos_flock_init has filled.
/// @return 0.
VN_API int vnos_flock_free(vnos_flock* record);

/// @}

/// @name Process
/// @{

/// usleep.
/// @param microseconds How long.
/// @return 0, also when a signal ends the wait early.
VN_API int vnos_usleep(unsigned int microseconds);

/// umask.
/// @param mask The new mask.
/// @return The old one.
VN_API mode_t vnos_umask(mode_t mask);

/// system.
/// @param command A command for the shell; null asks whether there is one.
/// @return The status, as wait gives it; -1 on failure.
VN_API int vnos_system(const char* command);

/// exit. Does not return.
/// @param status The exit status.
VN_API __attribute__((noreturn)) void vnos_exit(int status);

/// Does nothing.
VN_API void vnos_dummy(void);

/// @}

#ifdef __cplusplus
}
#endif
