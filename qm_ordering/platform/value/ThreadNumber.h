#pragma once

#include <cstdint>

namespace qm_ordering {

// A number of the calling thread's own, from 1, never given twice. In a child of fork the thread that goes on
// is another one.
std::uint64_t ThisThread() noexcept;

// Whether a thread has or had that number, in this process or in one that it was forked from.
bool IsThread(std::uint64_t lvNumber) noexcept;
// Whether it was one of this process.
bool IsThreadOfThisProcess(std::uint64_t lvThread) noexcept;

// Raises kWrongThread unless that is the calling thread's number: an object stays with the thread that made
// it, and a process that was forked does not use its parent's.
void RequireThisThread(std::uint64_t lvThread);

}  // namespace qm_ordering
