#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/platform/value/ClassInfo.h"
#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/Object.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// How a type of the public interface goes into a Variant (results) and comes out of one (arguments, which
// convert as Variant converts): its name in a ClassInfo, the prefix of names of its kind, and what writing a
// property of it is.
template <typename T>
struct Late;

// The object that an argument refers to; null for an empty reference. Raises kWrongThread for another
// thread's.
inline std::shared_ptr<Object> OwnObject(const Variant& vvValue) {
  std::shared_ptr<Object> oObject = vvValue.ToObject();
  if (oObject) {
    oObject->RequireThisThread();
  }
  return oObject;
}

template <>
struct Late<void> {
  static const char* Type() { return ""; }
};

template <>
struct Late<bool> {
  static constexpr const char* kPrefix = "b";
  static constexpr MemberKind kKind = MemberKind::PropertyLet;
  static const char* Type() { return "Boolean"; }
  static Variant ToVariant(bool bvValue) { return bvValue; }
  static bool FromVariant(const Variant& vvValue) { return vvValue.ToBoolean(); }
};

template <>
struct Late<std::int32_t> {
  static constexpr const char* kPrefix = "l";
  static constexpr MemberKind kKind = MemberKind::PropertyLet;
  static const char* Type() { return "Integer"; }
  static Variant ToVariant(std::int32_t lvValue) { return lvValue; }
  static std::int32_t FromVariant(const Variant& vvValue) { return vvValue.ToInteger(); }
};

// Raises 6 for a number that a 32-bit integer does not hold.
template <>
struct Late<std::int64_t> {
  static const char* Type() { return Late<std::int32_t>::Type(); }
  static Variant ToVariant(std::int64_t lvValue) { return lvValue; }
};

template <>
struct Late<Currency> {
  static constexpr const char* kPrefix = "c";
  static constexpr MemberKind kKind = MemberKind::PropertyLet;
  static const char* Type() { return "Currency"; }
  static Variant ToVariant(Currency cvValue) { return cvValue; }
  static Currency FromVariant(const Variant& vvValue) { return vvValue.ToCurrency(); }
};

template <>
struct Late<Date> {
  static constexpr const char* kPrefix = "dat";
  static constexpr MemberKind kKind = MemberKind::PropertyLet;
  static const char* Type() { return "Date"; }
  static Variant ToVariant(const Date& datvValue) { return datvValue; }
  static Date FromVariant(const Variant& vvValue) { return vvValue.ToDate(); }
};

template <>
struct Late<std::string> {
  static constexpr const char* kPrefix = "z";
  static constexpr MemberKind kKind = MemberKind::PropertyLet;
  static const char* Type() { return "String"; }
  static Variant ToVariant(std::string zvValue) { return zvValue; }
  static std::string FromVariant(const Variant& vvValue) { return vvValue.ToString(); }
};
template <>
struct Late<const std::string&> {
  static const char* Type() { return Late<std::string>::Type(); }
  static Variant ToVariant(const std::string& zvValue) { return std::string_view(zvValue); }
};

template <>
struct Late<Variant> {
  static const char* Type() { return "Variant"; }
  static Variant ToVariant(Variant vvValue) { return vvValue; }
  static const Variant& FromVariant(const Variant& vvValue) {
    if (vvValue.Kind() == VariantKind::Object) {
      OwnObject(vvValue);
    }
    return vvValue;
  }
};

template <std::derived_from<Object> T>
struct Late<std::shared_ptr<T>> {
  static constexpr const char* kPrefix = "o";
  static constexpr MemberKind kKind = MemberKind::PropertySet;
  static const char* Type() { return T::kClassName; }
  static Variant ToVariant(std::shared_ptr<T> ovValue) { return Variant(std::move(ovValue)); }
  // Null for an empty reference.
  static std::shared_ptr<T> FromVariant(const Variant& vvValue) {
    const std::shared_ptr<Object> oObject = OwnObject(vvValue);
    auto oWanted = std::dynamic_pointer_cast<T>(oObject);
    if (oObject && !oWanted) {
      throw Failure(failure::kTypeMismatch, std::string("An object of the class ") + T::kClassName +
                                                " is wanted, not one of the class " + oObject->ClassName() +
                                                ".");
    }
    return oWanted;
  }
};

}  // namespace qm_ordering
