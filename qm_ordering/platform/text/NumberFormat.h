#pragma once

#include <string>

#include "qm_ordering/platform/value/Currency.h"

namespace qm_ordering::text {

// The amount with exactly two decimals, rounded half away from zero from the exact value, grouped and pointed
// as the user's locale says (LC_ALL, LC_NUMERIC, LANG of the environment; the process's own locale is neither
// read nor changed). Without a locale, with one that is not installed, and with C, POSIX and C.UTF-8, ","
// groups by three and "." is the point. An amount that rounds to zero has no sign: -0.004 is "0.00". UTF-8.
std::string FormatAmount(Currency cvAmount);

}  // namespace qm_ordering::text
