#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

Variant Choose(bool bvCondition, Variant vvTrue, Variant vvFalse);

// "1" or "0", the form of a boolean in the XML attributes.
std::string BooleanDigit(bool bvValue);

// At least two digits: 3 is "03", -3 is "-03", 2005 is "2005".
std::string TwoDigits(std::int32_t lvNumber);

// True for 1 to 12.
bool IsValidMonth(std::int32_t lvMonth);

// "7/4/2003": month, day, year, no leading zeros, in every locale.
std::string ShortDate(const Date& datvDate);

// The same; empty for the zero date, which stands for none.
std::string ShortDateOrEmpty(const Date& datvDate);

// The time-zone bias twice, both in minutes: "300:300", "-60:60", "00:00". The form is shared with the
// consumers of the order document, odd as it is.
std::string TimeZoneSuffix();

// "2003-7-4T3:04:05 PM300:300": the day and time of now with TimeZoneSuffix.
std::string XMLTimestamp();

}  // namespace qm_ordering
