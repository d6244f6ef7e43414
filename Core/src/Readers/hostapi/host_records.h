/// @file
/// The boundary between a document filtering host and its reader modules.
///
/// Host, readers and container modules all compile this one header; every
/// offset below is held by a static_assert, so that drift cannot hide.
///
/// Rules of the boundary:
///
///  1. The records are a wire format on 64-bit systems. A module touches only
///     the slots that have a name here; the reserved bytes belong to the host.
///  2. Every function slot takes the address of its own record first (for Alloc
///     and Free: the address of the allocator sub-record).
///  3. The host owns its service table, the document's I/O object and the output
///     buffer. Objects that a module gets from OpenFile are closed by it through
///     their Close slot, which also disposes of them.
///  4. The service table and the document's I/O object stay valid from the call
///     that hands them over until the context is freed.
///  5. A slot may be null unless its comment says that it must be set.
///  6. Failures are results, as each slot says. Modules report through return
///     values only.
///  7. A record is used by one thread at a time. Two documents may be pumped by
///     two threads at once if the host's slots allow it.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

struct tag_TPVAPIServices;
struct _VPTPIOobj;

/// The host's numbering of character sets. The values without a name are the
/// host's own and never reach a reader.
enum tagVNCharSet : std::int32_t {
  VN_CHARSET_UTF16 = 51,  ///< UTF-16
  VN_CHARSET_UTF8 = 53,   ///< the set of all text tokens
};

/// Input or output of ConvertText.
struct VNTextDescriptor {
  unsigned char* data;  ///< the text
  std::int32_t length;  ///< bytes
};
static_assert(offsetof(VNTextDescriptor, data) == 0);
static_assert(offsetof(VNTextDescriptor, length) == 8);

/// The document descriptor given to dorvexInitDoc. No field of it is ever read;
/// the pointer may be null.
struct adDocDesc;

/// The host's allocator, embedded in the service table. The first word is
/// opaque: modules only pass the sub-record's address along.
struct VNAllocator {
  void* opaque;  ///< The host's.
  /// Memory for any record, not zeroed; null when there is none. size in bytes.
  void* (*Alloc)(VNAllocator* allocator, std::size_t size);
  /// Takes back what Alloc gave, also in a later call of the module.
  void (*Free)(VNAllocator* allocator, void* pointer);
};
static_assert(sizeof(VNAllocator) == 24);

/// The host's service table.
struct tag_TPVAPIServices {
  unsigned char reserved000[0x18];  ///< The host's.

  /// Loads a module by file name and stores its handle. Non-zero means loaded.
  int (*LoadDll)(tag_TPVAPIServices* services, const char* name, void** handle);
  /// The address of a symbol of a loaded module, or null.
  void* (*GetDllSymbol)(tag_TPVAPIServices* services, void* handle, const char* symbol);
  /// Releases a module.
  void (*FreeDll)(tag_TPVAPIServices* services, void* handle);

  unsigned char reserved030[0xC8 - 0x30];  ///< The host's.

  /// Opens a stream. path with mode "rb": an existing file. Null path with mode
  /// "a+": an empty scratch stream that can be written, then read back from its
  /// beginning after Open. Null on failure. The caller closes the object.
  _VPTPIOobj* (*OpenFile)(tag_TPVAPIServices* services, const char* path, const char* mode);

  unsigned char reserved0d0[0x148 - 0xD0];  ///< The host's.

  /// Memory for contexts and overflow buffers.
  VNAllocator allocator;

  unsigned char reserved160[0x320 - 0x160];  ///< The host's.

  /// Converts text to targetCharSet. With a null pointer in output it reports
  /// the needed size in output->length; with a buffer there it converts and
  /// leaves the length of the result. substitute stands for what cannot be
  /// converted.
  void (*ConvertText)(tag_TPVAPIServices* services, tagVNCharSet from, VNTextDescriptor* input,
                      VNTextDescriptor* output, int substitute);

  unsigned char reserved328[0x378 - 0x328];  ///< The host's.

  /// A tagVNCharSet: what ConvertText converts to.
  std::int32_t targetCharSet;

  unsigned char reserved37c[0x8A0 - 0x37C];  ///< The host's.

  /// Written by a reader when a context cannot be allocated (2, out of memory).
  std::int32_t lastError;
};
static_assert(offsetof(tag_TPVAPIServices, LoadDll) == 0x18);
static_assert(offsetof(tag_TPVAPIServices, GetDllSymbol) == 0x20);
static_assert(offsetof(tag_TPVAPIServices, FreeDll) == 0x28);
static_assert(offsetof(tag_TPVAPIServices, OpenFile) == 0xC8);
static_assert(offsetof(tag_TPVAPIServices, allocator) == 0x148);
static_assert(offsetof(tag_TPVAPIServices, allocator) + offsetof(VNAllocator, Alloc) == 0x150);
static_assert(offsetof(tag_TPVAPIServices, allocator) + offsetof(VNAllocator, Free) == 0x158);
static_assert(offsetof(tag_TPVAPIServices, ConvertText) == 0x320);
static_assert(offsetof(tag_TPVAPIServices, targetCharSet) == 0x378);
static_assert(offsetof(tag_TPVAPIServices, lastError) == 0x8A0);

/// Origins of a Seek.
enum VNSeekOrigin : int {
  VN_SEEK_START = 0,  ///< the beginning
  VN_SEEK_END = 2,    ///< the end
};

/// One open stream. The reader tests every slot but Read before it calls it.
struct _VPTPIOobj {
  unsigned char reserved00[0x20];  ///< The host's.

  /// NUL-terminated path of the stream, or null when it has none.
  const char* pathName;

  unsigned char reserved28[0x38 - 0x28];  ///< The host's.

  /// Makes the stream ready, at its beginning; called once, before the first
  /// seek or read. Non-zero means ready.
  int (*Open)(_VPTPIOobj* io);
  /// Reads up to count bytes; returns the number read, 0 at the end. A short
  /// read is no end. Must be set.
  int (*Read)(_VPTPIOobj* io, void* buffer, std::uint32_t count);
  /// Appends count bytes; returns the number written. This slot is between the
  /// replacement host and its container module: the reader never touches it.
  int (*Write)(_VPTPIOobj* io, const void* buffer, std::uint32_t count);
  /// Moves the position. The reader seeks only to offset 0.
  int (*Seek)(_VPTPIOobj* io, std::int64_t offset, int whence);
  /// The position in bytes from the start.
  std::int64_t (*Tell)(_VPTPIOobj* io);

  unsigned char reserved60[0x70 - 0x60];  ///< The host's.

  /// Closes and disposes of an object that OpenFile returned.
  int (*Close)(_VPTPIOobj* io);
};
static_assert(offsetof(_VPTPIOobj, pathName) == 0x20);
static_assert(offsetof(_VPTPIOobj, Open) == 0x38);
static_assert(offsetof(_VPTPIOobj, Read) == 0x40);
static_assert(offsetof(_VPTPIOobj, Write) == 0x48);
static_assert(offsetof(_VPTPIOobj, Seek) == 0x50);
static_assert(offsetof(_VPTPIOobj, Tell) == 0x58);
static_assert(offsetof(_VPTPIOobj, Close) == 0x70);

}  // extern "C"
