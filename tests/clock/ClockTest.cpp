#include "qm_ordering/platform/clock/Clock.h"

#include <gtest/gtest.h>

#include <ctime>
#include <thread>
#include <utility>

#include "tests/support/EnvironmentScope.h"
#include "tests/support/FixedClock.h"

namespace {

using qm_ordering::Date;
using qm_ordering::clock::Current;
using test::EnvironmentScope;

// Seconds since 1970 of a moment in a zone that lies lvEast seconds east of Greenwich.
std::time_t Seconds(const Date& datvMoment, long lvEast) {
  std::tm fields{};
  fields.tm_year = datvMoment.Year() - 1900;
  fields.tm_mon = datvMoment.Month() - 1;
  fields.tm_mday = datvMoment.Day();
  fields.tm_hour = datvMoment.Hour();
  fields.tm_min = datvMoment.Minute();
  fields.tm_sec = datvMoment.Second();
  return timegm(&fields) - lvEast;
}

TEST(Clock, TellsTheLocalTime) {
  for (const auto& [zZone, lEast] :
       {std::pair("UTC0", 0L), std::pair("XXX-5:30", 19'800L), std::pair("XXX12", -43'200L)}) {
    const EnvironmentScope zone("TZ", zZone);
    const std::time_t before = std::time(nullptr);
    const std::time_t now = Seconds(Current().Now(), lEast);
    const std::time_t after = std::time(nullptr);
    EXPECT_LE(before, now) << zZone;
    EXPECT_GE(after, now) << zZone;
  }
}

TEST(Clock, CountsTheBiasPositiveWestOfGreenwich) {
  const EnvironmentScope utc("TZ", "UTC0");
  EXPECT_EQ(0, Current().TimeZoneBias());
  const EnvironmentScope west("TZ", "XXX5");
  EXPECT_EQ(300, Current().TimeZoneBias());
  const EnvironmentScope east("TZ", "XXX-5:30");
  EXPECT_EQ(-330, Current().TimeZoneBias());
}

TEST(Clock, CountsDaylightSavingIntoTheBias) {
  // Daylight saving all the year round, and never.
  const EnvironmentScope always("TZ", "XXX5YYY,0/0,J365/25");
  EXPECT_EQ(240, Current().TimeZoneBias());
  const EnvironmentScope never("TZ", "XXX5");
  EXPECT_EQ(300, Current().TimeZoneBias());
}

TEST(Clock, AnswersAnInstalledClockUntilItIsTakenBack) {
  {
    test::FixedClock fixed(Date(2003, 7, 4, 15, 4, 5), -60);
    EXPECT_EQ(Date(2003, 7, 4, 15, 4, 5), Current().Now());
    EXPECT_EQ(-60, Current().TimeZoneBias());
    fixed.Moment = Date(2004, 1, 1);
    EXPECT_EQ(Date(2004, 1, 1), Current().Now());
  }
  EXPECT_GT(Current().Now(), Date(2020, 1, 1));
}

TEST(Clock, InstallsAClockForItsThreadAlone) {
  const test::FixedClock fixed;
  Date datOther;
  std::thread([&] { datOther = Current().Now(); }).join();
  EXPECT_GT(datOther, Date(2020, 1, 1));
  EXPECT_EQ(Date(2003, 7, 4, 15, 4, 5), Current().Now());
}

}  // namespace
