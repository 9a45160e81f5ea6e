#include "qm_ordering/platform/value/Currency.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using test::RaisedNumber;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr Currency kSmallest = Currency::FromScaled(kMin);
constexpr Currency kLargest = Currency::FromScaled(kMax);
constexpr Currency kStep = Currency::FromScaled(1);

// Floating point must not get in unseen.
static_assert(!std::is_constructible_v<Currency, double> && !std::is_constructible_v<Currency, int>);

std::int64_t Parsed(const std::string& zvText) {
  return Currency::Parse(zvText).Scaled();
}

std::vector<std::int64_t> ManyScaledValues() {
  std::vector<std::int64_t> values = {0, kMin, kMin + 1, kMax, kMax - 1};
  std::int64_t lPower = 1;
  for (int lZeros = 1; lZeros <= 18; ++lZeros) {
    lPower *= 10;
    for (const std::int64_t lNear : {lPower - 1, lPower, lPower + 1}) {
      values.push_back(lNear);
      values.push_back(-lNear);
    }
  }
  std::mt19937_64 random(20030704);
  for (int lCount = 0; lCount < 20000; ++lCount) {
    // Shifted, so that small amounts are as many as large ones.
    values.push_back(static_cast<std::int64_t>(random()) >> (lCount % 64));
  }
  return values;
}

TEST(Currency, IsZeroAtFirst) {
  EXPECT_EQ(Currency().Scaled(), 0);
  EXPECT_EQ(Currency().ToString(), "0");
}

TEST(Currency, ReadsDecimalNumbers) {
  EXPECT_EQ(Parsed("12"), 120000);
  EXPECT_EQ(Parsed("12.5"), 125000);
  EXPECT_EQ(Parsed("+12.5"), 125000);
  EXPECT_EQ(Parsed("-0.0001"), -1);
  EXPECT_EQ(Parsed("00012.50"), 125000);
  EXPECT_EQ(Parsed(".5"), 5000);
  EXPECT_EQ(Parsed("5."), 50000);
  EXPECT_EQ(Parsed("-0"), 0);
  EXPECT_EQ(Parsed(" \t12.5 \t"), 125000);
}

TEST(Currency, RefusesTextsThatAreNoDecimalNumbers) {
  for (const char* zText :
       {"",   " ",   ".",   "-",   "+",   "-.",   "abc", "12a", "a12", "1,000", "1.2.3", "--1",     "+-1",
        "1-", "- 1", "1 2", "1e2", "1E2", "0x10", "inf", "nan", "$1",  "\n1",   "1\n",   "\xD9\xA1"}) {
    EXPECT_EQ(RaisedNumber([&] { return Currency::Parse(zText); }), 13) << '"' << zText << '"';
  }
}

TEST(Currency, RefusesADigitBehindAZeroByte) {
  EXPECT_EQ(RaisedNumber([] {
              return Currency::Parse(
                  std::string("1\0"
                              "2",
                              3));
            }),
            13);
}

TEST(Currency, NamesTheTextThatIsNoAmount) {
  try {
    Currency::Parse("twelve");
    FAIL() << "no failure";
  } catch (const qm_ordering::Failure& caught) {
    EXPECT_NE(caught.Description().find("\"twelve\""), std::string::npos) << caught.Description();
  }
}

TEST(Currency, RoundsEveryFifthDecimalHalfToEven) {
  for (std::int64_t lFifths = 0; lFifths < 100000; ++lFifths) {
    const std::string zText = "0." + std::to_string(100000 + lFifths).substr(1);
    std::int64_t lExpected = lFifths / 10;
    const std::int64_t lRest = lFifths % 10;
    if (lRest > 5 || (lRest == 5 && lExpected % 2 == 1)) {
      ++lExpected;
    }
    ASSERT_EQ(Parsed(zText), lExpected) << zText;
    ASSERT_EQ(Parsed("-" + zText), -lExpected) << zText;
  }
}

TEST(Currency, LooksAtAllFurtherDecimalsForAHalf) {
  EXPECT_EQ(Parsed("0.00005"), 0);
  EXPECT_EQ(Parsed("0.000050000000000000000000000000"), 0);
  EXPECT_EQ(Parsed("0.000050000000000000000000000001"), 1);
  EXPECT_EQ(Parsed("0.000149999999999999999999999999"), 1);
  EXPECT_EQ(Parsed("0.00015"), 2);
  EXPECT_EQ(Parsed("9.99995"), 100000);
  EXPECT_EQ(Parsed("0.000001"), 0);
}

TEST(Currency, ReadsBothEndsOfTheRange) {
  EXPECT_EQ(Parsed("922337203685477.5807"), kMax);
  EXPECT_EQ(Parsed("-922337203685477.5808"), kMin);
  EXPECT_EQ(Parsed("000000000000000000000922337203685477.5807000000000000000000"), kMax);
}

TEST(Currency, RaisesOverflowJustOutsideTheRange) {
  for (const char* zText :
       {"922337203685477.5808", "-922337203685477.5809", "1000000000000000", "-1000000000000000",
        "9999999999999999999999999999999", "18446744073709551616", "1844674407370955.1617"}) {
    EXPECT_EQ(RaisedNumber([&] { return Currency::Parse(zText); }), 6) << zText;
  }
}

TEST(Currency, RoundsBeforeItComparesWithTheRange) {
  EXPECT_EQ(Parsed("922337203685477.58074999"), kMax);
  EXPECT_EQ(Parsed("922337203685477.58065"), kMax - 1);
  EXPECT_EQ(Parsed("-922337203685477.58085"), kMin);
  EXPECT_EQ(Parsed("-922337203685477.58075"), kMin);
  // The half above the largest amount goes to the even neighbour, which there is not.
  EXPECT_EQ(RaisedNumber([] { return Currency::Parse("922337203685477.58075"); }), 6);
  EXPECT_EQ(RaisedNumber([] { return Currency::Parse("-922337203685477.580850001"); }), 6);
}

TEST(Currency, WritesThePlainTextForm) {
  EXPECT_EQ(Currency::FromScaled(120000).ToString(), "12");
  EXPECT_EQ(Currency::FromScaled(125000).ToString(), "12.5");
  EXPECT_EQ(Currency::FromScaled(-1).ToString(), "-0.0001");
  EXPECT_EQ(Currency::FromScaled(10).ToString(), "0.001");
  EXPECT_EQ(Currency::FromScaled(100050).ToString(), "10.005");
  EXPECT_EQ(Currency::FromScaled(-1234567).ToString(), "-123.4567");
  EXPECT_EQ(Currency::FromScaled(1000000).ToString(), "100");
}

TEST(Currency, WritesBothEndsOfTheRange) {
  EXPECT_EQ(kLargest.ToString(), "922337203685477.5807");
  EXPECT_EQ(kSmallest.ToString(), "-922337203685477.5808");
}

TEST(Currency, ReadsBackWhatItWrites) {
  for (const std::int64_t lScaled : ManyScaledValues()) {
    const Currency cAmount = Currency::FromScaled(lScaled);
    ASSERT_EQ(Currency::Parse(cAmount.ToString()), cAmount) << lScaled;
  }
}

TEST(Currency, AddsAndSubtractsExactly) {
  EXPECT_EQ(Currency::Parse("0.1") + Currency::Parse("0.2"), Currency::Parse("0.3"));
  EXPECT_EQ(Currency::Parse("1") - Currency::Parse("1.0001"), Currency::Parse("-0.0001"));
  EXPECT_EQ(kLargest - kLargest, Currency());
  EXPECT_EQ(kLargest + kSmallest, Currency::FromScaled(-1));
  EXPECT_EQ((kLargest - kStep) + kStep, kLargest);
  EXPECT_EQ((kSmallest + kStep) - kStep, kSmallest);

  Currency cTotal = Currency::Parse("10");
  cTotal += Currency::Parse("2.5");
  EXPECT_EQ(cTotal, Currency::Parse("12.5"));
  cTotal -= Currency::Parse("12.5");
  EXPECT_EQ(cTotal, Currency());
}

TEST(Currency, RaisesOverflowWhenASumLeavesTheRange) {
  EXPECT_EQ(RaisedNumber([] { return kLargest + kStep; }), 6);
  EXPECT_EQ(RaisedNumber([] { return kSmallest - kStep; }), 6);
  EXPECT_EQ(RaisedNumber([] { return Currency() - kSmallest; }), 6);
  EXPECT_EQ(RaisedNumber([] { return kSmallest + kSmallest; }), 6);
}

TEST(Currency, StaysAsItWasWhenAddingOverflows) {
  Currency cTotal = kLargest;
  EXPECT_EQ(RaisedNumber([&] { return cTotal += kStep; }), 6);
  EXPECT_EQ(cTotal, kLargest);
}

TEST(Currency, MultipliesByAnInteger) {
  EXPECT_EQ(Currency::Parse("12.3456") * 3, Currency::Parse("37.0368"));
  EXPECT_EQ(3 * Currency::Parse("12.3456"), Currency::Parse("37.0368"));
  EXPECT_EQ(Currency::Parse("12.5") * 0, Currency());
  EXPECT_EQ(kLargest * -1, Currency::FromScaled(-kMax));
  EXPECT_EQ(Currency::FromScaled(kMin / 2) * 2, kSmallest);
  EXPECT_EQ(kStep * std::numeric_limits<std::int32_t>::min(), Currency::FromScaled(-2147483648));
}

TEST(Currency, RaisesOverflowWhenAProductLeavesTheRange) {
  EXPECT_EQ(RaisedNumber([] { return kLargest * 2; }), 6);
  EXPECT_EQ(RaisedNumber([] { return kSmallest * -1; }), 6);
  EXPECT_EQ(RaisedNumber([] { return Currency::FromScaled(kMax / 2 + 1) * 2; }), 6);
  EXPECT_EQ(RaisedNumber([] { return kSmallest * std::numeric_limits<std::int32_t>::min(); }), 6);
}

TEST(Currency, ComparesByAmount) {
  EXPECT_LT(kSmallest, Currency());
  EXPECT_LT(Currency::Parse("-2"), Currency::Parse("-1"));
  EXPECT_GT(Currency::Parse("10"), Currency::Parse("9.9999"));
  EXPECT_EQ(Currency::Parse("1.5"), Currency::Parse("1.5000"));
  EXPECT_NE(Currency::Parse("1.5"), Currency::Parse("1.5001"));
}

}  // namespace
