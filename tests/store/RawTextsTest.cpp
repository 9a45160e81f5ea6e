#include <gtest/gtest.h>

#include <functional>

#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// The texts that a statement takes as they are. One with a quote fails its statement, whatever else it holds;
// every other one is only a text.

namespace {

using qm_ordering::Database;
using qm_ordering::OrderItems;
using test::Item;
using test::Money;
using test::RaisedNumber;
using test::Rows;
using Texts = std::vector<std::string>;

// An operation on order 12 with its one raw text.
struct RawText {
  const char* Name;
  std::function<void(Database&, const std::string& zvText)> Run;
  std::string Before, After;  // the statement around the text
  // What the record says when the text is refused; null when the operation raises.
  const char* Recorded;
  // What shows on the line A-1 that the operation found it by its text; null when the text names no line.
  const char* Effect;
};

const std::vector<RawText>& RawTexts() {
  static const std::vector<RawText> texts = {
      {"the shipping estimate of an added line",
       [](Database& oDatabase, const std::string& zvText) {
         test::Line line;
         line.ItemNumber = "NEW";
         line.UsuallyShips = zvText;
         AddItem(oDatabase, line);
       },
       "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
       "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
       "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, "
       "bHasNotes, bHasPartsInfo) values (12, 'NEW', 1, '', '', '', '', 1, 1, '",
       "', 999, False, 0, 0, False, '', '', False, False)", "4 Order not loaded", nullptr},
      {"the shipping estimate of a saved line",
       [](Database& oDatabase, const std::string& zvText) {
         test::SavedLine line;
         line.UsuallyShips = zvText;
         SaveLine(oDatabase, line);
       },
       "update tblOrderItem set lQuantity = 1, zDescription = '', zManufacturer = '', zModel = '', "
       "lSellQuantity = 1, lShipQuantity = 1, zUsuallyShips = '",
       "', bIsTaxable = False, cPrice = 0, cExtendedPrice = 0, bIsPriceModified = False, "
       "zCustomerPartNumber = '', zCustomerNotes = ''",
       "5 -2147217900 : ", nullptr},
      {"the item whose quantity is set",
       [](Database& oDatabase, const std::string& zvText) {
         oDatabase.OrderDetails_IncrementQuantity(12, zvText, 3, Money("1"), Money("3"));
       },
       "update tblOrderItem set lQuantity = 3, cPrice = 1, cExtendedPrice = 3 where lOrderID = 12 and "
       "zItemNumber = '",
       "'", nullptr, "3"},
      {"the item that is updated in every order",
       [](Database& oDatabase, const std::string& zvText) {
         oDatabase.OrderDetails_UpdateItem(zvText, 4, Money("1"), Money("4"), true, false);
       },
       "update tblOrderItem set lQuantity = 4, cPrice = 1, cExtendedPrice = 4, bIsPriceModified = True, "
       "bIsTaxable = False where zItemNumber = '",
       "'", nullptr, "4"},
      {"the item of a collection that is removed",
       [](Database& oDatabase, const std::string& zvText) {
         OrderItems items;
         items.Add(Item(zvText, 0), zvText);
         oDatabase.OrderDetails_UpdateItems(12, items);
       },
       "delete from tblOrderItem where lOrderID = 12 and zItemNumber in ('", "')", nullptr, "gone"},
      {"the item of a collection that is written",
       [](Database& oDatabase, const std::string& zvText) {
         OrderItems items;
         items.Add(Item(zvText, 6), zvText);
         oDatabase.OrderDetails_UpdateItems(12, items);
       },
       "select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, bIsTaxable from "
       "tblOrderItem where lOrderID = 12 and zItemNumber in ('",
       "')", nullptr, "6"},
      {"the item that is removed",
       [](Database& oDatabase, const std::string& zvText) { oDatabase.OrderItem_RemoveItem(12, zvText); },
       "delete from tblOrderItem where lOrderID = 12and zItemNumber = '", "'", nullptr, "gone"},
      {"the item whose part number is written",
       [](Database& oDatabase, const std::string& zvText) {
         oDatabase.UpdateCustPartInfo({zvText}, {"P"}, {"7"}, 12);
       },
       "UPDATE tblOrderItem SET zCustomerPartNumber='P',zCustomerNotes='7' WHERE (lOrderID=12  AND  "
       "zItemNumber='",
       "');", nullptr, "7"},
  };
  return texts;
}

class RawTextsOfStatements : public test::DatabaseFixture {
 protected:
  RawTextsOfStatements() {
    AddOrder(7);
    AddOrder(12, true);
    for (const char* zItem : {"A-1", "a", "x"}) {
      AddLine(12, zItem, 1, "10");
      AddLine(7, zItem, 1, "10");
    }
  }
};

const Texts kWithQuotes = {
    "'",
    "''",
    "A'1",
    "A-1'",
    "'A-1",
    "x' or 'a'='a",
    "x' or 'a' = 'a' or zItemNumber = 'x",
    "' or True or ''='",
    "A-1' --",
    "A-1'; delete from tblOrder; --",
    "A-1'') or (''=''",
    "A-1') or ('a'='a",
    "A-1', 'x",
    "A''1",
    "x', 0, True, 0, 0, True, '', '', True, True) --",
    std::string("A\0'", 3),
    "\xC3\xA9'\xF0\x9F\x98\x80",
};

TEST_F(RawTextsOfStatements, ARawTextWithAQuoteFailsItsStatementAndChangesNothing) {
  const Rows before = Store.Everything();
  for (const RawText& raw : RawTexts()) {
    for (const std::string& zText : kWithQuotes) {
      SCOPED_TRACE(std::string(raw.Name) + ": " + zText);
      Trace.Take();
      const std::int32_t lRaised = RaisedNumber([&] { raw.Run(Database, zText); });
      if (raw.Recorded == nullptr) {
        EXPECT_EQ(-2147217900, lRaised);
        EXPECT_EQ("0 ", Recorded());
      } else {
        EXPECT_EQ(0, lRaised);
        EXPECT_TRUE(Recorded().starts_with(raw.Recorded)) << Recorded();
      }
      EXPECT_EQ((Texts{raw.Before + zText + raw.After}), Trace.Statements())
          << "the refused text is shown as it is, and no statement follows it";
    }
    EXPECT_EQ(before, Store.Everything()) << raw.Name;
  }
}

TEST_F(RawTextsOfStatements, ARefusedAddedLineRecordsTheStandardTextAlone) {
  test::Line line;
  line.UsuallyShips = "2 weeks' time";
  AddItem(Database, line);
  EXPECT_EQ("4 Order not loaded", Recorded());
}

TEST_F(RawTextsOfStatements, AnyOtherTextIsOnlyAText) {
  const Texts texts = {
      "A;B",          "A -- B",   "A /* B */",
      "A\\B",         "A\"B\"",   "%",
      "A_%",          "*",        "[A]",
      "`A`",          "?",        ":A",
      "@A",           "$1",       "#A#",
      "True",         "null",     "12",
      "(A)",          ")",        ",",
      "  ",           "",         "A\nB",
      "A\tB",         "A\r\nB",   "\xE2\x80\x99",
      "\xEF\xBC\x87", "\xCA\xBC", "\xF0\x9F\x98\x80",
      "\xC3\xA9",     "or 1=1",   "\\",
      "A\x01",        "A\x7F",    std::string("A\0B", 3),
  };
  for (const RawText& raw : RawTexts()) {
    for (const std::string& zText : texts) {
      SCOPED_TRACE(std::string(raw.Name) + ": " + zText);
      Trace.Take();
      if (raw.Effect == nullptr) {
        raw.Run(Database, zText);
        EXPECT_EQ("0 ", Recorded());
        const std::string zItem = raw.Recorded[0] == '4' ? "NEW" : "A-1";
        EXPECT_EQ(zText, OfLine(12, zItem, "zUsuallyShips"));
        Store.Run("delete from tblOrderItem where zItemNumber = 'NEW'");
      } else {
        test::Line line;
        line.ItemNumber = zText;
        AddItem(Database, line);
        const Rows others = Store.Query("select * from tblOrderItem where lOrderEntered <= 6");
        Trace.Take();
        raw.Run(Database, zText);
        const Rows found = Store.Query(
            "select case when zCustomerNotes = '' then lQuantity else zCustomerNotes end "
            "from tblOrderItem where lOrderEntered > 6");
        EXPECT_EQ(raw.Effect == std::string("gone") ? Rows{} : Rows{{raw.Effect}}, found);
        EXPECT_EQ(others, Store.Query("select * from tblOrderItem where lOrderEntered <= 6"));
        Store.Run("delete from tblOrderItem where lOrderEntered > 6");
      }
      EXPECT_EQ(raw.Before + zText + raw.After, Trace.Statements().at(0));
    }
  }
}

TEST_F(RawTextsOfStatements, AQuoteInOneItemOfACollectionFailsTheStatementForAllOfThem) {
  for (const std::int32_t lQuantity : {0, 9}) {
    const Rows before = Store.Everything();
    OrderItems items;
    items.Add(Item("A-1", lQuantity), "A-1");
    items.Add(Item("x'", lQuantity), "x'");
    items.Add(Item("a", lQuantity), "a");
    EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.OrderDetails_UpdateItems(12, items); }));
    EXPECT_TRUE(
        Trace.Statements().back().ends_with("where lOrderID = 12 and zItemNumber in ('A-1', 'x'', 'a')"));
    EXPECT_EQ(before, Store.Everything());
  }
}

TEST_F(RawTextsOfStatements, AQuoteAmongTheItemsToWriteComesWhenThoseToRemoveAreGone) {
  OrderItems items;
  items.Add(Item("a", 0), "a");
  items.Add(Item("A-1", 9), "A-1");
  items.Add(Item("x'", 9), "x'");
  EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.OrderDetails_UpdateItems(12, items); }));
  EXPECT_EQ((Rows{{"A-1", "1"}, {"x", "1"}}),
            Store.Query("select zItemNumber, lQuantity from tblOrderItem where lOrderID = 12 order by 1"));
}

TEST_F(RawTextsOfStatements, AQuoteAmongTheItemsToRemoveFailsBeforeAnItemIsWritten) {
  const Rows before = Store.Everything();
  OrderItems items;
  items.Add(Item("A-1", 9), "A-1");
  items.Add(Item("x'", 0), "x'");
  EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.OrderDetails_UpdateItems(12, items); }));
  EXPECT_EQ(1u, Trace.Statements().size());
  EXPECT_EQ(before, Store.Everything());
}

}  // namespace
