#include "qm_ordering/foundation/Formatting.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>
#include <vector>

#include "qm_ordering/platform/clock/Clock.h"
#include "tests/support/FixedClock.h"

namespace {

using qm_ordering::Choose;
using qm_ordering::Date;
using qm_ordering::TwoDigits;
using qm_ordering::Variant;

// Goes on to its next moment with each reading.
class MovingClock : public qm_ordering::clock::Clock {
 public:
  explicit MovingClock(std::vector<Date> moments) : m_moments(std::move(moments)) {
    qm_ordering::clock::Install(this);
  }
  ~MovingClock() override { qm_ordering::clock::Install(nullptr); }
  MovingClock(const MovingClock&) = delete;
  MovingClock& operator=(const MovingClock&) = delete;

  Date Now() override { return m_moments.at(Readings++); }
  std::int32_t TimeZoneBias() override { return 0; }

  std::size_t Readings = 0;

 private:
  std::vector<Date> m_moments;
};

std::string SuffixFor(std::int32_t lvBias) {
  const test::FixedClock clock(Date(2003, 7, 4), lvBias);
  return qm_ordering::TimeZoneSuffix();
}

TEST(Choose, TakesOneOfTwoValues) {
  EXPECT_EQ(Choose(true, "yes", 0), Variant("yes"));
  EXPECT_EQ(Choose(false, "yes", 0), Variant(0));
  EXPECT_EQ(Choose(true, Variant::Null(), 1), Variant::Null());
}

TEST(BooleanDigit, IsOneOrZero) {
  EXPECT_EQ(qm_ordering::BooleanDigit(true), "1");
  EXPECT_EQ(qm_ordering::BooleanDigit(false), "0");
}

TEST(TwoDigits, PadsToTwoDigitsWithoutCountingTheMinus) {
  EXPECT_EQ(TwoDigits(0), "00");
  EXPECT_EQ(TwoDigits(3), "03");
  EXPECT_EQ(TwoDigits(12), "12");
  EXPECT_EQ(TwoDigits(-3), "-03");
  EXPECT_EQ(TwoDigits(-30), "-30");
  EXPECT_EQ(TwoDigits(2005), "2005");
  EXPECT_EQ(TwoDigits(std::numeric_limits<std::int32_t>::min()), "-2147483648");
}

TEST(IsValidMonth, IsTrueFromOneToTwelve) {
  EXPECT_FALSE(qm_ordering::IsValidMonth(0));
  EXPECT_TRUE(qm_ordering::IsValidMonth(1));
  EXPECT_TRUE(qm_ordering::IsValidMonth(12));
  EXPECT_FALSE(qm_ordering::IsValidMonth(13));
  EXPECT_FALSE(qm_ordering::IsValidMonth(-1));
  EXPECT_FALSE(qm_ordering::IsValidMonth(std::numeric_limits<std::int32_t>::min()));
}

TEST(ShortDate, HasNoLeadingZerosInMonthAndDay) {
  EXPECT_EQ(qm_ordering::ShortDate(Date(2004, 1, 1)), "1/1/2004");
  EXPECT_EQ(qm_ordering::ShortDate(Date(2003, 7, 4)), "7/4/2003");
  EXPECT_EQ(qm_ordering::ShortDate(Date(2003, 12, 25)), "12/25/2003");
}

TEST(ShortDate, HasAFourDigitYearAndNoTime) {
  EXPECT_EQ(qm_ordering::ShortDate(Date(2003, 7, 4, 15, 4, 5)), "7/4/2003");
  EXPECT_EQ(qm_ordering::ShortDate(Date(350, 7, 4)), "7/4/0350");
  EXPECT_EQ(qm_ordering::ShortDate(Date()), "12/30/1899");
}

TEST(TimeZoneSuffix, WritesTheBiasAndItsAbsoluteValueInMinutes) {
  EXPECT_EQ(SuffixFor(300), "300:300");
  EXPECT_EQ(SuffixFor(0), "00:00");
  EXPECT_EQ(SuffixFor(-60), "-60:60");
  EXPECT_EQ(SuffixFor(5), "05:05");
  EXPECT_EQ(SuffixFor(-5), "-05:05");
}

TEST(TimeZoneSuffix, KeepsTheMinusOfABiasEastOfGreenwich) {
  EXPECT_EQ(SuffixFor(-330), "-330:330");
}

TEST(TimeZoneSuffix, TakesEveryBias) {
  EXPECT_EQ(SuffixFor(std::numeric_limits<std::int32_t>::min()), "-2147483648:2147483648");
  EXPECT_EQ(SuffixFor(std::numeric_limits<std::int32_t>::max()), "2147483647:2147483647");
}

TEST(XMLTimestamp, JoinsDayTimeAndBias) {
  const test::FixedClock clock(Date(2003, 7, 4, 15, 4, 5), 300);
  EXPECT_EQ(qm_ordering::XMLTimestamp(), "2003-7-4T3:04:05 PM300:300");
}

TEST(XMLTimestamp, WritesMidnightOutInFull) {
  const test::FixedClock clock(Date(2003, 12, 25), -60);
  EXPECT_EQ(qm_ordering::XMLTimestamp(), "2003-12-25T12:00:00 AM-60:60");
}

TEST(XMLTimestamp, ReadsTheClockAnewForEachPart) {
  MovingClock clock({Date(2001, 1, 1, 1, 1, 1), Date(2002, 2, 2, 2, 2, 2), Date(2003, 3, 3, 3, 3, 3),
                     Date(2004, 4, 4, 4, 4, 4)});
  EXPECT_EQ(qm_ordering::XMLTimestamp(), "2001-2-3T4:04:04 AM00:00");
  EXPECT_EQ(clock.Readings, 4U);
}

}  // namespace
