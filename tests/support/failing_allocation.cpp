#include "support/failing_allocation.h"

#include <cstdlib>
#include <utility>

#include "support/host_code.h"

namespace {

constexpr long kNever = -1;
thread_local long untilFailure = kNever;
thread_local std::function<void()>* onFailure = nullptr;

void failNow() {
  untilFailure = kNever;
  {
    const dorvex::testing::HostCode own;
    (*onFailure)();
  }
  throw std::bad_alloc();
}

void* allocate(std::size_t size) {
  if (untilFailure != kNever && !dorvex::testing::HostCode::isRunning() && untilFailure-- == 0)
    failNow();
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

// The module finds these before any others, as does everything in the process.
void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
// Not counted: who asks so has another way, and the outcome is the same.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace dorvex::testing {

FailingAllocation::FailingAllocation(long index, std::function<void()> hook) {
  onFailure = new std::function<void()>(std::move(hook));
  untilFailure = index;
}

FailingAllocation::~FailingAllocation() {
  untilFailure = kNever;
  delete std::exchange(onFailure, nullptr);
}

}  // namespace dorvex::testing
