// Where the bytes of a stream are kept: memory of the caller, a file, or a
// scratch area that grows from memory into an unnamed temporary file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "bytes/unique_fd.h"

namespace dorvex {

// Positions and sizes are in bytes. Failures leave errno.
class ByteStore {
 public:
  virtual ~ByteStore() = default;

  virtual std::uint64_t size() const = 0;
  // Reads up to count bytes from offset: the number read, 0 behind the end,
  // -1 on failure. Less than asked for means that the end was reached.
  virtual std::int64_t readAt(std::uint64_t offset, void* buffer, std::size_t count) = 0;
  // Adds count bytes at the end. False on failure, and for a read-only store.
  virtual bool append(const void* data, std::size_t count);
  // The contents where they lie in one piece in memory, otherwise empty. Valid
  // until the next append.
  virtual std::span<const unsigned char> inMemory() const { return {}; }
  // The file that holds the contents and nothing else, or -1. Stays the store's.
  virtual int file() const { return -1; }
};

// Bytes that stay the caller's and must outlive the store.
std::unique_ptr<ByteStore> makeMemoryStore(std::span<const unsigned char> bytes);

// Another store, which must outlive this one.
std::unique_ptr<ByteStore> makeBorrowedStore(ByteStore& store);

// A regular file, at the size that it has now. Null when that cannot be told.
std::unique_ptr<ByteStore> makeFileStore(UniqueFd file);

// An empty file for reading and writing; an empty descriptor and errno on
// failure.
using OpenScratchFile = std::function<UniqueFd()>;

// A temporary file without a name, in $TMPDIR or /tmp.
UniqueFd openUnnamedFile();

// Empty, for appending. Up to memoryLimit bytes stay in memory; beyond that
// everything moves to a file that openFile gives.
std::unique_ptr<ByteStore> makeScratchStore(std::size_t memoryLimit,
                                            OpenScratchFile openFile = openUnnamedFile);

}  // namespace dorvex
