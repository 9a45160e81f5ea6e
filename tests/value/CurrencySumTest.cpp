#include "qm_ordering/platform/value/CurrencySum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace {

using qm_ordering::Currency;
using qm_ordering::CurrencySum;

constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

std::optional<Currency> SumOf(const std::vector<std::int64_t>& lvAmounts) {
  CurrencySum sum;
  for (const std::int64_t lAmount : lvAmounts) {
    sum.Add(Currency::FromScaled(lAmount));
  }
  return sum.Total();
}

TEST(CurrencySum, OfNoAmountsIsZero) {
  EXPECT_EQ(Currency(), SumOf({}));
}

TEST(CurrencySum, OfOneAmountIsTheAmount) {
  for (const std::int64_t lAmount :
       {std::int64_t{0}, std::int64_t{1}, std::int64_t{-1}, std::int64_t{0xFFFFFFFF},
        std::int64_t{0x100000000}, std::int64_t{-0x100000000}, std::int64_t{-0x100000001}, kHighest,
        kLowest}) {
    EXPECT_EQ(Currency::FromScaled(lAmount), SumOf({lAmount}));
  }
}

TEST(CurrencySum, IsExactToBothEnds) {
  EXPECT_EQ(Currency::FromScaled(-1), SumOf({kHighest, kLowest}));
  EXPECT_EQ(Currency::FromScaled(kHighest), SumOf({kHighest - 5, 2, 3}));
  EXPECT_EQ(Currency::FromScaled(kLowest), SumOf({kLowest + 5, -2, -3}));
  EXPECT_EQ(Currency::FromScaled(3000000000000000001), SumOf({3000000000000000000, -1, 2}));
}

TEST(CurrencySum, BeyondTheRangeIsNothing) {
  EXPECT_EQ(std::nullopt, SumOf({kHighest, 1}));
  EXPECT_EQ(std::nullopt, SumOf({kLowest, -1}));
  EXPECT_EQ(std::nullopt, SumOf({kHighest, kHighest, kHighest}));
  EXPECT_EQ(std::nullopt, SumOf({kLowest, kLowest}));
}

TEST(CurrencySum, MayLeaveTheRangeOnItsWayInEveryOrder) {
  std::vector<std::int64_t> lAmounts = {kLowest, -7, 7, kHighest, kHighest};
  do {
    EXPECT_EQ(Currency::FromScaled(kHighest - 1), SumOf(lAmounts));
  } while (std::next_permutation(lAmounts.begin(), lAmounts.end()));
}

TEST(CurrencySum, TakesMoreAmountsWhenItHasBeenRead) {
  CurrencySum sum;
  sum.Add(Currency::FromScaled(kHighest));
  sum.Add(Currency::FromScaled(1));
  EXPECT_EQ(std::nullopt, sum.Total());
  sum.Add(Currency::FromScaled(-2));
  EXPECT_EQ(Currency::FromScaled(kHighest - 1), sum.Total());
}

}  // namespace
