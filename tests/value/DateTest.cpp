#include "qm_ordering/platform/value/Date.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <limits>
#include <string>

#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Date;
using test::RaisedNumber;

std::int32_t RaisedFor(const std::array<int, 6>& lvParts) {
  return RaisedNumber(
      [&] { return Date(lvParts[0], lvParts[1], lvParts[2], lvParts[3], lvParts[4], lvParts[5]); });
}

TEST(Date, IsTheZeroDateAtFirst) {
  EXPECT_TRUE(Date().IsZero());
  EXPECT_EQ(Date(), Date(1899, 12, 30));
  EXPECT_FALSE(Date(1899, 12, 30, 0, 0, 1).IsZero());
  EXPECT_FALSE(Date(1899, 12, 31).IsZero());
}

TEST(Date, KeepsItsParts) {
  const Date date(2003, 7, 4, 15, 45, 6);
  EXPECT_EQ(date.Year(), 2003);
  EXPECT_EQ(date.Month(), 7);
  EXPECT_EQ(date.Day(), 4);
  EXPECT_EQ(date.Hour(), 15);
  EXPECT_EQ(date.Minute(), 45);
  EXPECT_EQ(date.Second(), 6);
}

TEST(Date, IsMidnightWithoutATime) {
  EXPECT_EQ(Date(2003, 7, 4), Date(2003, 7, 4, 0, 0, 0));
}

TEST(Date, TakesTheFirstAndTheLastMoment) {
  EXPECT_EQ(Date(100, 1, 1).Year(), 100);
  EXPECT_EQ(Date(9999, 12, 31, 23, 59, 59).Year(), 9999);
}

TEST(Date, RefusesPartsThatDoNotExist) {
  constexpr int lHuge = std::numeric_limits<int>::max();
  for (const std::array<int, 6>& lParts : {std::array<int, 6>{99, 12, 31, 0, 0, 0},
                                           {10000, 1, 1, 0, 0, 0},
                                           {-2003, 7, 4, 0, 0, 0},
                                           {2003, 0, 4, 0, 0, 0},
                                           {2003, 13, 4, 0, 0, 0},
                                           {2003, 7, 0, 0, 0, 0},
                                           {2003, 7, 32, 0, 0, 0},
                                           {2003, 7, 4, -1, 0, 0},
                                           {2003, 7, 4, 24, 0, 0},
                                           {2003, 7, 4, 0, -1, 0},
                                           {2003, 7, 4, 0, 60, 0},
                                           {2003, 7, 4, 0, 0, -1},
                                           {2003, 7, 4, 0, 0, 60},
                                           // these would pass once cut down to the bits of a valid part
                                           {2003 + 65536, 7, 4, 0, 0, 0},
                                           {2003, 7 + 256, 4, 0, 0, 0},
                                           {2003, 7, 4 + 256, 0, 0, 0},
                                           {lHuge, lHuge, lHuge, lHuge, lHuge, lHuge}}) {
    EXPECT_EQ(RaisedFor(lParts), 5) << lParts[0] << '-' << lParts[1] << '-' << lParts[2] << ' ' << lParts[3]
                                    << ':' << lParts[4] << ':' << lParts[5];
  }
}

TEST(Date, KnowsTheLengthOfEveryMonth) {
  constexpr std::array<int, 12> lDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  for (int lMonth = 1; lMonth <= 12; ++lMonth) {
    const int lLast = lDays[static_cast<std::size_t>(lMonth - 1)];
    EXPECT_EQ(Date(2003, lMonth, lLast).Day(), lLast);
    EXPECT_EQ(RaisedNumber([&] { return Date(2003, lMonth, lLast + 1); }), 5) << lMonth;
  }
}

TEST(Date, KnowsLeapYears) {
  for (const int lYear : {400, 1904, 1996, 2000, 2004, 2400}) {
    EXPECT_EQ(RaisedNumber([&] { return Date(lYear, 2, 29); }), 0) << lYear;
    EXPECT_EQ(RaisedNumber([&] { return Date(lYear, 2, 30); }), 5) << lYear;
  }
  for (const int lYear : {100, 1900, 2001, 2003, 2100, 9999}) {
    EXPECT_EQ(RaisedNumber([&] { return Date(lYear, 2, 29); }), 5) << lYear;
  }
}

TEST(Date, ComparesByMoment) {
  EXPECT_LT(Date(2003, 7, 4), Date(2003, 7, 4, 0, 0, 1));
  EXPECT_LT(Date(2003, 7, 4, 23, 59, 59), Date(2003, 7, 5));
  EXPECT_LT(Date(2003, 12, 31), Date(2004, 1, 1));
  EXPECT_LT(Date(2003, 7, 4, 9, 59, 0), Date(2003, 7, 4, 10, 0, 0));
  EXPECT_EQ(Date(2003, 7, 4, 1, 2, 3), Date(2003, 7, 4, 1, 2, 3));
}

TEST(Date, WritesTheStoreText) {
  EXPECT_EQ(Date(2003, 7, 4, 15, 4, 5).ToStoreText(), "2003-07-04 15:04:05");
  EXPECT_EQ(Date(2003, 12, 25).ToStoreText(), "2003-12-25 00:00:00");
  EXPECT_EQ(Date().ToStoreText(), "1899-12-30 00:00:00");
  EXPECT_EQ(Date(100, 1, 1).ToStoreText(), "0100-01-01 00:00:00");
}

TEST(Date, ReadsTheStoreText) {
  EXPECT_EQ(Date::ParseStoreText("2003-07-04 15:04:05"), Date(2003, 7, 4, 15, 4, 5));
  EXPECT_EQ(Date::ParseStoreText("2003-07-04"), Date(2003, 7, 4));
  EXPECT_EQ(Date::ParseStoreText("0100-01-01"), Date(100, 1, 1));
}

TEST(Date, ReadsBackTheStoreTextOfEveryDay) {
  for (int lYear = 1899; lYear <= 2004; ++lYear) {
    for (int lMonth = 1; lMonth <= 12; ++lMonth) {
      const Date date(lYear, lMonth, lMonth + 16, lMonth + 11, lMonth * 4, 59);
      ASSERT_EQ(Date::ParseStoreText(date.ToStoreText()), date) << date.ToStoreText();
    }
  }
}

TEST(Date, ReadsNothingElseAsAStoreText) {
  for (const char* zText : {"",
                            "2003",
                            "2003-7-4",
                            "2003-07-4 ",
                            "7/4/2003",
                            "2003/07/04",
                            "2003-07-04 ",
                            " 2003-07-04",
                            "2003-07-04T15:04:05",
                            "2003-07-04 15:04",
                            "2003-07-04 15:04:05 ",
                            "2003-07-04 15:04:05.0",
                            "2003-07-04 3:04:05 PM",
                            "2003-07-04 15-04:05",
                            "2003-07-04 15:04-05",
                            "2003-07.04",
                            "2003.07-04",
                            "2003-07-04 1a:04:05",
                            "+003-07-04",
                            "2003-+7-04",
                            "2003-02-29",
                            "2003-13-01",
                            "2003-07-04 24:00:00",
                            "0099-01-01",
                            "0000-00-00",
                            "-003-07-04"}) {
    EXPECT_FALSE(Date::ParseStoreText(zText)) << zText;
  }
}

TEST(Date, WritesTheGeneralTextWithATwelveHourClock) {
  EXPECT_EQ(Date(2003, 7, 4, 15, 4, 5).ToGeneralText(), "7/4/2003 3:04:05 PM");
  EXPECT_EQ(Date(2003, 12, 25, 11, 59, 59).ToGeneralText(), "12/25/2003 11:59:59 AM");
  EXPECT_EQ(Date(2003, 7, 4, 12, 0, 0).ToGeneralText(), "7/4/2003 12:00:00 PM");
  EXPECT_EQ(Date(2003, 7, 4, 0, 0, 1).ToGeneralText(), "7/4/2003 12:00:01 AM");
  EXPECT_EQ(Date(2003, 7, 4, 23, 59, 59).ToGeneralText(), "7/4/2003 11:59:59 PM");
}

TEST(Date, LeavesMidnightOutOfTheGeneralText) {
  EXPECT_EQ(Date(2003, 7, 4).ToGeneralText(), "7/4/2003");
  EXPECT_EQ(Date(350, 7, 4).ToGeneralText(), "7/4/0350");
}

TEST(Date, LeavesTheZeroDayOutOfTheGeneralText) {
  EXPECT_EQ(Date(1899, 12, 30, 15, 4, 5).ToGeneralText(), "3:04:05 PM");
  EXPECT_EQ(Date().ToGeneralText(), "12:00:00 AM");
}

}  // namespace
