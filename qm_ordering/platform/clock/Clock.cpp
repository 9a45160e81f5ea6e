#include "qm_ordering/platform/clock/Clock.h"

#include <algorithm>
#include <ctime>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::clock {

namespace {

// TZ may have changed since the last call; localtime_r alone need not look at it.
std::tm LocalTime() {
  tzset();
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  if (localtime_r(&now, &local) == nullptr) {
    throw Failure(failure::kInvalidCall, "The system clock stands outside the calendar. Set it right.");
  }
  return local;
}

class SystemClock : public Clock {
 public:
  Date Now() override {
    const std::tm local = LocalTime();
    // A leap second has no place in a Date.
    return Date(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                std::min(local.tm_sec, 59));
  }

  std::int32_t TimeZoneBias() override { return static_cast<std::int32_t>(-LocalTime().tm_gmtoff / 60); }
};

thread_local Clock* t_oInstalled = nullptr;

}  // namespace

Clock& Current() {
  // Never destroyed: threads may outlive main.
  static SystemClock& system = *new SystemClock();
  return t_oInstalled != nullptr ? *t_oInstalled : system;
}

void Install(Clock* oClock) {
  t_oInstalled = oClock;
}

}  // namespace qm_ordering::clock
