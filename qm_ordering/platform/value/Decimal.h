#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qm_ordering {

// A number as its text has it, exactly: 0.DIGITS times ten to the power of Point. The one road from texts to
// money and integers, so that none of them passes through floating point.
struct Decimal {
  bool Negative = false;
  std::string Digits;  // without zeros at either end; empty for zero
  std::int64_t Point = 0;
};

enum class Exponent { Refused, Allowed };

// Reads [blanks][sign]digits[.digits][e[sign]digits][blanks]; digits may be missing on one side of the point,
// blanks are spaces and tabs. Nothing when the text is not such a number.
std::optional<Decimal> ParseDecimal(std::string_view zvText, Exponent exponent);

// The number times ten to the power of lvPlaces (0 or more), rounded half to even. Raises 6 when that does
// not fit.
std::int64_t ScaleHalfToEven(const Decimal& number, int lvPlaces);

}  // namespace qm_ordering
