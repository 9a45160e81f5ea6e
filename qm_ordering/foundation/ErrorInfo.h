#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// The error record that a class exposes through its member Error. Number 0 means no error.
struct QM_ORDERING_API ErrorInfo {
  std::int32_t Number = 0;  // see the table in the README; 0: no error
  std::string Description;  // what happened; empty when there is no error

  // Same number and same description.
  bool operator==(const ErrorInfo&) const = default;
};

}  // namespace qm_ordering
