#include "qm_ordering/foundation/Arrays.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::HasBlankEntry;
using qm_ordering::Variant;
using qm_ordering::VariantArray;
using test::RaisedNumber;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

VariantArray ArrayFrom(std::int32_t lvLowerBound, std::vector<Variant> vValues) {
  return VariantArray(lvLowerBound, std::move(vValues));
}

TEST(VariantArray, IsIndexedFromItsLowerBound) {
  const VariantArray values = ArrayFrom(-1, {"a", "b", "c"});
  EXPECT_EQ(values.At(-1), Variant("a"));
  EXPECT_EQ(values.At(1), Variant("c"));
  EXPECT_EQ(values.UpperBound(), 1);
  EXPECT_EQ((VariantArray{"a", "b"}).UpperBound(), 1);
}

TEST(VariantArray, RaisesOutsideItsBounds) {
  const VariantArray values = ArrayFrom(5, {"a", "b"});
  for (const std::int32_t lIndex : {4, 7, 0, kMin, kMax}) {
    EXPECT_EQ(RaisedNumber([&] { return values.At(lIndex); }), 9) << lIndex;
  }
}

TEST(VariantArray, EndsBelowItsLowerBoundWithoutEntries) {
  EXPECT_EQ(VariantArray({}).UpperBound(), -1);
  EXPECT_EQ(ArrayFrom(3, {}).UpperBound(), 2);
}

TEST(VariantArray, RaisesOverflowForAnUpperBoundThatIsNoInteger) {
  EXPECT_EQ(RaisedNumber([] { return ArrayFrom(kMax, {"a", "b"}).UpperBound(); }), 6);
  EXPECT_EQ(RaisedNumber([] { return ArrayFrom(kMin, {}).UpperBound(); }), 6);
  EXPECT_EQ(ArrayFrom(kMax, {"a"}).UpperBound(), kMax);
  EXPECT_EQ(ArrayFrom(kMin, {"a"}).UpperBound(), kMin);
}

TEST(HasBlankEntry, FindsAnEntryOfSpacesAlone) {
  EXPECT_TRUE(HasBlankEntry({"a", "  ", "b"}));
  EXPECT_TRUE(HasBlankEntry({"a", "b", ""}));
}

TEST(HasBlankEntry, FindsASingleEmptyEntry) {
  EXPECT_TRUE(HasBlankEntry({""}));
}

TEST(HasBlankEntry, IsFalseWhenEveryEntryHoldsText) {
  EXPECT_FALSE(HasBlankEntry({"a", "b"}));
  EXPECT_FALSE(HasBlankEntry({" a "}));
  EXPECT_FALSE(HasBlankEntry({0, false, 0.0}));
}

TEST(HasBlankEntry, IsFalseWithoutEntries) {
  EXPECT_FALSE(HasBlankEntry({}));
}

TEST(HasBlankEntry, TrimsSpacesAlone) {
  EXPECT_FALSE(HasBlankEntry({"\t"}));
  EXPECT_FALSE(HasBlankEntry({"\xC2\xA0"}));
}

TEST(HasBlankEntry, CountsAnUnassignedEntryAsBlankAndNullNot) {
  EXPECT_TRUE(HasBlankEntry({"a", Variant()}));
  EXPECT_FALSE(HasBlankEntry({"a", Variant::Null()}));
  EXPECT_TRUE(HasBlankEntry({Variant::Null(), " "}));
}

TEST(HasBlankEntry, WalksFromIndexZero) {
  EXPECT_FALSE(HasBlankEntry(ArrayFrom(-1, {"", "a"})));
  EXPECT_TRUE(HasBlankEntry(ArrayFrom(-1, {"a", ""})));
  EXPECT_FALSE(HasBlankEntry(ArrayFrom(-2, {"", ""})));
}

TEST(HasBlankEntry, RaisesForAnArrayThatBeginsAboveZero) {
  EXPECT_EQ(RaisedNumber([] { return HasBlankEntry(ArrayFrom(1, {"a"})); }), 9);
  EXPECT_EQ(RaisedNumber([] { return HasBlankEntry(ArrayFrom(1, {""})); }), 9);
}

TEST(HasBlankEntry, RaisesForAnEntryThatIsNoText) {
  EXPECT_EQ(RaisedNumber([] { return HasBlankEntry({"a", Variant::Missing()}); }), 13);
  EXPECT_EQ(RaisedNumber([] {
              return HasBlankEntry({"a", Variant(std::shared_ptr<qm_ordering::Object>())});
            }),
            13);
}

TEST(HasBlankEntry, StopsAtTheFirstBlankEntry) {
  EXPECT_TRUE(HasBlankEntry({"", Variant::Missing()}));
}

}  // namespace
