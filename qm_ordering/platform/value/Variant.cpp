#include "qm_ordering/platform/value/Variant.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <system_error>

#include "qm_ordering/platform/value/Decimal.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

// Missing, null and objects have no value to convert; a kind that merely does not fit the target, and a text
// that is not such a value, end here too.
[[noreturn]] void RaiseCannotConvert(const Variant& vvValue, const char* zvTarget) {
  const std::string zTarget = zvTarget;
  switch (vvValue.Kind()) {
    case VariantKind::Null:
      throw Failure(failure::kInvalidNull, "Invalid use of null: it cannot be made " + zTarget);
    case VariantKind::Missing:
      throw Failure(failure::kTypeMismatch,
                    "Type mismatch: an argument that is not given cannot be made " + zTarget);
    case VariantKind::Object:
      throw Failure(failure::kTypeMismatch, "Type mismatch: an object cannot be made " + zTarget);
    default:
      throw Failure(failure::kTypeMismatch,
                    "Type mismatch: \"" + vvValue.ToString() + "\" cannot be made " + zTarget);
  }
}

// Plain digits, no exponent, as few as read back to the same double.
std::string DoubleText(double dvValue) {
  // The smallest numbers are the longest: 323 zeros after the point and up to 17 digits.
  std::array<char, 400> text{};
  const std::to_chars_result end =
      std::to_chars(text.data(), text.data() + text.size(), dvValue, std::chars_format::fixed);
  return {text.data(), end.ptr};
}

double NearestDouble(const Decimal& number) {
  if (number.Digits.empty()) {
    return 0;
  }
  const std::string zText =
      (number.Negative ? "-0." : "0.") + number.Digits + "e" + std::to_string(number.Point);
  double dValue = 0;
  const std::from_chars_result read = std::from_chars(zText.data(), zText.data() + zText.size(), dValue);
  if (read.ec != std::errc::result_out_of_range) {
    return dValue;
  }
  if (number.Point > 0) {
    throw Failure(failure::kOverflow, "Overflow: the number is too large");
  }
  return 0;  // nearer to 0 than any double
}

char LowerASCII(char cvLetter) {
  return cvLetter >= 'A' && cvLetter <= 'Z' ? static_cast<char>(cvLetter - 'A' + 'a') : cvLetter;
}

// The value as an exact number; raises as every conversion to a number does. zvTarget, with its article, goes
// into the message.
Decimal NumberOf(const Variant& vvValue, const char* zvTarget) {
  std::optional<Decimal> number;
  switch (vvValue.Kind()) {
    case VariantKind::Empty:
      return {};
    case VariantKind::Boolean:
      number = ParseDecimal(vvValue.ToBoolean() ? "-1" : "0", Exponent::Refused);
      break;
    case VariantKind::Double:
      if (!std::isfinite(vvValue.ToDouble())) {
        throw Failure(failure::kOverflow, "Overflow: " + vvValue.ToString() + " cannot be made " + zvTarget);
      }
      [[fallthrough]];
    case VariantKind::Integer:
    case VariantKind::Currency:
    case VariantKind::String:
      number = ParseDecimal(vvValue.ToString(), Exponent::Allowed);
      break;
    default:
      break;
  }
  if (!number) {
    RaiseCannotConvert(vvValue, zvTarget);
  }
  return *number;
}

bool IsWord(std::string_view zvText, std::string_view zvLowerCaseWord) {
  if (zvText.size() != zvLowerCaseWord.size()) {
    return false;
  }
  for (std::size_t lIndex = 0; lIndex < zvText.size(); ++lIndex) {
    if (LowerASCII(zvText[lIndex]) != zvLowerCaseWord[lIndex]) {
      return false;
    }
  }
  return true;
}

}  // namespace

void Variant::RaiseOverflow() {
  throw Failure(failure::kOverflow, "Overflow: the number does not fit a 32-bit integer");
}

std::int32_t Variant::ToInteger() const {
  if (const auto* pInteger = std::get_if<std::int32_t>(&m_vValue)) {
    return *pInteger;
  }
  return ToInt32(ScaleHalfToEven(NumberOf(*this, "an integer"), 0));
}

bool Variant::ToBoolean() const {
  if (const auto* pBoolean = std::get_if<bool>(&m_vValue)) {
    return *pBoolean;
  }
  if (const auto* pDouble = std::get_if<double>(&m_vValue)) {
    return *pDouble != 0;
  }
  if (const auto* pText = std::get_if<std::string>(&m_vValue)) {
    if (IsWord(*pText, "true")) {
      return true;
    }
    if (IsWord(*pText, "false")) {
      return false;
    }
  }
  return !NumberOf(*this, "a boolean").Digits.empty();
}

double Variant::ToDouble() const {
  if (const auto* pDouble = std::get_if<double>(&m_vValue)) {
    return *pDouble;
  }
  return NearestDouble(NumberOf(*this, "a number"));
}

Currency Variant::ToCurrency() const {
  if (const auto* pAmount = std::get_if<qm_ordering::Currency>(&m_vValue)) {
    return *pAmount;
  }
  return Currency::FromScaled(ScaleHalfToEven(NumberOf(*this, "an amount"), Currency::kDecimals));
}

Date Variant::ToDate() const {
  std::optional<Date> date;
  if (IsEmpty()) {
    date = Date();
  } else if (const auto* pDate = std::get_if<qm_ordering::Date>(&m_vValue)) {
    date = *pDate;
  } else if (const auto* pText = std::get_if<std::string>(&m_vValue)) {
    date = Date::ParseStoreText(*pText);
  }
  if (!date) {
    RaiseCannotConvert(*this, "a date");
  }
  return *date;
}

std::string Variant::ToString() && {
  if (auto* pText = std::get_if<std::string>(&m_vValue)) {
    return std::move(*pText);
  }
  return std::as_const(*this).ToString();
}

std::string Variant::ToString() const& {
  switch (Kind()) {
    case VariantKind::Empty:
      return {};
    case VariantKind::Boolean:
      return std::get<bool>(m_vValue) ? "True" : "False";
    case VariantKind::Integer:
      return std::to_string(std::get<std::int32_t>(m_vValue));
    case VariantKind::Double:
      return DoubleText(std::get<double>(m_vValue));
    case VariantKind::Currency:
      return std::get<qm_ordering::Currency>(m_vValue).ToString();
    case VariantKind::Date:
      return std::get<qm_ordering::Date>(m_vValue).ToGeneralText();
    case VariantKind::String:
      return std::get<std::string>(m_vValue);
    default:
      RaiseCannotConvert(*this, "a text");
  }
}

std::shared_ptr<Object> Variant::ToObject() const {
  if (IsEmpty()) {
    return nullptr;
  }
  if (const auto* pObject = std::get_if<std::shared_ptr<qm_ordering::Object>>(&m_vValue)) {
    return *pObject;
  }
  throw Failure(failure::kTypeMismatch, "Type mismatch: the value is no object");
}

}  // namespace qm_ordering
