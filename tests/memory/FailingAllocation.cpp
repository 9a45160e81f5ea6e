#include "tests/memory/FailingAllocation.h"

#include <sqlite3.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <pugixml.hpp>

namespace {

struct Sequence {
  bool IsCounted = false;
  bool GoesOn = false;
  std::int64_t Position = 0;
  std::int64_t Count = 0;
};

constinit thread_local Sequence t_sequence;

bool FailsNow() noexcept {
  if (!t_sequence.IsCounted) {
    return false;
  }
  ++t_sequence.Count;
  return t_sequence.Count == t_sequence.Position ||
         (t_sequence.GoesOn && t_sequence.Count > t_sequence.Position);
}

}  // namespace

// What the library's own objects call as malloc is the first of these (an option of the linker); the second
// one is malloc itself.
extern "C" void* __wrap_malloc(std::size_t lvSize) noexcept;
extern "C" void* __real_malloc(std::size_t lvSize) noexcept;
extern "C" void* __wrap_malloc(std::size_t lvSize) noexcept {
  return FailsNow() ? nullptr : __real_malloc(lvSize);
}

namespace {

void* Allocate(std::size_t lvSize) noexcept {
  return FailsNow() ? nullptr : __real_malloc(lvSize == 0 ? 1 : lvSize);
}

void* AllocateOrThrow(std::size_t lvSize) {
  if (void* pMemory = Allocate(lvSize)) {
    return pMemory;
  }
  throw std::bad_alloc();
}

// The engine's own way of allocating.
sqlite3_mem_methods g_oEngine;

void* AllocateForEngine(int lvSize) {
  return FailsNow() ? nullptr : g_oEngine.xMalloc(lvSize);
}

void* ReallocateForEngine(void* pMemory, int lvSize) {
  return FailsNow() ? nullptr : g_oEngine.xRealloc(pMemory, lvSize);
}

// The engine takes another way of allocating only before its first use.
bool Install() {
  if (sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_oEngine) != SQLITE_OK) {
    std::abort();
  }
  sqlite3_mem_methods methods = g_oEngine;
  methods.xMalloc = AllocateForEngine;
  methods.xRealloc = ReallocateForEngine;
  if (sqlite3_config(SQLITE_CONFIG_MALLOC, &methods) != SQLITE_OK) {
    std::abort();
  }
  pugi::set_memory_management_functions(Allocate, std::free);
  return true;
}

const bool g_bInstalled = Install();

}  // namespace

// The whole program's; every form is here, so that the sanitizer sees malloc and free in pairs.
void* operator new(std::size_t lvSize) {
  return AllocateOrThrow(lvSize);
}
void* operator new[](std::size_t lvSize) {
  return AllocateOrThrow(lvSize);
}
void* operator new(std::size_t lvSize, const std::nothrow_t&) noexcept {
  return Allocate(lvSize);
}
void* operator new[](std::size_t lvSize, const std::nothrow_t&) noexcept {
  return Allocate(lvSize);
}
void operator delete(void* pMemory) noexcept {
  std::free(pMemory);
}
void operator delete[](void* pMemory) noexcept {
  std::free(pMemory);
}
void operator delete(void* pMemory, std::size_t) noexcept {
  std::free(pMemory);
}
void operator delete[](void* pMemory, std::size_t) noexcept {
  std::free(pMemory);
}

namespace test {

FailingAllocation::FailingAllocation(std::int64_t lvPosition, Extent extent) noexcept {
  t_sequence = {g_bInstalled, extent == Extent::FromThenOn, lvPosition, 0};
}

FailingAllocation::~FailingAllocation() {
  t_sequence.IsCounted = false;
}

bool FailingAllocation::HasFailed() const noexcept {
  return t_sequence.Count >= t_sequence.Position;
}

}  // namespace test
