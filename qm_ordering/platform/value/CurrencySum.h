#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "qm_ordering/platform/value/Currency.h"

namespace qm_ordering {

// A sum of up to 2^31 amounts that may leave the range of money on its way and come back: only where it ends
// counts, so that it does not depend on the order of the amounts. All bits zero is an empty sum.
class CurrencySum {
 public:
  void Add(Currency cvAmount) {
    // An amount is its upper half times 2^32 plus its lower one, which is never negative.
    m_lUpper += cvAmount.Scaled() >> 32;
    m_lLower += cvAmount.Scaled() & 0xFFFFFFFF;
  }

  // Nothing when the sum is beyond the range.
  std::optional<Currency> Total() const {
    const std::int64_t lUpper = m_lUpper + (m_lLower >> 32);
    if (!std::in_range<std::int32_t>(lUpper)) {
      return std::nullopt;
    }
    return Currency::FromScaled(lUpper * 0x100000000 + (m_lLower & 0xFFFFFFFF));
  }

 private:
  std::int64_t m_lUpper = 0;
  std::int64_t m_lLower = 0;
};

}  // namespace qm_ordering
