#include <gtest/gtest.h>

#include <limits>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/Connection.h"
#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// Money is exact through the statements and the store, to both ends of its 64 bits.

namespace {

using qm_ordering::Currency;
using test::kHighestMoney;
using test::kLowestMoney;
using test::Money;
using test::RaisedNumber;
using test::Rows;
using Texts = std::vector<std::string>;

constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kLowest = std::numeric_limits<std::int64_t>::min();

class OrderMoney : public test::DatabaseFixture {
 protected:
  OrderMoney() { AddOrder(12, true); }

  void Add(const std::string& zvItemNumber, std::string_view zvPrice, std::string_view zvExtendedPrice) {
    test::Line line;
    line.ItemNumber = zvItemNumber;
    line.Price = Money(zvPrice);
    line.ExtendedPrice = Money(zvExtendedPrice);
    AddItem(Database, line);
  }
};

TEST_F(OrderMoney, IsWrittenInPlainFormWithoutGroupingAndTrailingZeros) {
  AddLine(12, "A");
  const std::vector<std::pair<std::int64_t, std::string>> expected = {
      {0, "0"},
      {120000, "12"},
      {125000, "12.5"},
      {125001, "12.5001"},
      {1, "0.0001"},
      {-1, "-0.0001"},
      {-10000, "-1"},
      {1000, "0.1"},
      {10000000000, "1000000"},
      {1234567890, "123456.789"},
      {90071992547409930, "9007199254740.993"},
      {kHighest, "922337203685477.5807"},
      {kHighest - 1, "922337203685477.5806"},
      {kLowest, "-922337203685477.5808"},
      {kLowest + 1, "-922337203685477.5807"},
  };
  for (const auto& [lScaled, zText] : expected) {
    Trace.Take();
    Database.OrderDetails_IncrementQuantity(12, "A", 1, Currency::FromScaled(lScaled),
                                            Currency::FromScaled(lScaled));
    EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = 1, cPrice = " + zText +
                     ", cExtendedPrice = " + zText + " where lOrderID = 12 and zItemNumber = 'A'"}),
              Trace.Statements());
    EXPECT_EQ((Rows{{std::to_string(lScaled), std::to_string(lScaled)}}),
              Store.Query("select cPrice, cExtendedPrice from tblOrderItem"));
    const auto rows = Database.OrderDetails_GetItems(12, 0, false);
    EXPECT_EQ(lScaled, rows->Fields("cPrice").Value().ToCurrency().Scaled());
    EXPECT_EQ(lScaled, rows->Fields("cExtendedPrice").Value().ToCurrency().Scaled());
  }
}

TEST_F(OrderMoney, OfAnAddedLineAndTheTotalGoesToBothEnds) {
  for (const std::string zEnd : {kHighestMoney, kLowestMoney}) {
    Store.Run("delete from tblOrderItem");
    Trace.Take();
    Add("A", zEnd, zEnd);
    EXPECT_EQ("0 ", Recorded());
    EXPECT_EQ(
        (Texts{"insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
               "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
               "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, "
               "bHasNotes, bHasPartsInfo) values (12, 'A', 1, '', '', '', '', 1, 1, '', 999, False, " +
                   zEnd + ", " + zEnd + ", False, '', '', False, False)",
               "select sum(cExtendedPrice) from tblOrderItem where lOrderID = 12",
               "update tblOrder set cTotalPrice = " + zEnd + " where lOrderID = 12"}),
        Trace.Statements());
    EXPECT_EQ(Money(zEnd), Database.Order_GetTotalPrice(12));
    EXPECT_EQ(std::to_string(Money(zEnd).Scaled()), OfOrder(12, "cTotalPrice"));
    EXPECT_EQ(Money(zEnd),
              Database.OrderDetails_GetSummary(12, false)->Fields("cTotalPrice").Value().ToCurrency());
  }
}

TEST_F(OrderMoney, OfAllUpdatesGoesToBothEnds) {
  AddLine(12, "A");
  const auto expectBoth = [&](const std::string& zEnd) {
    const std::string zScaled = std::to_string(Money(zEnd).Scaled());
    EXPECT_EQ((Rows{{zScaled, zScaled}}), Store.Query("select cPrice, cExtendedPrice from tblOrderItem"));
    Store.Run("update tblOrderItem set cPrice = 0, cExtendedPrice = 0");
  };
  for (const std::string zEnd : {kHighestMoney, kLowestMoney}) {
    SCOPED_TRACE(zEnd);
    const Currency cEnd = Money(zEnd);
    Database.OrderDetails_IncrementQuantity(12, "A", 1, cEnd, cEnd);
    expectBoth(zEnd);
    Database.OrderDetails_UpdateItem("A", 1, cEnd, cEnd, true, true);
    expectBoth(zEnd);
    qm_ordering::OrderItems items;
    items.Add(test::Item("A", 1, zEnd, zEnd), "A");
    Database.OrderDetails_UpdateItems(12, items);
    expectBoth(zEnd);
    test::SavedLine line;
    line.Price = cEnd;
    line.ExtendedPrice = cEnd;
    SaveLine(Database, line);
    expectBoth(zEnd);

    qm_ordering::OrderHeader header;
    header.OrderID = 12;
    header.TotalPrice = cEnd;
    Database.OrderDetails_SaveSummary(header);
    EXPECT_EQ(cEnd, Database.Order_GetTotalPrice(12));
  }
}

TEST_F(OrderMoney, IsSummedToTheLastUnit) {
  Add("A", "0", kHighestMoney);
  Add("B", "0", kLowestMoney);
  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(Money("-0.0001"), Database.Order_GetTotalPrice(12));
  Add("C", "0", "0.0003");
  EXPECT_EQ(Money("0.0002"), Database.Order_GetTotalPrice(12));

  Store.Run("delete from tblOrderItem");
  Add("A", "0", "922337203685477.5806");
  Add("B", "0", "0.0001");
  EXPECT_EQ(Money(kHighestMoney), Database.Order_GetTotalPrice(12));

  Store.Run("delete from tblOrderItem");
  Add("A", "0", "-922337203685477.5807");
  Add("B", "0", "-0.0001");
  EXPECT_EQ(Money(kLowestMoney), Database.Order_GetTotalPrice(12));
}

TEST_F(OrderMoney, BeyondWhatAFloatingPointNumberHoldsIsSummedExactly) {
  Add("A", "0", "90071992547409.9201");
  Add("B", "0", "0.0001");
  Add("C", "0", "0.0001");
  EXPECT_EQ("update tblOrder set cTotalPrice = 90071992547409.9203 where lOrderID = 12",
            Trace.Statements().back());
  EXPECT_EQ("900719925474099203", OfOrder(12, "cTotalPrice"));
}

TEST_F(OrderMoney, SortsByAmount) {
  Add("I1", kHighestMoney, "0");
  Add("I2", "922337203685477.5806", "0");
  Add("I3", "9", "0");
  Add("I4", "10", "0");
  Add("I5", kLowestMoney, "0");
  Add("I6", "-0.0001", "0");
  Add("I7", "0.0001", "0");
  Add("I8", "0", "0");
  std::string zOrder;
  const auto rows = Database.OrderDetails_GetItems(12, 6, false);
  for (; !rows->AtEnd(); rows->MoveNext()) {
    zOrder += rows->Fields("zItemNumber").Value().ToString() + " ";
  }
  EXPECT_EQ("I5 I6 I8 I7 I3 I4 I2 I1 ", zOrder);
}

TEST_F(OrderMoney, TheHighestAmountIsFound) {
  Add("A", kLowestMoney, "0");
  Add("B", kHighestMoney, "0");
  qm_ordering::ado::Connection connection;
  connection.Open(qm_ordering::ConnectionString());
  const auto highest = connection.Execute("select max(cPrice) from tblOrderItem");
  EXPECT_EQ(Money(kHighestMoney), highest->Fields(0).Value().ToCurrency());
  const auto lowest = connection.Execute("select max(cPrice) from tblOrderItem where zItemNumber = 'A'");
  EXPECT_EQ(Money(kLowestMoney), lowest->Fields(0).Value().ToCurrency());
}

// --- sums beyond the range

TEST_F(OrderMoney, ALineThatTakesTheSumBeyondTheRangeStaysAndTheTotalIsAsItWas) {
  Add("A", "1", kHighestMoney);
  Add("B", "1", "0.0001");

  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_TRUE(Database.Error().Description.starts_with("6 : The line is stored")) << Recorded();
  EXPECT_EQ(2, Database.OrderDetails_ItemCount(12));
  EXPECT_EQ("1", OfLine(12, "B", "cExtendedPrice"));
  EXPECT_EQ(Money(kHighestMoney), Database.Order_GetTotalPrice(12));
}

TEST_F(OrderMoney, ASumBelowTheRangeFailsLikeOneAboveIt) {
  Add("A", "1", kLowestMoney);
  Add("B", "1", "-0.0001");
  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_TRUE(Database.Error().Description.starts_with("6 : ")) << Recorded();
  EXPECT_EQ(Money(kLowestMoney), Database.Order_GetTotalPrice(12));
}

TEST_F(OrderMoney, ASumBeyondTheRangeRaisesAndChangesNothing) {
  AddLine(12, "A", 1, kHighestMoney);
  AddLine(12, "B", 1, kHighestMoney);
  Store.Run("update tblOrder set cTotalPrice = 7");
  const Rows before = Store.Everything();
  EXPECT_EQ(6, RaisedNumber([&] { Database.Order_UpdateTotalPrice(12); }));
  EXPECT_EQ((Texts{"select sum(cExtendedPrice) from tblOrderItem where lOrderID = 12"}), Trace.Statements());
  EXPECT_EQ(before, Store.Everything());
  EXPECT_NO_THROW(Store.Run("pragma busy_timeout = 0; update tblOrder set zDINotes = 'free'"));
}

TEST_F(OrderMoney, ARemovedLineIsGoneThoughTheSumOfTheOthersIsBeyondTheRange) {
  AddLine(12, "A", 1, kHighestMoney);
  AddLine(12, "B", 1, kHighestMoney);
  AddLine(12, "C", 1, "1");
  Store.Run("update tblOrder set cTotalPrice = 7");
  EXPECT_EQ(6, RaisedNumber([&] { Database.OrderItem_RemoveItem(12, "C"); }));
  EXPECT_EQ(2, Database.OrderDetails_ItemCount(12));
  EXPECT_EQ("7", OfOrder(12, "cTotalPrice"));

  Database.OrderItem_RemoveItem(12, "B");
  EXPECT_EQ(Money(kHighestMoney), Database.Order_GetTotalPrice(12));
}

TEST_F(OrderMoney, ASumWithinTheRangeIsExactWhateverTheOrderOfTheLines) {
  AddLine(12, "A", 1, kHighestMoney);
  AddLine(12, "B", 1, kHighestMoney);
  AddLine(12, "C", 1, kLowestMoney);
  Database.Order_UpdateTotalPrice(12);
  EXPECT_EQ(Money("922337203685477.5806"), Database.Order_GetTotalPrice(12));
}

}  // namespace
