#include "support/guarded_buffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>

namespace dorvex::testing {

GuardedBuffer::GuardedBuffer(std::size_t size) : size_(size) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t usable = std::max((size + page - 1) / page * page, page);
  mapped_ = usable + page;
  pages_ = mmap(nullptr, mapped_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages_ == MAP_FAILED) throw std::bad_alloc();
  auto* guard = static_cast<unsigned char*>(pages_) + usable;
  mprotect(guard, page, PROT_NONE);
  data_ = guard - size;
  std::memset(data_, 0xA5, size);
}

GuardedBuffer::GuardedBuffer(std::string_view contents) : GuardedBuffer(contents.size()) {
  std::ranges::copy(contents, data_);
}

GuardedBuffer::~GuardedBuffer() { munmap(pages_, mapped_); }

}  // namespace dorvex::testing
