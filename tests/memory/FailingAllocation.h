#pragma once

#include <cstdint>

namespace test {

enum class Extent { Once, FromThenOn };

// While it lives, this thread's allocations are counted as one sequence, whether they are made by operator
// new, by the library's malloc, by the engine of the store or by the XML parser, and the one at that position
// (from 1) fails: alone, or with all that follow it.
class FailingAllocation {
 public:
  FailingAllocation(std::int64_t lvPosition, Extent extent) noexcept;
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  // Whether the sequence has reached the position.
  bool HasFailed() const noexcept;
};

}  // namespace test
