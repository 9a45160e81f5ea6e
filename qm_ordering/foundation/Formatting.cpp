#include "qm_ordering/foundation/Formatting.h"

#include <utility>

#include "qm_ordering/platform/clock/Clock.h"

namespace qm_ordering {

namespace {

// Zeros in front of the digits up to the width; a minus does not count.
std::string PaddedNumber(std::int64_t lvNumber, std::size_t lvWidth) {
  std::string zDigits = std::to_string(lvNumber < 0 ? -lvNumber : lvNumber);
  if (zDigits.size() < lvWidth) {
    zDigits.insert(0, lvWidth - zDigits.size(), '0');
  }
  return lvNumber < 0 ? "-" + zDigits : zDigits;
}

std::string TimeOfDay(const Date& datvNow) {
  const Date datZero;
  return Date(datZero.Year(), datZero.Month(), datZero.Day(), datvNow.Hour(), datvNow.Minute(),
              datvNow.Second())
      .ToGeneralText();
}

}  // namespace

Variant Choose(bool bvCondition, Variant vvTrue, Variant vvFalse) {
  return bvCondition ? std::move(vvTrue) : std::move(vvFalse);
}

std::string BooleanDigit(bool bvValue) {
  return bvValue ? "1" : "0";
}

std::string TwoDigits(std::int32_t lvNumber) {
  return PaddedNumber(lvNumber, 2);
}

bool IsValidMonth(std::int32_t lvMonth) {
  return lvMonth >= 1 && lvMonth <= 12;
}

std::string ShortDate(const Date& datvDate) {
  return std::to_string(datvDate.Month()) + "/" + std::to_string(datvDate.Day()) + "/" +
         PaddedNumber(datvDate.Year(), 4);
}

std::string ShortDateOrEmpty(const Date& datvDate) {
  return datvDate.IsZero() ? std::string() : ShortDate(datvDate);
}

std::string TimeZoneSuffix() {
  // In 64 bits, where the smallest 32-bit number has a positive counterpart.
  const std::int64_t lBias = clock::Current().TimeZoneBias();
  return PaddedNumber(lBias, 2) + ":" + PaddedNumber(lBias < 0 ? -lBias : lBias, 2);
}

std::string XMLTimestamp() {
  // Each part reads the clock for itself, in this order.
  std::string zTimestamp = PaddedNumber(clock::Current().Now().Year(), 4);
  zTimestamp += "-" + std::to_string(clock::Current().Now().Month());
  zTimestamp += "-" + std::to_string(clock::Current().Now().Day());
  zTimestamp += "T" + TimeOfDay(clock::Current().Now());
  zTimestamp += TimeZoneSuffix();
  return zTimestamp;
}

}  // namespace qm_ordering
