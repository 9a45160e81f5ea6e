#include "qm_ordering/platform/value/Failure.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

using qm_ordering::Failure;

static_assert(std::is_nothrow_copy_constructible_v<Failure> && std::is_nothrow_copy_assignable_v<Failure>);

TEST(Failure, CarriesItsNumberAndDescription) {
  const Failure raised(-2147217900, "Syntax error");
  EXPECT_EQ(raised.Number(), -2147217900);
  EXPECT_EQ(raised.Description(), "Syntax error");
  EXPECT_STREQ(raised.what(), "Syntax error");
}

TEST(Failure, IsCaughtAsAStandardException) {
  try {
    throw Failure(6, "Overflow");
  } catch (const std::exception& caught) {
    EXPECT_STREQ(caught.what(), "Overflow");
  }
}

TEST(Failure, ACopyOutlivesTheOriginal) {
  Failure kept(5, "another");
  {
    const Failure raised(13, "Type mismatch");
    kept = raised;
  }
  EXPECT_EQ(kept.Number(), 13);
  EXPECT_EQ(kept.Description(), "Type mismatch");
}

}  // namespace
