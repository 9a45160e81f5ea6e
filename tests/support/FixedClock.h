#pragma once

#include "qm_ordering/platform/clock/Clock.h"

namespace test {

// Stands still at a moment until a test moves it; this thread's clock for the length of a scope.
class FixedClock : public qm_ordering::clock::Clock {
 public:
  explicit FixedClock(const qm_ordering::Date& datvNow = qm_ordering::Date(2003, 7, 4, 15, 4, 5),
                      std::int32_t lvBias = 300)
      : Moment(datvNow), Bias(lvBias) {
    qm_ordering::clock::Install(this);
  }
  ~FixedClock() override { qm_ordering::clock::Install(nullptr); }
  FixedClock(const FixedClock&) = delete;
  FixedClock& operator=(const FixedClock&) = delete;

  qm_ordering::Date Now() override { return Moment; }
  std::int32_t TimeZoneBias() override { return Bias; }

  qm_ordering::Date Moment;
  std::int32_t Bias;
};

}  // namespace test
