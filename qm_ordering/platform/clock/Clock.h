#pragma once

#include <cstdint>

#include "qm_ordering/platform/value/Date.h"

namespace qm_ordering::clock {

// The clock of the library; tests put another in its place.
class Clock {
 public:
  virtual ~Clock() = default;
  // Local time.
  virtual Date Now() = 0;
  // Minutes to add to local time to get UTC, positive west of Greenwich, as in force now (daylight saving
  // included).
  virtual std::int32_t TimeZoneBias() = 0;
};

// The thread's clock: the system's unless one was installed.
Clock& Current();

// Installs a clock for this thread; null brings the system's back. The caller owns it.
void Install(Clock* oClock);

}  // namespace qm_ordering::clock
