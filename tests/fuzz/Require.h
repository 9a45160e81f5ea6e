#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace fuzz {

// Ends the run as a finding that says what does not hold.
inline void Require(bool bvHolds, std::string_view zvWhat) {
  if (!bvHolds) {
    dprintf(STDERR_FILENO, "It does not hold that %.*s.\n", static_cast<int>(zvWhat.size()), zvWhat.data());
    std::abort();
  }
}

}  // namespace fuzz
