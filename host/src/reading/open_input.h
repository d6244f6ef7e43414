// An Input once it is open.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "bytes/byte_store.h"
#include "dorvex/input.h"
#include "dorvex/result.h"
#include "reading/time_budget.h"

namespace dorvex {

// For bytes that have to be copied before they can be read.
struct CopyLimits {
  std::size_t memory;  // bytes that are kept in memory; more go to a file
  std::uint64_t most;  // bytes in all; zero for no limit
};

// Either a store that holds a file's bytes, or a directory, or something that has
// to be read to its end before it is such a store.
class OpenInput {
 public:
  // Opens input, and copies a stream or what a callback gives. When the operating
  // system refuses, or the limit is passed, the object is empty and failure tells
  // why.
  static OpenInput open(const Input& input, CopyLimits limits, Result& failure);

  // A file or directory that is open already.
  static OpenInput fromDescriptor(UniqueFd fd, bool isDirectory);
  static OpenInput fromStore(std::unique_ptr<ByteStore> store);
  // Bytes that must outlive the object.
  static OpenInput fromMemory(std::span<const unsigned char> bytes);

  explicit operator bool() const { return store_ || directory_; }

  // Whether a pipe or a device has to be read first.
  bool isUnread() const { return static_cast<bool>(unread_); }
  // Reads it to its end, within the budget, which must be running. False when that
  // cannot be done, and failure tells why. What TimeBudget::waitFor throws loses
  // nothing: called again, it goes on.
  bool readToEnd(const TimeBudget& budget, Result& failure);

  // Null for a directory.
  std::unique_ptr<ByteStore> takeStore() { return std::move(store_); }
  // An open descriptor, or none for a file.
  const UniqueFd& directory() const { return directory_; }
  // A descriptor of the file or directory, to be handed to another process.
  // Bytes in memory are copied to a file for that. Empty, and errno, on failure.
  UniqueFd takeDescriptor();
  // Bytes of the file; 0 for a directory.
  std::uint64_t size() const { return store_ ? store_->size() : 0; }

 private:
  void openPath(const std::filesystem::path& path, CopyLimits limits);
  void openDescriptor(int fd, CopyLimits limits);
  void hold(UniqueFd file, bool inPlace, CopyLimits limits);
  void copy(const Input::ReadFunction& read, CopyLimits limits);
  void append(std::span<const unsigned char> bytes);

  std::unique_ptr<ByteStore> store_;
  UniqueFd directory_;
  UniqueFd unread_;         // goes into the store
  std::uint64_t most_ = 0;  // that may go there
};

}  // namespace dorvex
