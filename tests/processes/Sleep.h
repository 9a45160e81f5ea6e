#pragma once

#include <time.h>

namespace test {

// Sleeps for so many microseconds, past every interception of the C library's sleeping.
inline void Sleep(long lvMicroseconds) {
  timespec duration{lvMicroseconds / 1000000, lvMicroseconds % 1000000 * 1000};
  while (clock_nanosleep(CLOCK_MONOTONIC, 0, &duration, &duration) != 0) {
  }
}

}  // namespace test
