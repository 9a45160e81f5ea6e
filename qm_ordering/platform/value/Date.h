#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// A moment of local time to the second, years 100 to 9999 of the Gregorian calendar, without a zone.
// The zero date, which stands for "none", is 30 December 1899, 0:00:00.
class QM_ORDERING_API Date {
 public:
  // The zero date.
  constexpr Date() = default;

  // Raises 5 when there is no such day or time.
  Date(int lvYear, int lvMonth, int lvDay, int lvHour = 0, int lvMinute = 0, int lvSecond = 0);

  // 100 to 9999.
  constexpr int Year() const { return m_lYear; }
  // 1 to 12.
  constexpr int Month() const { return m_lMonth; }
  // 1 to 31.
  constexpr int Day() const { return m_lDay; }
  // 0 to 23.
  constexpr int Hour() const { return m_lHour; }
  // 0 to 59.
  constexpr int Minute() const { return m_lMinute; }
  // 0 to 59.
  constexpr int Second() const { return m_lSecond; }

  // Whether this is the zero date, which stands for "none".
  bool IsZero() const { return *this == Date(); }

  // "2003-07-04 15:04:05", the form used in SQL and in the store.
  std::string ToStoreText() const;
  // Reads that form, or a day alone ("2003-07-04"); nothing when the text is neither.
  static std::optional<Date> ParseStoreText(std::string_view zvText);

  // The general date text, the same in every locale: "7/4/2003 3:04:05 PM", without the time when it is
  // midnight ("7/4/2003"), without the day when it is the zero day ("3:04:05 PM"; the zero date itself is
  // "12:00:00 AM").
  std::string ToGeneralText() const;

  // By time: the earlier one is less.
  friend constexpr auto operator<=>(const Date&, const Date&) = default;

 private:
  std::int16_t m_lYear = 1899;
  std::int8_t m_lMonth = 12;
  std::int8_t m_lDay = 30;
  std::int8_t m_lHour = 0;
  std::int8_t m_lMinute = 0;
  std::int8_t m_lSecond = 0;
};

}  // namespace qm_ordering
