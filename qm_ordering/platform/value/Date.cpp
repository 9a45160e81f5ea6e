#include "qm_ordering/platform/value/Date.h"

#include <cstddef>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

bool IsLeapYear(int lvYear) {
  return lvYear % 4 == 0 && (lvYear % 100 != 0 || lvYear % 400 == 0);
}

int DaysInMonth(int lvYear, int lvMonth) {
  switch (lvMonth) {
    case 2:
      return IsLeapYear(lvYear) ? 29 : 28;
    case 4:
    case 6:
    case 9:
    case 11:
      return 30;
    default:
      return 31;
  }
}

bool IsValid(int lvYear, int lvMonth, int lvDay, int lvHour, int lvMinute, int lvSecond) {
  return lvYear >= 100 && lvYear <= 9999 && lvMonth >= 1 && lvMonth <= 12 && lvDay >= 1 &&
         lvDay <= DaysInMonth(lvYear, lvMonth) && lvHour >= 0 && lvHour <= 23 && lvMinute >= 0 &&
         lvMinute <= 59 && lvSecond >= 0 && lvSecond <= 59;
}

std::string Digits(int lvNumber, std::size_t lvWidth) {
  std::string zDigits = std::to_string(lvNumber);
  if (zDigits.size() < lvWidth) {
    zDigits.insert(0, lvWidth - zDigits.size(), '0');
  }
  return zDigits;
}

// The number that the digits at the position stand for; -1, which no part of a date is, when they are no
// digits.
int NumberAt(std::string_view zvText, std::size_t lvPosition, std::size_t lvWidth) {
  int lNumber = 0;
  for (const char cDigit : zvText.substr(lvPosition, lvWidth)) {
    if (cDigit < '0' || cDigit > '9') {
      return -1;
    }
    lNumber = lNumber * 10 + (cDigit - '0');
  }
  return lNumber;
}

}  // namespace

Date::Date(int lvYear, int lvMonth, int lvDay, int lvHour, int lvMinute, int lvSecond)
    : m_lYear(static_cast<std::int16_t>(lvYear)),
      m_lMonth(static_cast<std::int8_t>(lvMonth)),
      m_lDay(static_cast<std::int8_t>(lvDay)),
      m_lHour(static_cast<std::int8_t>(lvHour)),
      m_lMinute(static_cast<std::int8_t>(lvMinute)),
      m_lSecond(static_cast<std::int8_t>(lvSecond)) {
  if (!IsValid(lvYear, lvMonth, lvDay, lvHour, lvMinute, lvSecond)) {
    throw Failure(failure::kInvalidCall, "There is no such date: year " + std::to_string(lvYear) +
                                             ", month " + std::to_string(lvMonth) + ", day " +
                                             std::to_string(lvDay) + ", " + std::to_string(lvHour) + ":" +
                                             std::to_string(lvMinute) + ":" + std::to_string(lvSecond));
  }
}

std::string Date::ToStoreText() const {
  return Digits(m_lYear, 4) + "-" + Digits(m_lMonth, 2) + "-" + Digits(m_lDay, 2) + " " + Digits(m_lHour, 2) +
         ":" + Digits(m_lMinute, 2) + ":" + Digits(m_lSecond, 2);
}

std::optional<Date> Date::ParseStoreText(std::string_view zvText) {
  constexpr std::string_view zMidnight = " 00:00:00";
  constexpr std::size_t lDayLength = 10;
  std::string zText(zvText);
  if (zText.size() == lDayLength) {
    zText += zMidnight;
  }
  if (zText.size() != lDayLength + zMidnight.size() || zText[4] != '-' || zText[7] != '-' ||
      zText[10] != ' ' || zText[13] != ':' || zText[16] != ':') {
    return std::nullopt;
  }
  const int lYear = NumberAt(zText, 0, 4);
  const int lMonth = NumberAt(zText, 5, 2);
  const int lDay = NumberAt(zText, 8, 2);
  const int lHour = NumberAt(zText, 11, 2);
  const int lMinute = NumberAt(zText, 14, 2);
  const int lSecond = NumberAt(zText, 17, 2);
  if (!IsValid(lYear, lMonth, lDay, lHour, lMinute, lSecond)) {
    return std::nullopt;
  }
  return Date(lYear, lMonth, lDay, lHour, lMinute, lSecond);
}

std::string Date::ToGeneralText() const {
  const bool bZeroDay = m_lYear == 1899 && m_lMonth == 12 && m_lDay == 30;
  const bool bMidnight = m_lHour == 0 && m_lMinute == 0 && m_lSecond == 0;
  std::string zText;
  if (!bZeroDay) {
    zText = std::to_string(m_lMonth) + "/" + std::to_string(m_lDay) + "/" + Digits(m_lYear, 4);
    if (bMidnight) {
      return zText;
    }
    zText += " ";
  }
  const int lTwelve = m_lHour % 12 == 0 ? 12 : m_lHour % 12;
  return zText + std::to_string(lTwelve) + ":" + Digits(m_lMinute, 2) + ":" + Digits(m_lSecond, 2) +
         (m_lHour < 12 ? " AM" : " PM");
}

}  // namespace qm_ordering
