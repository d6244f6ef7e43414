/// @file
/// The host library for C, and for whatever can call C.
///
///     dorvex_host *host = NULL;
///     dorvex_document *document = NULL;
///     const char *text = NULL;
///     size_t length = 0;
///
///     if (dorvex_host_new(NULL, &host) != DORVEX_OK) return 1;
///     if (dorvex_open_path(host, "Letter.pages", &document) == DORVEX_OK) {
///       while (dorvex_next_text(document, &text, &length) == DORVEX_OK) puts(text);
///       dorvex_document_free(document);
///     }
///     dorvex_host_free(host);
///
/// Rules that hold for all of it:
///
///  1. Functions that can fail return a dorvex_code, and write through their
///     last arguments only when they succeed. What went wrong, in words, is
///     dorvex_last_error() of the same thread.
///  2. A document that cannot be read is no such failure: it is opened, gives no
///     text or not all of it, and its dorvex_result tells why.
///  3. Strings are NUL-terminated. Those for people are UTF-8; paths and member
///     names are the bytes that the system or the package has.
///  4. Pointers that come out belong to the object that gave them, and each
///     function says how long they are valid. Pointers that go in stay the
///     caller's. No pointer may be null unless its function says so: null gives
///     DORVEX_INVALID_ARGUMENT. The free functions take null and do nothing.
///  5. A host may be used by several threads at once, a document by one at a
///     time. Either may be freed first.
///  6. Nothing is thrown out of these functions, and callbacks must return.
///  7. Records begin with their size, so that they can grow: a program and a
///     library of the same DORVEX_ABI_VERSION work together.
#ifndef DORVEX_DORVEX_H
#define DORVEX_DORVEX_H

// NOLINTBEGIN(modernize-deprecated-headers,modernize-use-using): C has no others
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Changes when programs have to be compiled anew. Part of the library's name.
#define DORVEX_ABI_VERSION 0

/// Marks what the library exports.
#define DORVEX_C_API __attribute__((visibility("default")))

/// What a function returns.
typedef enum dorvex_code {
  DORVEX_OK = 0,                ///< success
  DORVEX_END = 1,               ///< there is nothing more to give; no failure
  DORVEX_INVALID_ARGUMENT = 2,  ///< a null pointer, or a value out of range
  DORVEX_OUT_OF_MEMORY = 3,     ///< no memory in this process
  DORVEX_READ_FAILED = 4,       ///< the read callback reported a failure
  DORVEX_INTERNAL = 5,          ///< anything else
  DORVEX_AGAIN = 6              ///< dorvex_options::wait_ms is over, or a signal came in; no
                                ///< failure: called again, the function goes on
} dorvex_code;

/// How much of a document was read.
typedef enum dorvex_status {
  DORVEX_STATUS_OK = 0,       ///< all of it
  DORVEX_STATUS_PARTIAL = 1,  ///< texts came out, but some of the document did not
  DORVEX_STATUS_FAILED = 2    ///< nothing came out that counts
} dorvex_status;

/// Why a document was not read whole. Later versions may add numbers.
typedef enum dorvex_failure {
  DORVEX_FAILURE_NONE = 0,                     ///< the status is ok
  DORVEX_FAILURE_NO_SUCH_FILE = 1,             ///< the path leads nowhere
  DORVEX_FAILURE_PERMISSION_DENIED = 2,        ///< the system would not let us
  DORVEX_FAILURE_CANNOT_READ = 3,              ///< any other failure of the operating system
  DORVEX_FAILURE_NOT_A_PACKAGE = 4,            ///< neither a zip nor a package directory
  DORVEX_FAILURE_IWORK09 = 5,                  ///< a package of the generation before
  DORVEX_FAILURE_PASSWORD_PROTECTED = 6,       ///< the document has a password
  DORVEX_FAILURE_DAMAGED = 7,                  ///< the package or a member is not sound
  DORVEX_FAILURE_UNSUPPORTED_COMPRESSION = 8,  ///< a member that the container module cannot expand
  DORVEX_FAILURE_NOTHING_RECOGNISED = 9,       ///< a package without anything known in it
  DORVEX_FAILURE_OUT_OF_MEMORY = 10,           ///< the document did not fit into memory
  DORVEX_FAILURE_ENDLESS_READ = 11,     ///< the reader would have read behind an end for ever
  DORVEX_FAILURE_TIMED_OUT = 12,        ///< the limit of time
  DORVEX_FAILURE_LIMIT_PASSED = 13,     ///< a limit other than that of time
  DORVEX_FAILURE_CRASHED = 14,          ///< the worker process died
  DORVEX_FAILURE_NOT_CONFINED = 15,     ///< DORVEX_SANDBOX_REQUIRED, and the kernel cannot
  DORVEX_FAILURE_MODULE_MISSING = 16,   ///< a module cannot be loaded
  DORVEX_FAILURE_MODULE_UNUSABLE = 17,  ///< the reader module breaks its contract
  DORVEX_FAILURE_OTHER = 18,            ///< anything else
  DORVEX_FAILURE_CHANGED = 19,          ///< the document was written to while it was read
  DORVEX_FAILURE_OUT_OF_RESOURCES = 20  ///< the machine ran out of something: worth another
                                        ///< attempt later
} dorvex_failure;

/// The limit that ended a document. Later versions may add numbers.
typedef enum dorvex_limit {
  DORVEX_LIMIT_NONE = 0,            ///< no limit was passed
  DORVEX_LIMIT_WALL_TIME = 1,       ///< dorvex_options::wall_time_ms
  DORVEX_LIMIT_PROCESSOR_TIME = 2,  ///< dorvex_options::processor_time_ms
  DORVEX_LIMIT_MEMORY = 3,          ///< dorvex_options::memory
  DORVEX_LIMIT_SCRATCH = 4,         ///< dorvex_options::scratch
  DORVEX_LIMIT_OUTPUT = 5,          ///< dorvex_options::output
  DORVEX_LIMIT_MEMBERS = 6,         ///< dorvex_options::members
  DORVEX_LIMIT_DEPTH = 7,           ///< dorvex_options::depth
  DORVEX_LIMIT_MEMBER_BYTES = 8,    ///< dorvex_options::member_bytes
  DORVEX_LIMIT_TOTAL_BYTES = 9,     ///< dorvex_options::total_bytes
  DORVEX_LIMIT_EXPANSION = 10,      ///< dorvex_options::expansion
  DORVEX_LIMIT_INPUT = 11           ///< dorvex_options::input
} dorvex_limit;

/// The application of a document, as far as its package tells.
typedef enum dorvex_kind {
  DORVEX_KIND_UNKNOWN = 0,  ///< the package does not tell
  DORVEX_KIND_PAGES = 1,    ///< Pages
  DORVEX_KIND_KEYNOTE = 2,  ///< Keynote
  DORVEX_KIND_NUMBERS = 3   ///< Numbers
} dorvex_kind;

/// Where the reader works.
typedef enum dorvex_isolation {
  DORVEX_ISOLATION_WORKERS = 0,    ///< a crash or a hang costs one document only
  DORVEX_ISOLATION_IN_PROCESS = 1  ///< in this process: memory stays behind, nothing limits it
} dorvex_isolation;

/// How worker processes are confined.
typedef enum dorvex_sandbox {
  DORVEX_SANDBOX_OFF = 0,             ///< not at all
  DORVEX_SANDBOX_WHERE_POSSIBLE = 1,  ///< by what the kernel has
  DORVEX_SANDBOX_REQUIRED = 2         ///< nothing is read where something is lacking
} dorvex_sandbox;

/// What a host works with. Fill it with dorvex_options_init and change what you
/// want. A limit of zero is none.
typedef struct dorvex_options {
  size_t struct_size;             ///< sizeof(dorvex_options), as the caller knows it
  const char* module;             ///< the reader module's file; null for the one that is
                                  ///< installed with this library, unless that was loaded by a
                                  ///< relative path
  uint32_t isolation;             ///< a dorvex_isolation
  uint32_t sandbox;               ///< a dorvex_sandbox
  uint32_t documents_per_worker;  ///< that a worker reads before it is replaced, at least 1
  uint32_t buffer_size;           ///< declared to the reader, 51 to 16777216 bytes; it decides
                                  ///< how much dorvex_next_tokens gives at a time
  uint64_t scratch_memory;        ///< bytes of an unpacked member that are kept in memory

  uint64_t wall_time_ms;       ///< milliseconds that the host waits for the reader
  uint64_t processor_time_ms;  ///< milliseconds, rounded up to seconds
  uint64_t memory;             ///< bytes of address space, beyond what a worker begins with
  uint64_t scratch;            ///< bytes of scratch streams that are open at a time
  uint64_t output;             ///< bytes of the token stream
  uint64_t member_bytes;       ///< bytes of one member, unpacked
  uint64_t total_bytes;        ///< bytes of all members together, unpacked
  uint32_t members;            ///< members of one container
  uint32_t depth;              ///< containers that lie within each other
  uint32_t expansion;          ///< bytes of a member, unpacked, for each packed byte
  uint32_t wait_ms;            ///< milliseconds that a function waits for the reader before it
                               ///< returns DORVEX_AGAIN, which it then does at a signal, too;
                               ///< 0 for as long as it takes, whatever signals come in
  uint64_t input;              ///< bytes of a document that has to be copied before it can be
                               ///< read: what a callback, a pipe or a device gives
} dorvex_options;

/// What became of a document.
typedef struct dorvex_result {
  size_t struct_size;     ///< sizeof(dorvex_result), set by the caller
  int32_t status;         ///< a dorvex_status
  int32_t failure;        ///< a dorvex_failure
  int32_t limit;          ///< a dorvex_limit
  int32_t module_result;  ///< what the module returned last: 0, 2, 4 or 6; -1 for nothing
  int32_t signal;         ///< that ended the worker process, or 0
  int32_t kind;           ///< a dorvex_kind
  const char* message;    ///< one sentence for people, empty for ok; valid until the
                          ///< document is freed
  uint64_t token_bytes;   ///< length of the token stream
  size_t skipped;         ///< members that did not reach the text: see dorvex_skipped_member
  uint64_t input_bytes;   ///< size of the file, or of all files of a package directory; 0
                          ///< where it cannot be told
} dorvex_result;

/// Opens documents.
typedef struct dorvex_host dorvex_host;
/// One document being read.
typedef struct dorvex_document dorvex_document;

/// Gives up to count bytes into buffer and returns their number, 0 at the end, or
/// a negative number for a failure. user is what was given along.
typedef ptrdiff_t (*dorvex_read_function)(void* user, void* buffer, size_t count);

/// @name The library itself
/// @{

/// The version of the library that is loaded.
/// @return Such as "0.1.0"; valid for ever.
DORVEX_C_API const char* dorvex_version(void);

/// The DORVEX_ABI_VERSION of the library that is loaded.
/// @return The number.
DORVEX_C_API uint32_t dorvex_abi_version(void);

/// What failed last in this thread.
/// @return A sentence, or an empty text; valid until the thread's next failure.
DORVEX_C_API const char* dorvex_last_error(void);

/// The short name of a failure, such as "damaged".
/// @param failure A dorvex_failure.
/// @return The name, or "other" for a number that is none; valid for ever.
DORVEX_C_API const char* dorvex_failure_name(int32_t failure);

/// The short name of a limit, such as "wall-time".
/// @param limit A dorvex_limit.
/// @return The name, or "none" for a number that is none; valid for ever.
DORVEX_C_API const char* dorvex_limit_name(int32_t limit);

/// @}

/// @name Hosts
/// @{

/// Fills options with their defaults.
/// @param options The record.
/// @param struct_size sizeof(dorvex_options).
/// @return DORVEX_OK, or DORVEX_INVALID_ARGUMENT for a size that is smaller than
///     the first version of the record.
DORVEX_C_API int dorvex_options_init(dorvex_options* options, size_t struct_size);

/// Makes a host. With workers it starts a process: in a program with threads,
/// make the host before the threads.
/// @param options Copied; null for the defaults.
/// @param[out] host The new host, to be freed with dorvex_host_free.
/// @return DORVEX_OK; DORVEX_INVALID_ARGUMENT for a value out of range, or for an
///     option that this version of the library does not know; DORVEX_OUT_OF_MEMORY;
///     DORVEX_INTERNAL. A module that cannot be loaded is no failure of this
///     function, but of each document.
DORVEX_C_API int dorvex_host_new(const dorvex_options* options, dorvex_host** host);

/// Frees a host. Its documents can still be read.
/// @param host The host, or null.
DORVEX_C_API void dorvex_host_free(dorvex_host* host);

/// @}

/// @name Opening documents
/// Each gives a new document, to be freed with dorvex_document_free.
/// @{

/// Opens a file or a package directory.
/// @param host The host.
/// @param path Its path.
/// @param[out] document The document.
/// @return DORVEX_OK, DORVEX_INVALID_ARGUMENT, DORVEX_OUT_OF_MEMORY or DORVEX_INTERNAL.
DORVEX_C_API int dorvex_open_path(dorvex_host* host, const char* path, dorvex_document** document);

/// Opens bytes in memory. They are not copied: they must stay as they are until
/// the document is freed.
/// @param host The host.
/// @param bytes The bytes; may be null if length is 0.
/// @param length Their number.
/// @param[out] document The document.
/// @return As dorvex_open_path.
DORVEX_C_API int dorvex_open_memory(dorvex_host* host, const void* bytes, size_t length,
                                    dorvex_document** document);

/// Opens what a callback gives, which is read to its end before this returns.
/// @param host The host.
/// @param read The callback; it is called in this thread only.
/// @param user Given to the callback; may be null.
/// @param[out] document The document.
/// @return As dorvex_open_path; DORVEX_READ_FAILED when the callback returned a
///     negative number, or more than it was asked for.
DORVEX_C_API int dorvex_open_callback(dorvex_host* host, dorvex_read_function read, void* user,
                                      dorvex_document** document);

/// @}

/// @name Reading documents
/// @{

/// Gives the next text.
/// @param document The document.
/// @param[out] text The text as the document stores it, which may hold NUL and
///     need not be valid UTF-8; a NUL follows it. Valid until the next call for
///     this document.
/// @param[out] length Its length in bytes, without that NUL.
/// @return DORVEX_OK; DORVEX_END at the end, for whatever reason (see
///     dorvex_document_result); DORVEX_AGAIN; DORVEX_INVALID_ARGUMENT,
///     DORVEX_OUT_OF_MEMORY or DORVEX_INTERNAL.
DORVEX_C_API int dorvex_next_text(dorvex_document* document, const char** text, size_t* length);

/// Gives the next buffer of whole tokens, which is never empty. Not to be mixed
/// with dorvex_next_text.
/// @param document The document.
/// @param[out] tokens The bytes of the token stream that come next. Valid until
///     the next call for this document.
/// @param[out] length Their number.
/// @return As dorvex_next_text.
DORVEX_C_API int dorvex_next_tokens(dorvex_document* document, const unsigned char** tokens,
                                    size_t* length);

/// Tells what became of the document. Reads what has not been asked for yet.
/// @param document The document.
/// @param[in,out] result The record; its struct_size is set by the caller, and no
///     more than that is written.
/// @return DORVEX_OK, DORVEX_AGAIN, DORVEX_INVALID_ARGUMENT, DORVEX_OUT_OF_MEMORY or
///     DORVEX_INTERNAL.
DORVEX_C_API int dorvex_document_result(dorvex_document* document, dorvex_result* result);

/// Names a member of the package that did not reach the text, or not whole.
/// @param document A document of which dorvex_document_result has been asked.
/// @param index From 0 to below dorvex_result::skipped.
/// @param[out] name Its path in the package; empty where that is not known.
/// @param[out] reason A phrase for people. Both are valid until the document is
///     freed.
/// @return DORVEX_OK, or DORVEX_INVALID_ARGUMENT for any other index.
DORVEX_C_API int dorvex_skipped_member(dorvex_document* document, size_t index, const char** name,
                                       const char** reason);

/// Frees a document. One that has not been read to its end is given up.
/// @param document The document, or null.
DORVEX_C_API void dorvex_document_free(dorvex_document* document);

/// @}

#ifdef __cplusplus
}
#endif
// NOLINTEND(modernize-deprecated-headers,modernize-use-using)

#endif
