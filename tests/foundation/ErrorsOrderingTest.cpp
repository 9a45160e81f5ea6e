#include "qm_ordering/foundation/ErrorsOrdering.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <string_view>
#include <thread>

#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::ErrorTableEntry;
using qm_ordering::OrderingError;
using test::RaisedNumber;

TEST(ErrorsOrdering, PairsEachIndexWithItsNumberAndText) {
  struct Expected {
    OrderingError Code;
    std::int32_t Index;
    std::int32_t Number;
    std::string_view Text;
  };
  constexpr std::array<Expected, 11> expected = {{
      {OrderingError::errOrderNotFound, 0, 3, "Order not found"},
      {OrderingError::errOrderNotLoaded, 1, 4, "Order not loaded"},
      {OrderingError::errNotCurrentOrder, 2, 2, "Specified order is not the current order"},
      {OrderingError::errItemExists, 3, 1, "Item already exists in order"},
      {OrderingError::errUnexpected, 4, 5, "An unexpected error has occurred"},
      {OrderingError::errInvalidQuantity, 5, 6, "Invalid quantity"},
      {OrderingError::errOrderIDNotSet, 6, 7, "OrderID not set"},
      {OrderingError::errDuplicateList, 7, 8, "Duplicate list"},
      {OrderingError::errListIDNotSet, 8, 9, "List ID not set"},
      {OrderingError::errInvalidListID, 9, 10, "Invalid list ID"},
      {OrderingError::errListNotFound, 10, 11, "List not found"},
  }};
  qm_ordering::InitErrorTable();
  for (const Expected& entry : expected) {
    EXPECT_EQ(static_cast<std::int32_t>(entry.Code), entry.Index) << entry.Text;
    EXPECT_EQ(ErrorTableEntry(entry.Code).Number, entry.Number) << entry.Text;
    EXPECT_EQ(ErrorTableEntry(entry.Code).Text, entry.Text);
  }
}

TEST(ErrorsOrdering, RaisesOutsideTheTable) {
  qm_ordering::InitErrorTable();
  for (const std::int32_t lCode :
       {-1, 11, 12, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(RaisedNumber([&] { return ErrorTableEntry(static_cast<OrderingError>(lCode)); }), 9) << lCode;
  }
}

TEST(ErrorsOrdering, HasNoEntriesOnAThreadThatHasNotFilledIt) {
  qm_ordering::InitErrorTable();
  std::int32_t lBefore = 0;
  std::int32_t lAfter = -1;
  std::thread([&] {
    lBefore = RaisedNumber([] { return ErrorTableEntry(OrderingError::errUnexpected); });
    qm_ordering::InitErrorTable();
    lAfter = RaisedNumber([] { return ErrorTableEntry(OrderingError::errUnexpected); });
  }).join();
  EXPECT_EQ(lBefore, 9);
  EXPECT_EQ(lAfter, 0);
}

}  // namespace
