#include "qm_ordering/platform/value/Decimal.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

// Beyond any text that memory can hold, so that an exponent cut off here decides the same as the whole one.
constexpr std::int64_t kLargestExponent = 1'000'000'000'000'000;

// A whole number with more digits than this is outside the range; one with as many still fits unsigned.
constexpr std::int64_t kMostDigits = 19;

std::string_view TrimBlanks(std::string_view zvText) {
  const std::size_t lFirst = zvText.find_first_not_of(" \t");
  if (lFirst == std::string_view::npos) {
    return {};
  }
  return zvText.substr(lFirst, zvText.find_last_not_of(" \t") - lFirst + 1);
}

bool TakeNegativeSign(std::string_view& zrText) {
  if (zrText.empty() || (zrText.front() != '-' && zrText.front() != '+')) {
    return false;
  }
  const bool bNegative = zrText.front() == '-';
  zrText.remove_prefix(1);
  return bNegative;
}

std::string_view TakeDigits(std::string_view& zrText) {
  const std::string_view zDigits =
      zrText.substr(0, std::min(zrText.find_first_not_of("0123456789"), zrText.size()));
  zrText.remove_prefix(zDigits.size());
  return zDigits;
}

// What follows the letter of an exponent, up to the end of the text.
std::optional<std::int64_t> ReadExponent(std::string_view zvText) {
  const bool bNegative = TakeNegativeSign(zvText);
  const std::string_view zDigits = TakeDigits(zvText);
  if (zDigits.empty() || !zvText.empty()) {
    return std::nullopt;
  }
  std::int64_t lExponent = 0;
  for (const char cDigit : zDigits) {
    lExponent = std::min(lExponent * 10 + (cDigit - '0'), kLargestExponent);
  }
  return bNegative ? -lExponent : lExponent;
}

// Whether the digits from lvFirst on are more than half a unit of the digit before them, or just half and
// that digit is odd.
bool RoundsUp(std::string_view zvDigits, std::size_t lvFirst, bool bvOdd) {
  if (lvFirst >= zvDigits.size() || zvDigits[lvFirst] < '5') {
    return false;
  }
  const bool bHalf = zvDigits[lvFirst] == '5' && lvFirst + 1 == zvDigits.size();
  return !bHalf || bvOdd;
}

}  // namespace

std::optional<Decimal> ParseDecimal(std::string_view zvText, Exponent exponent) {
  std::string_view zRest = TrimBlanks(zvText);
  Decimal number;
  number.Negative = TakeNegativeSign(zRest);

  const std::string_view zWhole = TakeDigits(zRest);
  std::string_view zFraction;
  if (zRest.starts_with('.')) {
    zRest.remove_prefix(1);
    zFraction = TakeDigits(zRest);
  }
  if (zWhole.empty() && zFraction.empty()) {
    return std::nullopt;
  }
  std::int64_t lExponent = 0;
  if (!zRest.empty()) {
    const bool bExponent = exponent == Exponent::Allowed && (zRest.front() == 'e' || zRest.front() == 'E');
    const std::optional<std::int64_t> lRead = bExponent ? ReadExponent(zRest.substr(1)) : std::nullopt;
    if (!lRead) {
      return std::nullopt;
    }
    lExponent = *lRead;
  }

  number.Digits.append(zWhole).append(zFraction);
  const std::size_t lLeadingZeros = std::min(number.Digits.find_first_not_of('0'), number.Digits.size());
  number.Digits.erase(0, lLeadingZeros);
  number.Digits.erase(number.Digits.find_last_not_of('0') + 1);
  number.Point =
      static_cast<std::int64_t>(zWhole.size()) - static_cast<std::int64_t>(lLeadingZeros) + lExponent;
  return number;
}

std::int64_t ScaleHalfToEven(const Decimal& number, int lvPlaces) {
  const std::int64_t lWholeDigits = number.Point + lvPlaces;
  if (number.Digits.empty() || lWholeDigits < 0) {
    return 0;
  }
  constexpr std::uint64_t lLimit = std::numeric_limits<std::int64_t>::max();
  std::uint64_t lMagnitude = 0;
  bool bFits = lWholeDigits <= kMostDigits;
  if (bFits) {
    const auto lCount = static_cast<std::size_t>(lWholeDigits);
    for (std::size_t lIndex = 0; lIndex < lCount; ++lIndex) {
      const char cDigit = lIndex < number.Digits.size() ? number.Digits[lIndex] : '0';
      lMagnitude = lMagnitude * 10 + static_cast<std::uint64_t>(cDigit - '0');
    }
    if (RoundsUp(number.Digits, lCount, lMagnitude % 2 != 0)) {
      ++lMagnitude;
    }
    bFits = lMagnitude <= (number.Negative ? lLimit + 1 : lLimit);
  }
  if (!bFits) {
    throw Failure(failure::kOverflow, "Overflow: the number is too large");
  }
  // Negated as unsigned, where the magnitude of the smallest number has a negative.
  return static_cast<std::int64_t>(number.Negative ? 0 - lMagnitude : lMagnitude);
}

}  // namespace qm_ordering
