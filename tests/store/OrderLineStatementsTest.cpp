#include <gtest/gtest.h>

#include <filesystem>
#include <limits>
#include <stdexcept>

#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// The statements on the lines of orders: their texts, letter by letter, and what they do.

namespace {

using qm_ordering::OrderItems;
using test::AddItem;
using test::Item;
using test::Line;
using test::Money;
using test::RaisedNumber;
using test::Row;
using test::Rows;
using Texts = std::vector<std::string>;

class OrderLineStatements : public test::DatabaseFixture {
 protected:
  OrderLineStatements() {
    AddOrder(7);
    AddOrder(12, true);
  }
};

// --- adding a line

TEST_F(OrderLineStatements, AddingALineInsertsItAndThenStoresTheTotal) {
  Database.OrderDetails_AddItem(12, "A-1", 5, "Hammer", "Ham", "Maker", "M-5", 6, 7, "TODAY", true,
                                Money("12.5"), Money("62.5"), false, "PN-9", "Notes", true, false);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(
      (Texts{"insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
             "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
             "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, "
             "bHasNotes, bHasPartsInfo) values (12, 'A-1', 5, 'Hammer', 'Ham', 'Maker', 'M-5', 6, 7, "
             "'TODAY', 0, True, 12.5, 62.5, False, 'PN-9', 'Notes', True, False)",
             "select sum(cExtendedPrice) from tblOrderItem where lOrderID = 12",
             "update tblOrder set cTotalPrice = 62.5 where lOrderID = 12"}),
      Trace.Statements());
  EXPECT_EQ((Rows{{"12", "A-1",    "5",      "Hammer", "Ham",  "Maker", "M-5", "6", "7", "TODAY", "0",
                   "-1", "125000", "625000", "0",      "PN-9", "Notes", "-1",  "0", "0", "0"}}),
            Store.Query("select lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
                        "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, "
                        "lUsuallyShipsSortOrder, bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, "
                        "zCustomerPartNumber, zCustomerNotes, bHasNotes, bHasPartsInfo, bHasContractItem, "
                        "bImported from tblOrderItem"));
  EXPECT_EQ("625000", OfOrder(12, "cTotalPrice"));
  EXPECT_EQ("0", OfOrder(7, "cTotalPrice"));
}

TEST_F(OrderLineStatements, AddingALineDoublesTheQuotesOfAllTextsButTheShippingEstimate) {
  Database.OrderDetails_AddItem(7, "It'em", -5, "D'1", "S''2", "'Ma", "Mo'", -6, 0,
                                "  2 weeks -- \"about\";  ", false, Money("-0.0001"), Money("0"), true, "P'N",
                                "'", false, true);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(
      (Texts{"insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
             "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
             "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, "
             "bHasNotes, bHasPartsInfo) values (7, 'It''em', -5, 'D''1', 'S''''2', '''Ma', 'Mo''', -6, 0, "
             "'  2 weeks -- \"about\";  ', 999, False, -0.0001, 0, True, 'P''N', '''', False, True)",
             "select sum(cExtendedPrice) from tblOrderItem where lOrderID = 7",
             "update tblOrder set cTotalPrice = 0 where lOrderID = 7"}),
      Trace.Statements());
  EXPECT_EQ((Rows{{"7", "It'em", "-5", "D'1", "S''2", "'Ma", "Mo'", "-6", "0", "  2 weeks -- \"about\";  ",
                   "999", "0", "-1", "0", "-1", "P'N", "'", "0", "-1"}}),
            Store.Query("select lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
                        "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, "
                        "lUsuallyShipsSortOrder, bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, "
                        "zCustomerPartNumber, zCustomerNotes, bHasNotes, bHasPartsInfo from tblOrderItem"));
}

TEST_F(OrderLineStatements, AddingALineStoresEmptyTextsAndTheEndsOfTheNumbers) {
  Line line;
  line.ItemNumber = "";
  line.Quantity = std::numeric_limits<std::int32_t>::min();
  line.SellQuantity = std::numeric_limits<std::int32_t>::max();
  line.ShipQuantity = 0;
  AddItem(Database, line);

  EXPECT_EQ(
      "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
      "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
      "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, "
      "bHasNotes, bHasPartsInfo) values (12, '', -2147483648, '', '', '', '', 2147483647, 0, '', 999, "
      "False, 0, 0, False, '', '', False, False)",
      Trace.Statements().at(0));
  EXPECT_EQ((Rows{{"", "-2147483648", "", "2147483647", "", ""}}),
            Store.Query("select zItemNumber, lQuantity, zDescription, lSellQuantity, zUsuallyShips, "
                        "zCustomerNotes from tblOrderItem"));
}

TEST_F(OrderLineStatements, AddingALineKeepsItsFourFlagsApart) {
  for (int i = 0; i < 4; ++i) {
    Line line;
    line.ItemNumber = "A-" + std::to_string(i);
    line.IsTaxable = i == 0;
    line.IsPriceModified = i == 1;
    line.HasNotes = i == 2;
    line.HasPartsInfo = i == 3;
    AddItem(Database, line);
  }

  EXPECT_EQ((Rows{{"A-0", "-1", "0", "0", "0"},
                  {"A-1", "0", "-1", "0", "0"},
                  {"A-2", "0", "0", "-1", "0"},
                  {"A-3", "0", "0", "0", "-1"}}),
            Store.Query("select zItemNumber, bIsTaxable, bIsPriceModified, bHasNotes, bHasPartsInfo "
                        "from tblOrderItem order by zItemNumber"));
}

TEST_F(OrderLineStatements, AddingALineDerivesTheOrderOfTheShippingEstimates) {
  const std::vector<std::pair<std::string, std::string>> expected = {
      {"TODAY", "0"},     {"today", "0"},           {"ToDay", "0"},         {"1-3 DAYS", "1"},
      {"1-3 days", "1"},  {"SPECIAL ORDER", "2"},   {"Special Order", "2"}, {"2-3 DAYS", "999"},
      {"", "999"},        {" TODAY", "999"},        {"TODAY ", "999"},      {"1-3  DAYS", "999"},
      {"SPECIAL", "999"}, {"TODAY1-3 DAYS", "999"}, {"1 - 3 DAYS", "999"},  {"0", "999"},
  };
  for (std::size_t i = 0; i < expected.size(); ++i) {
    Line line;
    line.ItemNumber = std::to_string(i);
    line.UsuallyShips = expected[i].first;
    AddItem(Database, line);
    EXPECT_EQ(expected[i].second, OfLine(12, line.ItemNumber, "lUsuallyShipsSortOrder")) << expected[i].first;
    EXPECT_EQ(expected[i].first, OfLine(12, line.ItemNumber, "zUsuallyShips"));
  }
}

TEST_F(OrderLineStatements, AddedLinesAreNumberedInTheOrderOfTheirEntryAndNumbersAreNotGivenAgain) {
  for (const char* zItem : {"C", "A", "B"}) {
    Line line;
    line.ItemNumber = zItem;
    AddItem(Database, line);
  }
  Database.OrderItem_RemoveItem(12, "B");
  Line line;
  line.ItemNumber = "AA";
  AddItem(Database, line);

  EXPECT_EQ((Rows{{"C"}, {"A"}, {"AA"}}),
            Store.Query("select zItemNumber from tblOrderItem order by lOrderEntered"));
  EXPECT_EQ("4", OfLine(12, "AA", "lOrderEntered"));
}

TEST_F(OrderLineStatements, AddingALineThatExistsReportsOrderNotLoadedAndChangesNothing) {
  AddLine(12, "A-1", 5, "2.5");
  const Rows before = Store.Everything();
  Line line;
  line.Quantity = 9;
  line.ExtendedPrice = Money("100");
  AddItem(Database, line);

  EXPECT_EQ("4 Order not loaded", Recorded());
  EXPECT_EQ(1u, Trace.Statements().size()) << "the total is not computed for a line that was refused";
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderLineStatements, ALineMayHaveTheItemNumberOfAnotherOrdersLine) {
  AddLine(7, "A-1", 5, "2.5");
  Line line;
  line.ExtendedPrice = Money("100");
  AddItem(Database, line);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ("1000000", OfOrder(12, "cTotalPrice"));
  EXPECT_EQ("25000", OfLine(7, "A-1", "cExtendedPrice"));
}

TEST_F(OrderLineStatements, ALineOfAnOrderThatIsNotInTheStoreIsRefused) {
  for (const std::int32_t lOrderID : {13, 0, -1}) {
    const Rows before = Store.Everything();
    Line line;
    line.OrderID = lOrderID;
    AddItem(Database, line);
    EXPECT_EQ("4 Order not loaded", Recorded()) << lOrderID;
    EXPECT_EQ(before, Store.Everything()) << lOrderID;
  }
}

TEST_F(OrderLineStatements, AddingALineStoresItBeforeTheTotalIsRead) {
  Rows seen;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.starts_with("select sum")) {
      seen =
          Store.Query("select lQuantity, cTotalPrice from tblOrderItem i join tblOrder o using (lOrderID)");
    }
  };
  Line line;
  line.Quantity = 5;
  line.ExtendedPrice = Money("2");
  AddItem(Database, line);

  EXPECT_EQ((Rows{{"5", "0"}}), seen);
  EXPECT_EQ("20000", OfOrder(12, "cTotalPrice"));
}

// --- the total

TEST_F(OrderLineStatements, TheTotalIsTheSumOfTheLinesOfTheOrder) {
  AddLine(12, "A", 1, "1.25");
  AddLine(12, "B", 1, "-0.5");
  AddLine(12, "C", 1, "100.0001");
  AddLine(7, "A", 1, "50");
  Database.Order_UpdateTotalPrice(12);

  EXPECT_EQ((Texts{"select sum(cExtendedPrice) from tblOrderItem where lOrderID = 12",
                   "update tblOrder set cTotalPrice = 100.7501 where lOrderID = 12"}),
            Trace.Take());
  EXPECT_EQ("1007501", OfOrder(12, "cTotalPrice"));
  EXPECT_EQ("0", OfOrder(7, "cTotalPrice"));

  Database.Order_UpdateTotalPrice(7);
  EXPECT_EQ((Texts{"select sum(cExtendedPrice) from tblOrderItem where lOrderID = 7",
                   "update tblOrder set cTotalPrice = 50 where lOrderID = 7"}),
            Trace.Take());
  EXPECT_EQ("500000", OfOrder(7, "cTotalPrice"));
}

TEST_F(OrderLineStatements, TheTotalOfAnOrderWithoutLinesIsStoredAsZero) {
  Store.Run("update tblOrder set cTotalPrice = 990000");
  Database.Order_UpdateTotalPrice(12);

  EXPECT_EQ((Texts{"select sum(cExtendedPrice) from tblOrderItem where lOrderID = 12",
                   "update tblOrder set cTotalPrice = 0 where lOrderID = 12"}),
            Trace.Statements());
  EXPECT_EQ("0", OfOrder(12, "cTotalPrice"));
  EXPECT_EQ("990000", OfOrder(7, "cTotalPrice"));
}

TEST_F(OrderLineStatements, TheTotalOfAnOrderThatIsNotThereChangesNothing) {
  AddLine(12, "A", 1, "1.25");
  const Rows before = Store.Everything();
  Database.Order_UpdateTotalPrice(-13);

  EXPECT_EQ((Texts{"select sum(cExtendedPrice) from tblOrderItem where lOrderID = -13",
                   "update tblOrder set cTotalPrice = 0 where lOrderID = -13"}),
            Trace.Statements());
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderLineStatements, NobodyCanChangeALineBetweenTheSumAndTheTotal) {
  AddLine(12, "A", 1, "1.25");
  std::string zRefused;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.starts_with("update tblOrder")) {
      try {
        Store.Run("pragma busy_timeout = 0; update tblOrderItem set cExtendedPrice = 0");
      } catch (const std::runtime_error& error) {
        zRefused = error.what();
      }
    }
  };
  Database.Order_UpdateTotalPrice(12);

  EXPECT_NE(std::string::npos, zRefused.find("database is locked")) << zRefused;
  EXPECT_EQ("12500", OfOrder(12, "cTotalPrice"));
}

TEST_F(OrderLineStatements, TheStoredTotalIsRead) {
  Store.Run("update tblOrder set cTotalPrice = 1234567 where lOrderID = 12");

  EXPECT_EQ(Money("123.4567"), Database.Order_GetTotalPrice(12));
  EXPECT_EQ(Money("0"), Database.Order_GetTotalPrice(7));
  EXPECT_EQ((Texts{"select cTotalPrice from tblOrder where lOrderID = 12",
                   "select cTotalPrice from tblOrder where lOrderID = 7"}),
            Trace.Statements());
}

TEST_F(OrderLineStatements, TheTotalOfAnOrderThatIsNotThereIsZero) {
  EXPECT_EQ(Money("0"), Database.Order_GetTotalPrice(-1));
  EXPECT_EQ((Texts{"select cTotalPrice from tblOrder where lOrderID = -1"}), Trace.Statements());
  EXPECT_EQ("0 ", Recorded());
}

// --- one line

TEST_F(OrderLineStatements, IncrementingAQuantitySetsItToTheValueGiven) {
  AddLine(12, "A-1", 5, "10");
  AddLine(12, "A-2", 6, "20");
  AddLine(7, "A-1", 7, "30");
  Database.OrderDetails_IncrementQuantity(12, "A-1", 3, Money("1.25"), Money("3.75"));

  EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = 3, cPrice = 1.25, cExtendedPrice = 3.75 "
                   "where lOrderID = 12 and zItemNumber = 'A-1'"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"12", "A-1", "3", "12500", "37500"},
                  {"12", "A-2", "6", "0", "200000"},
                  {"7", "A-1", "7", "0", "300000"}}),
            Store.Query("select lOrderID, zItemNumber, lQuantity, cPrice, cExtendedPrice from tblOrderItem "
                        "order by lOrderEntered"));
  EXPECT_EQ("0", OfOrder(12, "cTotalPrice")) << "the total is left to the caller";
}

TEST_F(OrderLineStatements, IncrementingTakesAnyNumberAndAnItemNumberWithBlanksAsItStands) {
  AddOrder(-1);
  AddLine(-1, " A  1 ", 5);
  Database.OrderDetails_IncrementQuantity(-1, " A  1 ", -2147483647, Money("-1.5"), Money("0"));

  EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = -2147483647, cPrice = -1.5, cExtendedPrice = 0 "
                   "where lOrderID = -1 and zItemNumber = ' A  1 '"}),
            Trace.Statements());
  EXPECT_EQ("-2147483647", OfLine(-1, " A  1 ", "lQuantity"));
  EXPECT_EQ("-15000", OfLine(-1, " A  1 ", "cPrice"));
}

TEST_F(OrderLineStatements, IncrementingALineThatIsNotThereChangesNothing) {
  AddLine(12, "A-1", 5);
  const Rows before = Store.Everything();
  Database.OrderDetails_IncrementQuantity(12, "A-2", 3, Money("1"), Money("3"));
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderLineStatements, WhetherAnItemIsInAnOrder) {
  AddLine(12, "A-1");
  AddLine(12, "O'Neil");

  EXPECT_TRUE(Database.OrderDetails_ItemExists(12, "A-1"));
  EXPECT_FALSE(Database.OrderDetails_ItemExists(12, "A-2"));
  EXPECT_FALSE(Database.OrderDetails_ItemExists(7, "A-1"));
  EXPECT_TRUE(Database.OrderDetails_ItemExists(12, "O'Neil"));
  EXPECT_FALSE(Database.OrderDetails_ItemExists(-1, ""));
  EXPECT_EQ((Texts{"select count(*) from tblOrderItem where zItemNumber = 'A-1' and lOrderID = 12",
                   "select count(*) from tblOrderItem where zItemNumber = 'A-2' and lOrderID = 12",
                   "select count(*) from tblOrderItem where zItemNumber = 'A-1' and lOrderID = 7",
                   "select count(*) from tblOrderItem where zItemNumber = 'O''Neil' and lOrderID = 12",
                   "select count(*) from tblOrderItem where zItemNumber = '' and lOrderID = -1"}),
            Trace.Statements());
}

TEST_F(OrderLineStatements, TheQuantityOfAStoredLine) {
  AddLine(12, "A-1", 5);
  AddLine(12, "O'Neil", -6);
  AddLine(12, "Z", 0);

  EXPECT_EQ(5, Database.OrderDetails_GetQuantity(12, "A-1"));
  EXPECT_EQ(-6, Database.OrderDetails_GetQuantity(12, "O'Neil"));
  EXPECT_EQ(0, Database.OrderDetails_GetQuantity(12, "Z"));
  EXPECT_EQ(std::nullopt, Database.OrderDetails_GetQuantity(7, "A-1"));
  EXPECT_EQ((Texts{"select lQuantity from tblOrderItem where zItemNumber = 'A-1' and lOrderID = 12",
                   "select lQuantity from tblOrderItem where zItemNumber = 'O''Neil' and lOrderID = 12",
                   "select lQuantity from tblOrderItem where zItemNumber = 'Z' and lOrderID = 12",
                   "select lQuantity from tblOrderItem where zItemNumber = 'A-1' and lOrderID = 7"}),
            Trace.Statements());
}

TEST_F(OrderLineStatements, TheNumberOfLinesOfAnOrder) {
  AddLine(12, "A-1", 5);
  AddLine(12, "A-2", 0);
  AddLine(12, "A-3", -1);
  AddLine(7, "A-1");

  EXPECT_EQ(3, Database.OrderDetails_ItemCount(12));
  EXPECT_EQ(1, Database.OrderDetails_ItemCount(7));
  EXPECT_EQ(0, Database.OrderDetails_ItemCount(-1));
  EXPECT_EQ((Texts{"select count(*) from tblOrderItem where lOrderID = 12",
                   "select count(*) from tblOrderItem where lOrderID = 7",
                   "select count(*) from tblOrderItem where lOrderID = -1"}),
            Trace.Statements());
  EXPECT_EQ("0 ", Recorded());
}

TEST_F(OrderLineStatements, UpdatingAnItemChangesItsLinesInEveryOrder) {
  AddLine(12, "A-1", 5, "10");
  AddLine(12, "A-2", 6, "20");
  AddLine(7, "A-1", 7, "30");
  Store.Run("update tblOrderItem set zDescription = 'kept'; update tblOrder set cTotalPrice = 77");
  Database.OrderDetails_UpdateItem("A-1", 2, Money("12.5"), Money("25"), true, false);

  EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = 2, cPrice = 12.5, cExtendedPrice = 25, "
                   "bIsPriceModified = True, bIsTaxable = False where zItemNumber = 'A-1'"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"12", "A-1", "2", "125000", "250000", "-1", "0", "kept"},
                  {"12", "A-2", "6", "0", "200000", "0", "0", "kept"},
                  {"7", "A-1", "2", "125000", "250000", "-1", "0", "kept"}}),
            Store.Query("select lOrderID, zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, "
                        "bIsTaxable, zDescription from tblOrderItem order by lOrderEntered"));
  EXPECT_EQ((Rows{{"77"}, {"77"}}), Store.Query("select cTotalPrice from tblOrder"));
}

TEST_F(OrderLineStatements, UpdatingAnItemWithTheOtherFlags) {
  AddLine(12, "a b", 5);
  Database.OrderDetails_UpdateItem("a b", 0, Money("0"), Money("-25.0001"), false, true);

  EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = 0, cPrice = 0, cExtendedPrice = -25.0001, "
                   "bIsPriceModified = False, bIsTaxable = True where zItemNumber = 'a b'"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"0", "0", "-250001", "0", "-1"}}),
            Store.Query("select lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable "
                        "from tblOrderItem"));
}

// --- removing lines

TEST_F(OrderLineStatements, RemovingALineLeavesNoBlankBehindTheOrderAndStoresTheTotal) {
  AddLine(12, "A-1", 5, "10");
  AddLine(12, "A-2", 6, "20.5");
  AddLine(7, "A-1", 7, "30");
  Database.OrderItem_RemoveItem(12, "A-1");

  EXPECT_EQ((Texts{"delete from tblOrderItem where lOrderID = 12and zItemNumber = 'A-1'",
                   "select sum(cExtendedPrice) from tblOrderItem where lOrderID = 12",
                   "update tblOrder set cTotalPrice = 20.5 where lOrderID = 12"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"12", "A-2"}, {"7", "A-1"}}),
            Store.Query("select lOrderID, zItemNumber from tblOrderItem order by lOrderEntered"));
  EXPECT_EQ("205000", OfOrder(12, "cTotalPrice"));
}

TEST_F(OrderLineStatements, RemovingTheLastLineStoresATotalOfZero) {
  AddOrder(-1);
  AddLine(-1, "A b", 5, "10");
  Store.Run("update tblOrder set cTotalPrice = 100000");
  Database.OrderItem_RemoveItem(-1, "A b");

  EXPECT_EQ((Texts{"delete from tblOrderItem where lOrderID = -1and zItemNumber = 'A b'",
                   "select sum(cExtendedPrice) from tblOrderItem where lOrderID = -1",
                   "update tblOrder set cTotalPrice = 0 where lOrderID = -1"}),
            Trace.Statements());
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrderItem"));
  EXPECT_EQ("0", OfOrder(-1, "cTotalPrice"));
  EXPECT_EQ("100000", OfOrder(12, "cTotalPrice"));
}

TEST_F(OrderLineStatements, RemovingALineThatIsNotThereStillStoresTheTotal) {
  AddLine(12, "A-1", 5, "10");
  Database.OrderItem_RemoveItem(12, "A-2");

  EXPECT_EQ("1", Store.Value("select count(*) from tblOrderItem"));
  EXPECT_EQ("100000", OfOrder(12, "cTotalPrice"));
}

TEST_F(OrderLineStatements, ClearingRemovesAllLinesOfTheOrderAndItsTotal) {
  AddLine(12, "A-1", 5, "10");
  AddLine(12, "A-2", 6, "20");
  AddLine(7, "A-1", 7, "30");
  Store.Run("update tblOrder set cTotalPrice = 300000");
  Database.OrderDetails_ClearItems(12);

  EXPECT_EQ((Texts{"delete from tblOrderItem where lOrderID = 12",
                   "update tblOrder set cTotalPrice = 0 where lOrderID = 12"}),
            Trace.Take());
  EXPECT_EQ((Rows{{"7", "A-1"}}), Store.Query("select lOrderID, zItemNumber from tblOrderItem"));
  EXPECT_EQ("0", OfOrder(12, "cTotalPrice"));
  EXPECT_EQ("300000", OfOrder(7, "cTotalPrice"));

  Database.OrderDetails_ClearItems(-5);
  EXPECT_EQ((Texts{"delete from tblOrderItem where lOrderID = -5",
                   "update tblOrder set cTotalPrice = 0 where lOrderID = -5"}),
            Trace.Take());
}

TEST_F(OrderLineStatements, ClearingRunsTwoStatementsOfTheirOwn) {
  AddLine(12, "A-1", 5, "10");
  Store.Run("update tblOrder set cTotalPrice = 100000 where lOrderID = 12");
  Rows seen;
  Trace.Before = [&](const std::string& zSQL) {
    if (zSQL.starts_with("update")) {
      seen = Store.Query(
          "select cTotalPrice, (select count(*) from tblOrderItem) from tblOrder "
          "where lOrderID = 12");
      throw std::runtime_error("stopped half-way");
    }
  };
  EXPECT_EQ(5, RaisedNumber([&] { Database.OrderDetails_ClearItems(12); }));

  EXPECT_EQ((Rows{{"100000", "0"}}), seen);
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrderItem")) << "the first statement stands";
  EXPECT_EQ("100000", OfOrder(12, "cTotalPrice"));
}

// --- bringing the lines in line with a collection

TEST_F(OrderLineStatements, UpdatingTheItemsRemovesThoseWithQuantityZeroAndWritesTheOthers) {
  for (const char* zItem : {"A", "B", "C", "D", "E"}) {
    AddLine(12, zItem, 5, "10");
    AddLine(7, zItem, 5, "10");
  }
  Store.Run("update tblOrder set cTotalPrice = 500000");
  OrderItems items;
  items.Add(Item("D", 0), "D");
  items.Add(Item("B", 2, "1.5", "3", true, false), "B");
  items.Add(Item("A", 0), "A");
  items.Add(Item("C", -3, "0.0001", "-0.0003", false, true), "C");
  Database.OrderDetails_UpdateItems(12, items);

  EXPECT_EQ((Texts{"delete from tblOrderItem where lOrderID = 12 and zItemNumber in ('D', 'A')",
                   "select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable "
                   "from tblOrderItem where lOrderID = 12 and zItemNumber in ('B', 'C')"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"B", "2", "15000", "30000", "-1", "0"},
                  {"C", "-3", "1", "-3", "0", "-1"},
                  {"E", "5", "0", "100000", "0", "0"}}),
            Store.Query("select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable "
                        "from tblOrderItem where lOrderID = 12 order by zItemNumber"));
  EXPECT_EQ((Rows{{"5", "5", "100000"}}),
            Store.Query("select count(*), max(lQuantity), max(cExtendedPrice) from tblOrderItem "
                        "where lOrderID = 7"));
  EXPECT_EQ("500000", OfOrder(12, "cTotalPrice")) << "the total is left to the caller";
}

TEST_F(OrderLineStatements, UpdatingOneItemRunsOneStatement) {
  AddLine(7, "A 1", 5, "10");
  OrderItems items;
  items.Add(Item("A 1", 1, "2", "2", true, true), "A 1");
  Database.OrderDetails_UpdateItems(7, items);

  EXPECT_EQ((Texts{"select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable "
                   "from tblOrderItem where lOrderID = 7 and zItemNumber in ('A 1')"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"1", "20000", "20000", "-1", "-1"}}),
            Store.Query("select lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable "
                        "from tblOrderItem"));
}

TEST_F(OrderLineStatements, UpdatingItemsThatAllHaveQuantityZeroRemovesThemAndOpensNoResultSet) {
  AddLine(12, "A", 5);
  AddLine(12, "B", 5);
  AddLine(12, "C", 5);
  OrderItems items;
  items.Add(Item("A", 0), "A");
  items.Add(Item("C", 0), "C");
  Database.OrderDetails_UpdateItems(12, items);

  EXPECT_EQ((Texts{"delete from tblOrderItem where lOrderID = 12 and zItemNumber in ('A', 'C')"}),
            Trace.Statements());
  EXPECT_EQ((Rows{{"B"}}), Store.Query("select zItemNumber from tblOrderItem"));
}

TEST_F(OrderLineStatements, UpdatingNoItemsDoesNothing) {
  AddLine(12, "A", 5);
  const Rows before = Store.Everything();
  Database.OrderDetails_UpdateItems(12, OrderItems());

  EXPECT_EQ(Texts{}, Trace.Statements());
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderLineStatements, UpdatingNoItemsDoesNotLookForTheStore) {
  std::filesystem::remove_all(Folder.Path());
  EXPECT_NO_THROW(Database.OrderDetails_UpdateItems(12, OrderItems()));
}

TEST_F(OrderLineStatements, UpdatingItemsPassesOverThoseThatAreNotStored) {
  AddLine(12, "A", 5);
  OrderItems items;
  items.Add(Item("B", 3), "B");
  items.Add(Item("A", 6), "A");
  items.Add(Item("C", 0), "C");
  Database.OrderDetails_UpdateItems(12, items);

  EXPECT_EQ((Rows{{"A", "6"}}), Store.Query("select zItemNumber, lQuantity from tblOrderItem"));
}

TEST_F(OrderLineStatements, UpdatingItemsThatAreAsTheyAreStoredIsNoFailure) {
  AddLine(12, "A", 5, "10");
  const Rows before = Store.Everything();
  OrderItems items;
  items.Add(Item("A", 5, "0", "10"), "A");
  Database.OrderDetails_UpdateItems(12, items);
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderLineStatements, UpdatingAnItemUnderAnotherKeyThanItsNumberRaisesAndWritesNothing) {
  AddLine(12, "A", 5);
  AddLine(12, "B", 5);
  const Rows before = Store.Everything();
  OrderItems items;
  items.Add(Item("A", 6), "A");
  items.Add(Item("B", 6), "another");
  EXPECT_EQ(91, RaisedNumber([&] { Database.OrderDetails_UpdateItems(12, items); }));
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(OrderLineStatements, UpdatingManyItemsWritesEachOfThem) {
  OrderItems items;
  std::string zInsert;
  for (int i = 0; i < 2000; ++i) {
    zInsert += "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity) values (12, 'N" +
               std::to_string(i) + "', 1); ";
    items.Add(Item("N" + std::to_string(i), i % 3 == 0 ? 0 : i + 2), "N" + std::to_string(i));
  }
  Store.Run("begin; " + zInsert + "commit");
  Database.OrderDetails_UpdateItems(12, items);

  EXPECT_EQ(2u, Trace.Statements().size());
  EXPECT_EQ("1333", Store.Value("select count(*) from tblOrderItem"));
  EXPECT_EQ("1333", Store.Value("select count(*) from tblOrderItem "
                                "where lQuantity = substr(zItemNumber, 2) + 2"));
}

// --- the line as a whole

TEST_F(OrderLineStatements, SavingALineWritesItsValuesIntoEveryLineOfEveryOrder) {
  AddLine(12, "A-1", 1);
  AddLine(12, "A-2", 2);
  AddLine(7, "A-1", 3);
  Store.Run(
      "update tblOrderItem set zShortDescription = 'short', lUsuallyShipsSortOrder = 2, bHasNotes = -1, "
      "bHasPartsInfo = -1, bImported = -1; update tblOrder set cTotalPrice = 77");
  Database.OrderItem_Save(12, "A-2", 5, "Hammer", "Maker", "M-5", 6, 7, "today", true, Money("12.5"),
                          Money("62.5"), false, "PN-9", "Notes");

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = 5, zDescription = 'Hammer', zManufacturer = 'Maker', "
                   "zModel = 'M-5', lSellQuantity = 6, lShipQuantity = 7, zUsuallyShips = 'today', "
                   "bIsTaxable = True, cPrice = 12.5, cExtendedPrice = 62.5, bIsPriceModified = False, "
                   "zCustomerPartNumber = 'PN-9', zCustomerNotes = 'Notes'"}),
            Trace.Statements());
  const Row rest = {"5",      "Hammer", "Maker", "M-5",   "6",     "7", "today", "-1", "125000",
                    "625000", "0",      "PN-9",  "Notes", "short", "2", "-1",    "-1", "-1"};
  Rows expected;
  for (const auto& [zOrder, zItem] :
       std::vector<std::pair<std::string, std::string>>{{"12", "A-1"}, {"12", "A-2"}, {"7", "A-1"}}) {
    Row row = {zOrder, zItem};
    row.insert(row.end(), rest.begin(), rest.end());
    expected.push_back(row);
  }
  EXPECT_EQ(expected,
            Store.Query("select lOrderID, zItemNumber, lQuantity, zDescription, zManufacturer, zModel, "
                        "lSellQuantity, lShipQuantity, zUsuallyShips, bIsTaxable, cPrice, cExtendedPrice, "
                        "bIsPriceModified, zCustomerPartNumber, zCustomerNotes, zShortDescription, "
                        "lUsuallyShipsSortOrder, bHasNotes, bHasPartsInfo, bImported "
                        "from tblOrderItem order by lOrderEntered"));
  EXPECT_EQ((Rows{{"77"}, {"77"}}), Store.Query("select cTotalPrice from tblOrder"));
}

TEST_F(OrderLineStatements, SavingALineDoublesTheQuotesOfAllTextsButTheShippingEstimate) {
  AddLine(7, "A-1", 3);
  // The order and the item number, which the statement does not name, may be anything.
  Database.OrderItem_Save(-99, "it's not there", -5, "D'", "'M'", "''", 0, -7, " 1-3 DAYS ", false,
                          Money("-12.5001"), Money("0"), true, "P'N", "N'o''tes");

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{"update tblOrderItem set lQuantity = -5, zDescription = 'D''', zManufacturer = '''M''', "
                   "zModel = '''''', lSellQuantity = 0, lShipQuantity = -7, zUsuallyShips = ' 1-3 DAYS ', "
                   "bIsTaxable = False, cPrice = -12.5001, cExtendedPrice = 0, bIsPriceModified = True, "
                   "zCustomerPartNumber = 'P''N', zCustomerNotes = 'N''o''''tes'"}),
            Trace.Statements());
  EXPECT_EQ(
      (Rows{
          {"-5", "D'", "'M'", "''", "0", "-7", " 1-3 DAYS ", "0", "-125001", "0", "-1", "P'N", "N'o''tes"}}),
      Store.Query("select lQuantity, zDescription, zManufacturer, zModel, lSellQuantity, lShipQuantity, "
                  "zUsuallyShips, bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, "
                  "zCustomerPartNumber, zCustomerNotes from tblOrderItem"));
}

// --- reading the lines

const std::vector<std::string> kOrderBy = {
    "lOrderEntered, zItemNumber", "zItemNumber",         "zDescription,  zItemNumber",
    "zManufacturer, zItemNumber", "zModel, zItemNumber", "lUsuallyShipsSortOrder, zItemNumber",
    "cPrice, zItemNumber",
};

std::string ItemNumbers(qm_ordering::ado::Recordset& rows) {
  std::string zAll;
  for (; !rows.AtEnd(); rows.MoveNext()) {
    zAll += rows.Fields("zItemNumber").Value().ToString() + " ";
  }
  return zAll;
}

TEST_F(OrderLineStatements, ReadingTheLinesInEachOfTheSevenOrders) {
  Store.Run(
      "insert into tblOrderItem (lOrderID, zItemNumber, zDescription, zManufacturer, zModel, "
      "lUsuallyShipsSortOrder, cPrice) values (12, 'I3', 'c', 'A', 'd', 1, 10000), "
      "(12, 'I1', 'B', 'd', 'C', 999, 20000), (12, 'i4', 'a', 'B', 'b', 0, 100000), "
      "(12, 'I2', 'D', 'c', 'A', 2, -50000), (7, 'I0', 'A', 'A', 'A', 0, 0)");
  const std::vector<std::string> expected = {"I3 I1 i4 I2 ", "I1 I2 I3 i4 ", "i4 I1 I3 I2 ", "I3 i4 I2 I1 ",
                                             "I2 i4 I1 I3 ", "i4 I3 I2 I1 ", "I2 I3 I1 i4 "};
  for (std::int32_t lSortType = 0; lSortType < 7; ++lSortType) {
    const auto lIndex = static_cast<std::size_t>(lSortType);
    EXPECT_EQ(expected[lIndex], ItemNumbers(*Database.OrderDetails_GetItems(12, lSortType, false)))
        << lSortType;
    EXPECT_EQ("select * from qryGetOrderItems where lOrderID = 12 order by " + kOrderBy[lIndex],
              Trace.Statements().back());
    EXPECT_EQ(expected[lIndex], ItemNumbers(*Database.OrderDetails_GetItems(7, lSortType, true)))
        << lSortType;
    EXPECT_EQ("select * from qryGetOrderItems where bIsCurrent = True order by " + kOrderBy[lIndex],
              Trace.Statements().back());
  }
  EXPECT_EQ(14u, Trace.Statements().size());
}

TEST_F(OrderLineStatements, TheTextsThatReadTheLines) {
  static_cast<void>(Database.OrderDetails_GetItems(-1, 0, false));
  static_cast<void>(Database.OrderDetails_GetItems(12, 2, false));
  static_cast<void>(Database.OrderDetails_GetItems(12, 2, true));
  EXPECT_EQ(
      (Texts{"select * from qryGetOrderItems where lOrderID = -1 order by lOrderEntered, zItemNumber",
             "select * from qryGetOrderItems where lOrderID = 12 order by zDescription,  zItemNumber",
             "select * from qryGetOrderItems where bIsCurrent = True order by zDescription,  zItemNumber"}),
      Trace.Statements());
}

TEST_F(OrderLineStatements, LinesThatAreEqualInTheFirstKeyComeByTheirItemNumber) {
  for (const char* zItem : {"b", "A", "C", "\u00E9", "\u00C9a", "a0"}) {
    AddLine(12, zItem);
  }
  for (std::int32_t lSortType = 1; lSortType < 7; ++lSortType) {
    EXPECT_EQ("A a0 b C \u00E9 \u00C9a ", ItemNumbers(*Database.OrderDetails_GetItems(12, lSortType, false)))
        << lSortType;
  }
}

TEST_F(OrderLineStatements, ASortOrderThatDoesNotExistFailsBeforeTheStoreIsTouched) {
  std::filesystem::remove_all(Folder.Path());
  for (const std::int32_t lSortType :
       {7, 8, -1, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
    for (const bool bCurrent : {false, true}) {
      EXPECT_EQ(9, RaisedNumber([&] { Database.OrderDetails_GetItems(12, lSortType, bCurrent); }))
          << lSortType;
    }
  }
  EXPECT_EQ(Texts{}, Trace.Statements());
}

TEST_F(OrderLineStatements, ReadLinesHaveEveryColumnInItsKind) {
  Store.Run(
      "insert into tblOrderItem values (41, 12, 'I', 1, 'D', 'SD', 'MA', 'MO', 2, 3, 'US', 4, -1, 50000, "
      "60000, "
      "0, 'PN', 'CN', -1, 0, -1, -1)");
  const auto rows = Database.OrderDetails_GetItems(12, 0, false);
  ASSERT_FALSE(rows->AtEnd());
  using qm_ordering::Variant;
  const std::vector<std::pair<const char*, Variant>> expected = {
      {"lOrderEntered", 41},
      {"lOrderID", 12},
      {"zItemNumber", "I"},
      {"lQuantity", 1},
      {"zDescription", "D"},
      {"zShortDescription", "SD"},
      {"zManufacturer", "MA"},
      {"zModel", "MO"},
      {"lSellQuantity", 2},
      {"lShipQuantity", 3},
      {"zUsuallyShips", "US"},
      {"lUsuallyShipsSortOrder", 4},
      {"bIsTaxable", true},
      {"cPrice", Money("5")},
      {"cExtendedPrice", Money("6")},
      {"bIsPriceModified", false},
      {"zCustomerPartNumber", "PN"},
      {"zCustomerNotes", "CN"},
      {"bHasNotes", true},
      {"bHasPartsInfo", false},
      {"bHasContractItem", true},
      {"bImported", true},
      {"bIsCurrent", true},
  };
  for (const auto& [zColumn, vValue] : expected) {
    EXPECT_TRUE(vValue == rows->Fields(zColumn).Value()) << zColumn;
  }
}

TEST_F(OrderLineStatements, ReadingTheLinesOfAnOrderThatIsNotThereGivesNone) {
  AddLine(7, "A");
  EXPECT_TRUE(Database.OrderDetails_GetItems(99, 0, false)->AtEnd());
  EXPECT_TRUE(Database.OrderDetails_GetItems(7, 0, true)->AtEnd());
}

}  // namespace
