#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "qm_ordering/platform/Export.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// What a Variant holds.
enum class VariantKind { Missing, Empty, Null, Boolean, Integer, Double, Currency, Date, String, Object };

// A dynamically typed value: missing (an optional argument that was not given), empty (never assigned), null
// (the store's "no value"), boolean, 32-bit integer, double, currency, date, string or object reference.
//
// Construction converts nothing by accident: only bool makes a boolean, every integer type makes a 32-bit
// integer (raising 6 when it does not fit), and a pointer other than const char* does not compile.
class QM_ORDERING_API Variant {
 public:
  // Empty.
  Variant() = default;
  // By an assignment, since memory may end in it: what the standard library (libstdc++ 12) takes back of a
  // copy that failed before it was there is undefined.
  Variant(const Variant& other) : Variant() { m_vValue = other.m_vValue; }
  Variant(Variant&&) noexcept = default;
  Variant& operator=(const Variant&) = default;      //!< A copy.
  Variant& operator=(Variant&&) noexcept = default;  //!< The other's value.
  ~Variant() = default;
  // An optional argument that was not given.
  static Variant Missing() { return Variant(MissingTag{}); }
  // The store's "no value".
  static Variant Null() { return Variant(NullTag{}); }

  // A boolean.
  template <std::same_as<bool> T>
  Variant(T bvValue) : m_vValue(bvValue) {}
  // A 32-bit integer. Raises 6 when the value does not fit.
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, char> && !std::same_as<T, wchar_t> &&
           !std::same_as<T, char8_t> && !std::same_as<T, char16_t> && !std::same_as<T, char32_t>)
      Variant(T lvValue)
      : m_vValue(ToInt32(lvValue)) {}
  // A double. A template, so that nothing that merely converts to double (a character, an enumerator) gets
  // in.
  template <typename T>
  requires(std::same_as<T, double> || std::same_as<T, float>) Variant(T dvValue)
      : m_vValue(static_cast<double>(dvValue)) {}
  // An amount of money.
  Variant(qm_ordering::Currency cvValue) : m_vValue(cvValue) {}
  // A date.
  Variant(qm_ordering::Date datvValue) : m_vValue(datvValue) {}
  // A text in UTF-8.
  Variant(std::string zvValue) : m_vValue(std::move(zvValue)) {}
  // A text in UTF-8, copied.
  Variant(std::string_view zvValue) : m_vValue(std::in_place_type<std::string>, zvValue) {}
  // A text in UTF-8, copied. A null pointer makes the empty string.
  Variant(const char* zvValue) : m_vValue(std::string(zvValue == nullptr ? "" : zvValue)) {}
  // A reference to an object, which it shares.
  template <std::derived_from<qm_ordering::Object> T>
  Variant(std::shared_ptr<T> ovValue) : m_vValue(std::shared_ptr<qm_ordering::Object>(std::move(ovValue))) {}
  template <typename T>
  Variant(T*) = delete;
  Variant(std::nullptr_t) = delete;

  // What it holds.
  VariantKind Kind() const { return static_cast<VariantKind>(m_vValue.index()); }
  // Whether it is an argument that was not given.
  bool IsMissing() const { return Kind() == VariantKind::Missing; }
  // Whether it was never assigned.
  bool IsEmpty() const { return Kind() == VariantKind::Empty; }
  // Whether it is the store's "no value".
  bool IsNull() const { return Kind() == VariantKind::Null; }

  // Conversions. Each raises 94 for null (ToObject: 13), 13 for missing, objects and texts that are not such
  // a value, 6 for a value out of range. Empty gives 0, False, the zero date, the empty string; a boolean
  // counts as -1 or 0. Numbers are read from texts with a point and, if need be, an exponent ("1e2"),
  // surrounding blanks allowed; the empty text is no number. Dates and numbers do not convert into each other
  // (13).

  // Fractions round half to even.
  std::int32_t ToInteger() const;
  // True for any number but 0, and for the texts True and False in any letter case.
  bool ToBoolean() const;
  // The nearest double.
  double ToDouble() const;
  // Exact from integers, currency and texts; a double counts as the shortest decimal number that reads back
  // as it. A fifth decimal rounds half to even.
  qm_ordering::Currency ToCurrency() const;
  // From dates, and from texts in the store's form.
  qm_ordering::Date ToDate() const;
  // Numbers in plain form (a double with as few digits as read back as it), booleans as True and False, dates
  // as the general date text.
  std::string ToString() const&;
  // Likewise; a string hands over its text.
  std::string ToString() &&;
  // The reference; null for empty. Raises 13 for every other kind.
  std::shared_ptr<qm_ordering::Object> ToObject() const;

  // Same kind and same value; texts byte for byte.
  friend bool operator==(const Variant&, const Variant&) = default;

 private:
  struct MissingTag {
    bool operator==(const MissingTag&) const = default;
  };
  struct NullTag {
    bool operator==(const NullTag&) const = default;
  };

  explicit Variant(MissingTag tag) : m_vValue(tag) {}
  explicit Variant(NullTag tag) : m_vValue(tag) {}

  template <typename T>
  static std::int32_t ToInt32(T lvValue) {
    if (!std::in_range<std::int32_t>(lvValue)) {
      RaiseOverflow();
    }
    return static_cast<std::int32_t>(lvValue);
  }
  [[noreturn]] static void RaiseOverflow();

  // In the order of VariantKind.
  std::variant<MissingTag, std::monostate, NullTag, bool, std::int32_t, double, qm_ordering::Currency,
               qm_ordering::Date, std::string, std::shared_ptr<qm_ordering::Object>>
      m_vValue{std::monostate{}};
};

}  // namespace qm_ordering
