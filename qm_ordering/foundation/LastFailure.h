#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// Several members swallow a failure, or turn it into an error record, by contract. This tells the last one
// that this thread's library caught, so that a host can say what went wrong.
struct QM_ORDERING_API LastFailureInfo {
  std::int32_t Number = 0;  // the failure's own number (Failure.h); 0: none since the start or the last clear
  std::string Description;  // what failed, on which file, why, and what to do about it
  std::string Operation;    // the member that caught it: "Database.OrderDetails_AddItem"
};

// The last failure that was caught on this thread since its start or the last clear. A copy: it
// stays as it is.
QM_ORDERING_API LastFailureInfo LastFailure();
// Forgets it, so that a host can tell what the calls that follow swallow.
QM_ORDERING_API void ClearLastFailure() noexcept;

}  // namespace qm_ordering
