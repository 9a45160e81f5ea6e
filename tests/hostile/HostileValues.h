#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>

#include "qm_ordering/platform/value/Currency.h"
#include "qm_ordering/platform/value/Date.h"
#include "qm_ordering/platform/value/Variant.h"

namespace test {

// The values that a careless or malicious host hands over, in an order that the seed alone decides.
class HostileValues {
 public:
  explicit HostileValues(std::uint64_t lvSeed) : m_oRandom(lvSeed) {}

  // 0 to lvCount - 1.
  std::size_t Pick(std::size_t lvCount) { return m_oRandom() % lvCount; }
  // True once in lvTimes.
  bool Once(std::size_t lvTimes) { return Pick(lvTimes) == 0; }

  // Anything: quotes, marks of other languages, control characters, broken UTF-8; some of 100 KiB, few
  // larger.
  std::string Text();
  // Few texts, so that they meet again, in other letter cases too.
  std::string ItemNumber();
  std::int32_t Integer();
  // One that leaves room for arithmetic in three cases of four.
  std::int32_t Quantity();
  qm_ordering::Currency Amount();
  qm_ordering::Date Moment();
  bool Flag() { return Once(2); }
  qm_ordering::Variant Value();

  // The value for a property of that type.
  template <typename Value>
  Value Next();

 private:
  std::string RandomBytes();

  std::mt19937_64 m_oRandom;
};

template <>
inline std::string HostileValues::Next() {
  return Text();
}
template <>
inline std::int32_t HostileValues::Next() {
  return Integer();
}
template <>
inline bool HostileValues::Next() {
  return Flag();
}
template <>
inline qm_ordering::Currency HostileValues::Next() {
  return Amount();
}
template <>
inline qm_ordering::Date HostileValues::Next() {
  return Moment();
}

// A value as the list of calls shows it: printable, and short.
std::string Shown(const std::string& zvText);
std::string Shown(std::int32_t lvNumber);
std::string Shown(bool bvFlag);
std::string Shown(qm_ordering::Currency cvAmount);
std::string Shown(const qm_ordering::Date& datvDate);

}  // namespace test
