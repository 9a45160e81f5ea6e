#include "tests/foundation/ExhaustedMemory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constinit thread_local bool t_bExhausted = false;

void* Allocate(std::size_t lvSize) noexcept {
  return t_bExhausted ? nullptr : std::malloc(lvSize == 0 ? 1 : lvSize);
}

}  // namespace

// The whole program's; every form that shares its operator delete is here, so that the sanitizer sees malloc
// and free in pairs.
void* operator new(std::size_t lvSize) {
  if (void* pMemory = Allocate(lvSize)) {
    return pMemory;
  }
  throw std::bad_alloc();
}
void* operator new(std::size_t lvSize, const std::nothrow_t&) noexcept {
  return Allocate(lvSize);
}
void operator delete(void* pMemory) noexcept {
  std::free(pMemory);
}
void operator delete(void* pMemory, std::size_t) noexcept {
  std::free(pMemory);
}

namespace test {

ExhaustedMemory::ExhaustedMemory() {
  t_bExhausted = true;
}

ExhaustedMemory::~ExhaustedMemory() {
  t_bExhausted = false;
}

}  // namespace test
