#pragma once

#include <cstdint>
#include <functional>

namespace test {

// How long this program's waiting for locks asks to sleep: the engine on the store, the library on the
// settings file. In microseconds. What else of the program calls usleep counts too.
class EngineSleep {
 public:
  // Since the last Begin.
  static std::int64_t Asked();
  // Counts from 0 again.
  static void Begin();

  // The longest of the engine's waits for one lock, and how many of them were longer than a second.
  static std::int64_t Longest();
  static int OverASecond();

  // Called with Asked in place of each sleep, when it is set.
  static std::function<void(std::int64_t)> Instead;
};

}  // namespace test
