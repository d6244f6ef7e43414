#include "failing_allocation.h"

#include <cstdlib>
#include <new>

namespace {

constexpr int kNever = -1;
thread_local int allocationsUntilFailure = kNever;

void* allocate(std::size_t size) {
  if (allocationsUntilFailure != kNever && allocationsUntilFailure-- == 0) throw std::bad_alloc();
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* block) noexcept { std::free(block); }
void operator delete[](void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete[](void* block, std::size_t) noexcept { std::free(block); }

namespace dorvex::testing {

FailingAllocation::FailingAllocation(int index) { allocationsUntilFailure = index; }
FailingAllocation::~FailingAllocation() { allocationsUntilFailure = kNever; }

}  // namespace dorvex::testing
