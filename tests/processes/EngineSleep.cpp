#include "tests/processes/EngineSleep.h"

#include <unistd.h>

#include <algorithm>

#include "tests/processes/Sleep.h"

namespace test {

namespace {

std::int64_t g_lAsked = 0;
std::int64_t g_lWait = 0;
std::int64_t g_lLongest = 0;
int g_lOverASecond = 0;

constexpr std::int64_t kSecond = 1'000'000;
// The engine's first sleep in a wait, and no other, is of this length.
constexpr useconds_t kFirst = 1000;

void Count(useconds_t lvMicroseconds) {
  g_lAsked += lvMicroseconds;
  const std::int64_t lBefore = lvMicroseconds == kFirst ? 0 : g_lWait;
  g_lWait = lBefore + lvMicroseconds;
  g_lLongest = std::max(g_lLongest, g_lWait);
  g_lOverASecond += lBefore <= kSecond && g_lWait > kSecond;
}

}  // namespace

std::function<void(std::int64_t)> EngineSleep::Instead;

std::int64_t EngineSleep::Asked() {
  return g_lAsked;
}

std::int64_t EngineSleep::Longest() {
  return g_lLongest;
}

int EngineSleep::OverASecond() {
  return g_lOverASecond;
}

void EngineSleep::Begin() {
  g_lAsked = 0;
}

}  // namespace test

// In place of the C library's, also for the engine's shared library.
extern "C" __attribute__((visibility("default"))) int usleep(useconds_t lvMicroseconds) {
  test::Count(lvMicroseconds);
  if (test::EngineSleep::Instead) {
    test::EngineSleep::Instead(test::g_lAsked);
  } else {
    test::Sleep(lvMicroseconds);
  }
  return 0;
}
