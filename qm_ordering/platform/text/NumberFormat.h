#pragma once

#include <string>

#include "qm_ordering/platform/value/Currency.h"

namespace qm_ordering::text {

// What stands between the digits of a number.
struct NumberSigns {
  std::string Point = ".";
  std::string Separator = ",";
  // The sizes of the groups from the point leftwards, one byte each, in the form of the C library: the last
  // one repeats, CHAR_MAX or -1 ends the grouping.
  std::string Grouping = "\3";
};

// The number format of the user's locale (LC_ALL, LC_NUMERIC, LANG of the environment; the process's own
// locale is neither read nor changed) at the moment when this is made. Without a locale, with one that is not
// installed, and with C, POSIX and C.UTF-8, "," groups by three and "." is the point.
class AmountFormat {
 public:
  AmountFormat();

  // The amount with exactly two decimals, rounded half away from zero from the exact value, grouped and
  // pointed by the format. An amount that rounds to zero has no sign: -0.004 is "0.00". UTF-8.
  std::string Text(Currency cvAmount) const;

 private:
  NumberSigns m_oSigns;
};

}  // namespace qm_ordering::text
