#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

// Made when the library is loaded, since there is no memory for it when it is needed. Never destroyed:
// threads may outlive main.
const Failure& g_oOutOfMemory = *new Failure(failure::kOutOfMemory, "Out of memory");

}  // namespace

const Failure& OutOfMemory() noexcept {
  return g_oOutOfMemory;
}

}  // namespace qm_ordering
