#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/qm_ordering_c.h"

namespace test {

// One of the host's references to an object, released at its end.
class CObject {
 public:
  explicit CObject(qm_ordering_object object = 0) : m_lNumber(object) {}
  // A new object of the class.
  explicit CObject(const char* zvClass) { EXPECT_EQ(0, qm_ordering_create(zvClass, &m_lNumber)) << zvClass; }
  ~CObject() { Release(); }
  CObject(CObject&& other) noexcept : m_lNumber(std::exchange(other.m_lNumber, 0)) {}
  CObject& operator=(CObject&& other) noexcept {
    std::swap(m_lNumber, other.m_lNumber);
    return *this;
  }

  operator qm_ordering_object() const { return m_lNumber; }
  void Release() { EXPECT_EQ(0, qm_ordering_release(std::exchange(m_lNumber, 0))); }
  // Leaves the reference to the caller.
  qm_ordering_object Give() { return std::exchange(m_lNumber, 0); }

 private:
  qm_ordering_object m_lNumber = 0;
};

// A value that the library gave, cleared at its end.
class CValue {
 public:
  CValue() = default;
  ~CValue() { EXPECT_EQ(0, qm_ordering_clear(&m_oValue)); }
  CValue(CValue&& other) noexcept : m_oValue(std::exchange(other.m_oValue, {})) {}
  CValue& operator=(CValue&&) = delete;

  qm_ordering_value* operator&() { return &m_oValue; }
  const qm_ordering_value* operator->() const { return &m_oValue; }
  const qm_ordering_value& operator*() const { return m_oValue; }
  std::string Text() const {
    EXPECT_EQ(QM_ORDERING_TEXT, m_oValue.kind);
    return m_oValue.kind == QM_ORDERING_TEXT ? std::string(m_oValue.as.text.data, m_oValue.as.text.length)
                                             : std::string();
  }
  // The object, whose reference leaves the value.
  CObject Object() {
    EXPECT_EQ(QM_ORDERING_OBJECT, m_oValue.kind);
    return CObject(std::exchange(m_oValue, {}).as.object);
  }

 private:
  qm_ordering_value m_oValue{};
};

inline qm_ordering_value ValueOf(std::int32_t lvKind) {
  qm_ordering_value value{};
  value.kind = lvKind;
  return value;
}

inline qm_ordering_value IntegerValue(std::int32_t lvValue) {
  qm_ordering_value value = ValueOf(QM_ORDERING_INTEGER);
  value.as.integer = lvValue;
  return value;
}

inline qm_ordering_value BooleanValue(std::int32_t lvValue) {
  qm_ordering_value value = ValueOf(QM_ORDERING_BOOLEAN);
  value.as.boolean = lvValue;
  return value;
}

inline qm_ordering_value DoubleValue(double dvValue) {
  qm_ordering_value value = ValueOf(QM_ORDERING_DOUBLE);
  value.as.number = dvValue;
  return value;
}

inline qm_ordering_value CurrencyValue(std::int64_t lvScaled) {
  qm_ordering_value value = ValueOf(QM_ORDERING_CURRENCY);
  value.as.currency = lvScaled;
  return value;
}

inline qm_ordering_value DateValue(const qm_ordering_date& date) {
  qm_ordering_value value = ValueOf(QM_ORDERING_DATE);
  value.as.date = date;
  return value;
}

// Leads to the text, which must be there as long.
inline qm_ordering_value TextValue(std::string_view zvText) {
  qm_ordering_value value = ValueOf(QM_ORDERING_TEXT);
  value.as.text = {zvText.data(), zvText.size()};
  return value;
}

inline qm_ordering_value ObjectValue(qm_ordering_object object) {
  qm_ordering_value value = ValueOf(QM_ORDERING_OBJECT);
  value.as.object = object;
  return value;
}

// The number that a call answers.
inline std::int32_t NumberOfCall(qm_ordering_object object, const char* zvMember,
                                 const std::vector<qm_ordering_value>& arguments = {}) {
  return qm_ordering_call(object, zvMember, arguments.data(), arguments.size(), nullptr);
}

inline std::int32_t NumberOfPut(qm_ordering_object object, const char* zvMember,
                                const qm_ordering_value& value) {
  return qm_ordering_put(object, zvMember, &value);
}

// What a call that succeeds answers.
inline CValue Call(qm_ordering_object object, const char* zvMember,
                   const std::vector<qm_ordering_value>& arguments = {}) {
  CValue result;
  EXPECT_EQ(0, qm_ordering_call(object, zvMember, arguments.data(), arguments.size(), &result)) << zvMember;
  return result;
}

inline CValue Get(qm_ordering_object object, const char* zvMember) {
  CValue result;
  EXPECT_EQ(0, qm_ordering_get(object, zvMember, nullptr, 0, &result)) << zvMember;
  return result;
}

inline void Put(qm_ordering_object object, const char* zvMember, const qm_ordering_value& value) {
  EXPECT_EQ(0, qm_ordering_put(object, zvMember, &value)) << zvMember;
}

// The failure that was last answered on this thread.
inline std::string FailureText() {
  qm_ordering_failure failure{};
  EXPECT_EQ(0, qm_ordering_get_failure(&failure));
  return {failure.description.data == nullptr ? "" : failure.description.data, failure.description.length};
}

// The number of the error record that the object holds.
inline std::int32_t RecordOf(qm_ordering_object object) {
  return Get(Get(object, "Error").Object(), "Number")->as.integer;
}

}  // namespace test
