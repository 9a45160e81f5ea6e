#include <gtest/gtest.h>
#include <stdlib.h>

#include <clocale>
#include <cstdio>
#include <string_view>

// The C library does not free the search path that it makes of LOCPATH. The leak checker asks for this by
// name.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:argz_add_sep\n";
}

// Time zone, locale and settings of the tests, the same wherever they run. In the German lane they are
// others, and the process takes the locale as its own, as a host with a window does: what the tests of that
// lane expect must not change.
int main(int argc, char** argv) {
  const char* zLane = getenv("QM_ORDERING_TEST_LANE");
  const bool bGerman = zLane != nullptr && std::string_view(zLane) == "german";
  setenv("TZ", bGerman ? "Europe/Berlin" : "America/New_York", 1);
  setenv("LC_ALL", bGerman ? "de_DE.UTF-8" : "C", 1);
  setenv("XDG_CONFIG_HOME", "/nonexistent/config", 1);
  unsetenv("QK_COMMON_SETTINGS");
  if (bGerman) {
    setenv("LOCPATH", QM_ORDERING_LOCALES, 1);
    if (std::setlocale(LC_ALL, "") == nullptr) {
      std::puts("The German locale of the lane is missing.");
      return 2;
    }
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
