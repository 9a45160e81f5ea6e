#pragma once

#include <memory>
#include <utility>

#include "qm_ordering/foundation/ErrorInfo.h"
#include "qm_ordering/foundation/members/Late.h"
#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// A copy of a plain record as an object, for who uses it by name. kClassName and ClassMembers are defined for
// each record.
template <typename T>
class Record : public Object {
 public:
  static const char* const kClassName;
  explicit Record(T oValue) : m_oValue(std::move(oValue)) {}
  const char* ClassName() const noexcept override { return kClassName; }
  static const ClassInfo& ClassMembers();
  const ClassInfo& Members() const override { return ClassMembers(); }

  const T& Value() const { return m_oValue; }

 private:
  T m_oValue;
};

template <typename T>
struct LateRecord {
  static const char* Type() { return Record<T>::kClassName; }
  static Variant ToVariant(T oValue) { return Variant(std::make_shared<Record<T>>(std::move(oValue))); }
};

template <>
inline const char* const Record<ErrorInfo>::kClassName = "ErrorInfo";
template <>
struct Late<ErrorInfo> : LateRecord<ErrorInfo> {};
template <>
const ClassInfo& Record<ErrorInfo>::ClassMembers();

}  // namespace qm_ordering
