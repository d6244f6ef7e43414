// An Input once it is open.
#pragma once

#include <memory>
#include <optional>
#include <span>

#include "bytes/byte_store.h"
#include "dorvex/input.h"
#include "dorvex/result.h"

namespace dorvex {

// Either a store that holds a file's bytes, or a directory.
class OpenInput {
 public:
  // Opens input. When the operating system refuses, the object is empty and
  // failure tells why.
  static OpenInput open(const Input& input, std::size_t scratchMemory, Result& failure);

  // A file or directory that is open already.
  static OpenInput fromDescriptor(UniqueFd fd, bool isDirectory);
  static OpenInput fromStore(std::unique_ptr<ByteStore> store);
  // Bytes that must outlive the object.
  static OpenInput fromMemory(std::span<const unsigned char> bytes);

  explicit operator bool() const { return store_ || directory_; }
  // Null for a directory.
  std::unique_ptr<ByteStore> takeStore() { return std::move(store_); }
  // An open descriptor, or none for a file.
  const UniqueFd& directory() const { return directory_; }
  // A descriptor of the file or directory, to be handed to another process.
  // Bytes in memory are copied to a file for that. Empty, and errno, on failure.
  UniqueFd takeDescriptor();

 private:
  void openPath(const std::filesystem::path& path, std::size_t scratchMemory);
  void keep(const Input::ReadFunction& read, std::size_t scratchMemory);

  std::unique_ptr<ByteStore> store_;
  UniqueFd directory_;
};

}  // namespace dorvex
