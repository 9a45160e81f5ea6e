#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// The error record that a class exposes through its member Error. Number 0 means no error.
struct QM_ORDERING_API ErrorInfo {
  std::int32_t Number = 0;
  std::string Description;

  bool operator==(const ErrorInfo&) const = default;
};

}  // namespace qm_ordering
