#pragma once

#include <new>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

// The failure of exhausted memory: kOutOfMemory, "Out of memory", which a string holds in itself. Nothing of
// it is allocated any more.
const Failure& OutOfMemory() noexcept;

// Does the work of a public member and answers what it answers. Exhausted memory leaves it as OutOfMemory(),
// so that a host has one exception type to catch.
template <typename Work>
auto OrOutOfMemory(Work work) -> decltype(work()) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    throw OutOfMemory();
  }
}

}  // namespace qm_ordering
