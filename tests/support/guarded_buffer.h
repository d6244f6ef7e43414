// Memory that ends at a page which nobody may touch.
#pragma once

#include <cstddef>
#include <string_view>

namespace dorvex::testing {

// A buffer of exactly size bytes: one byte more, read or written, ends the
// process. Filled with 0xA5.
class GuardedBuffer {
 public:
  explicit GuardedBuffer(std::size_t size);
  explicit GuardedBuffer(std::string_view contents);
  GuardedBuffer(const GuardedBuffer&) = delete;
  GuardedBuffer& operator=(const GuardedBuffer&) = delete;
  ~GuardedBuffer();

  unsigned char* data() { return data_; }
  const char* chars() const { return reinterpret_cast<const char*>(data_); }
  std::size_t size() const { return size_; }
  std::string_view view() const { return {chars(), size_}; }

 private:
  void* pages_;
  std::size_t mapped_;
  unsigned char* data_;
  std::size_t size_;
};

}  // namespace dorvex::testing
