#include "qm_ordering/platform/text/NumberFormat.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/support/EnvironmentScope.h"
#include "tests/text/Locales.h"

namespace {

using qm_ordering::Currency;
using test::EnvironmentScope;
using test::LocaleScope;

std::string Format(const char* zvAmount) {
  return qm_ordering::text::AmountFormat().Text(Currency::Parse(zvAmount));
}

std::string FormatScaled(std::int64_t lvScaled) {
  return qm_ordering::text::AmountFormat().Text(Currency::FromScaled(lvScaled));
}

TEST(NumberFormat, WritesTwoDecimalsAlways) {
  EXPECT_EQ("0.00", Format("0"));
  EXPECT_EQ("12.00", Format("12"));
  EXPECT_EQ("12.50", Format("12.5"));
  EXPECT_EQ("0.07", Format("0.07"));
  EXPECT_EQ("-0.50", Format("-0.5"));
}

TEST(NumberFormat, RoundsHalvesAwayFromZero) {
  EXPECT_EQ("0.01", Format("0.005"));
  EXPECT_EQ("-0.01", Format("-0.005"));
  EXPECT_EQ("0.00", Format("0.0049"));
  EXPECT_EQ("2.68", Format("2.675"));
  EXPECT_EQ("2.67", Format("2.6749"));
  EXPECT_EQ("-2.68", Format("-2.675"));
  EXPECT_EQ("1,000.00", Format("999.995"));
}

TEST(NumberFormat, GivesNoSignToWhatRoundsToZero) {
  EXPECT_EQ("0.00", Format("-0.004"));
  EXPECT_EQ("0.00", FormatScaled(-49));
  EXPECT_EQ("-0.01", FormatScaled(-50));
}

TEST(NumberFormat, ReachesBothEndsOfTheRange) {
  EXPECT_EQ("922,337,203,685,477.58", FormatScaled(std::numeric_limits<std::int64_t>::max()));
  EXPECT_EQ("-922,337,203,685,477.58", FormatScaled(std::numeric_limits<std::int64_t>::min()));
}

TEST(NumberFormat, GroupsByThreeWithoutALocale) {
  const EnvironmentScope all("LC_ALL", nullptr);
  const EnvironmentScope numeric("LC_NUMERIC", nullptr);
  const EnvironmentScope lang("LANG", nullptr);
  EXPECT_EQ("123.00", Format("123"));
  EXPECT_EQ("1,234.00", Format("1234"));
  EXPECT_EQ("123,456.00", Format("123456"));
  EXPECT_EQ("-1,234,567.89", Format("-1234567.89"));
}

TEST(NumberFormat, TakesNeutralLocalesForNone) {
  for (const char* zName : {"C", "POSIX", "C.UTF-8", "C.utf8"}) {
    const LocaleScope locale(zName);
    EXPECT_EQ("1,234,567.89", Format("1234567.89")) << zName;
  }
}

TEST(NumberFormat, TakesALocaleThatIsNotInstalledForNone) {
  const LocaleScope locale("zz_ZZ.UTF-8");
  EXPECT_EQ("1,234,567.89", Format("1234567.89"));
}

TEST(NumberFormat, FollowsACommaDecimalLocale) {
  const LocaleScope locale("de_DE.UTF-8");
  EXPECT_EQ("1.234.567,89", Format("1234567.89"));
  EXPECT_EQ("-0,50", Format("-0.5"));
  EXPECT_EQ("-922.337.203.685.477,58", FormatScaled(std::numeric_limits<std::int64_t>::min()));
}

TEST(NumberFormat, WritesSeparatorsOfSeveralBytes) {
  const LocaleScope locale("fr_FR.UTF-8");
  EXPECT_EQ("1\u202F234\u202F567,89", Format("1234567.89"));
}

TEST(NumberFormat, GroupsAsTheLocaleDoes) {
  const LocaleScope locale("en_IN.UTF-8");
  EXPECT_EQ("1,23,45,67,890.00", Format("1234567890"));
  EXPECT_EQ("1,00,000.00", Format("100000"));
  EXPECT_EQ("10,000.00", Format("10000"));
}

TEST(NumberFormat, StopsGroupingWhereTheLocaleDoes) {
  const LocaleScope locale("ending.UTF-8");
  EXPECT_EQ("12345678'90'123.00", Format("1234567890123"));
}

TEST(NumberFormat, GroupsNothingWhereTheLocaleNamesNoGroupSize) {
  const LocaleScope locale("el_GR.UTF-8");
  EXPECT_EQ("1234567,89", Format("1234567.89"));
}

TEST(NumberFormat, GroupsNothingWhereTheLocaleHasNoSeparator) {
  const LocaleScope locale("rw_RW.UTF-8");
  EXPECT_EQ("1234567,89", Format("1234567.89"));
}

TEST(NumberFormat, WritesUTF8WhateverTheLocalesCharset) {
  const LocaleScope locale("de_CH.CP1252");
  EXPECT_EQ("1\u2019234\u2019567.89", Format("1234567.89"));
}

TEST(NumberFormat, PrefersTheMoreSpecificVariable) {
  const LocaleScope all("de_DE.UTF-8");
  const EnvironmentScope numeric("LC_NUMERIC", "fr_FR.UTF-8");
  const EnvironmentScope lang("LANG", "en_IN.UTF-8");
  EXPECT_EQ("1.234,00", Format("1234"));
  {
    const EnvironmentScope emptyAll("LC_ALL", "");
    EXPECT_EQ("1\u202F234,00", Format("1234"));
    const EnvironmentScope emptyNumeric("LC_NUMERIC", "");
    EXPECT_EQ("1,23,456.00", Format("123456"));
    const EnvironmentScope emptyLang("LANG", "");
    EXPECT_EQ("123,456.00", Format("123456"));
  }
  EXPECT_EQ("1.234,00", Format("1234"));
}

TEST(NumberFormat, StaysWhatItWasWhenItWasMade) {
  const LocaleScope locale("de_DE.UTF-8");
  const qm_ordering::text::AmountFormat german;
  const EnvironmentScope all("LC_ALL", "C");
  EXPECT_EQ("1,234.50", Format("1234.5"));
  EXPECT_EQ("1.234,50", german.Text(Currency::Parse("1234.5")));
}

TEST(NumberFormat, LeavesTheProcessLocaleAlone) {
  const LocaleScope locale("de_DE.UTF-8");
  const std::string zBefore = std::setlocale(LC_ALL, nullptr);
  EXPECT_EQ("1,50", Format("1.5"));
  EXPECT_EQ(zBefore, std::setlocale(LC_ALL, nullptr));
  // Nor does the process's locale change the text.
  ASSERT_NE(nullptr, std::setlocale(LC_NUMERIC, "fr_FR.UTF-8"));
  const std::string zText = Format("1234.5");
  std::setlocale(LC_NUMERIC, "C");
  EXPECT_EQ("1.234,50", zText);
}

}  // namespace
