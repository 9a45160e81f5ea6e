#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// Exact money with four decimals: a 64-bit integer scaled by 10,000, from -922337203685477.5808 to
// 922337203685477.5807. A result outside that range raises failure 6; nothing wraps and nothing passes
// through floating point.
class QM_ORDERING_API Currency {
 public:
  // The decimals that are kept.
  static constexpr int kDecimals = 4;

  // Zero.
  constexpr Currency() = default;

  // The amount lvScaled / 10,000.
  static constexpr Currency FromScaled(std::int64_t lvScaled) {
    Currency cAmount;
    cAmount.m_lScaled = lvScaled;
    return cAmount;
  }

  // Reads [blanks][sign]digits[.digits][blanks]; digits may be missing on one side of the point. Further
  // decimals round half to even on the fourth. Raises 13 when the text is not such a number (no grouping,
  // no exponent), 6 when the amount is out of range.
  static Currency Parse(std::string_view zvText);

  // The amount times 10,000.
  constexpr std::int64_t Scaled() const { return m_lScaled; }

  // The plain text form: sign, digits and up to four decimals without trailing zeros: "12", "12.5",
  // "-0.0001".
  std::string ToString() const;

  // The sum. Raises 6 when it is out of range.
  Currency operator+(Currency cvOther) const;
  // The difference. Raises 6 when it is out of range.
  Currency operator-(Currency cvOther) const;
  // The product. Raises 6 when it is out of range.
  Currency operator*(std::int32_t lvFactor) const;
  // Adds. Raises 6 when the sum is out of range; the amount is then unchanged.
  Currency& operator+=(Currency cvOther) { return *this = *this + cvOther; }
  // Subtracts. Raises 6 when the difference is out of range; the amount is then unchanged.
  Currency& operator-=(Currency cvOther) { return *this = *this - cvOther; }

  // By amount.
  friend constexpr auto operator<=>(Currency, Currency) = default;

 private:
  std::int64_t m_lScaled = 0;
};

// The product. Raises 6 when it is out of range.
inline Currency operator*(std::int32_t lvFactor, Currency cvAmount) {
  return cvAmount * lvFactor;
}

}  // namespace qm_ordering
