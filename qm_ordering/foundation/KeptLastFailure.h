#pragma once

#include <optional>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

// What LastFailure told when it was made, to be put back once a failure since then was made good: hosts take
// what LastFailure tells for something that went wrong.
class KeptLastFailure {
 public:
  KeptLastFailure();
  void PutBack() const noexcept;

 private:
  std::optional<Failure> m_oCaught;
  const char* m_zOperation = "";
};

}  // namespace qm_ordering
