#include "tests/support/FixedClock.h"

// The clock of the program in C stands still, as that of the tests does: documents and rows hold the time.
namespace {
const test::FixedClock g_oClock;
}
