#include "qm_ordering/platform/value/Currency.h"

#include <optional>

#include "qm_ordering/platform/value/Decimal.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

constexpr std::uint64_t kUnit = 10'000;

[[noreturn]] void RaiseOverflow() {
  throw Failure(failure::kOverflow,
                "Overflow: the amount is not between -922337203685477.5808 and 922337203685477.5807");
}

}  // namespace

Currency Currency::Parse(std::string_view zvText) {
  const std::optional<Decimal> number = ParseDecimal(zvText, Exponent::Refused);
  if (!number) {
    throw Failure(failure::kTypeMismatch, "Type mismatch: \"" + std::string(zvText) + "\" is not an amount");
  }
  return FromScaled(ScaleHalfToEven(*number, kDecimals));
}

std::string Currency::ToString() const {
  // As unsigned, since the smallest amount has no positive counterpart.
  const bool bNegative = m_lScaled < 0;
  const auto lBits = static_cast<std::uint64_t>(m_lScaled);
  const std::uint64_t lMagnitude = bNegative ? 0 - lBits : lBits;

  std::string zText = bNegative ? "-" : "";
  zText += std::to_string(lMagnitude / kUnit);
  if (lMagnitude % kUnit != 0) {
    // The leading 1 of the sum keeps the zeros after the point.
    std::string zDecimals = std::to_string(kUnit + lMagnitude % kUnit);
    zDecimals.front() = '.';
    zDecimals.erase(zDecimals.find_last_not_of('0') + 1);
    zText += zDecimals;
  }
  return zText;
}

Currency Currency::operator+(Currency cvOther) const {
  std::int64_t lSum = 0;
  if (__builtin_add_overflow(m_lScaled, cvOther.m_lScaled, &lSum)) {
    RaiseOverflow();
  }
  return FromScaled(lSum);
}

Currency Currency::operator-(Currency cvOther) const {
  std::int64_t lDifference = 0;
  if (__builtin_sub_overflow(m_lScaled, cvOther.m_lScaled, &lDifference)) {
    RaiseOverflow();
  }
  return FromScaled(lDifference);
}

Currency Currency::operator*(std::int32_t lvFactor) const {
  std::int64_t lProduct = 0;
  if (__builtin_mul_overflow(m_lScaled, lvFactor, &lProduct)) {
    RaiseOverflow();
  }
  return FromScaled(lProduct);
}

}  // namespace qm_ordering
