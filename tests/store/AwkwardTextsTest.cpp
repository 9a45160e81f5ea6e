#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "tests/store/DatabaseFixture.h"
#include "tests/support/RaisedNumber.h"

// Texts that mean something to a statement are stored intact wherever a statement escapes them, and texts
// that are no UTF-8 fail it.

namespace {

using qm_ordering::Database;
using qm_ordering::OrderHeader;
using test::RaisedNumber;
using test::Row;
using test::Rows;
using Texts = std::vector<std::string>;

const Texts& Awkward() {
  static const Texts texts = {
      "O'Neil",
      "'",
      "''",
      "'; delete from tblOrder; --",
      "' or '1'='1",
      "\\",
      "\\'",
      "C:\\new\\'",
      "100%",
      "_%*?[a-z]#",
      "a;b;",
      "-- a",
      "/* a */",
      "/*",
      "*/",
      "line 1\nline 2",
      "line 1\r\nline 2\r\n",
      "\t",
      "a\tb",
      " leading and trailing ",
      "   ",
      "\"quoted\"",
      "`a` [b] {c} $1 ?1 :d @e",
      "null",
      "Null",
      "True",
      "007",
      "1e5",
      "-0",
      "2003-07-04",
      "\xC3\x89tienne \xC3\x9F",
      "e\xCC\x81",
      "\xE2\x80\x99",
      "\xF0\x9F\x98\x80 \xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x9A\x80",
      "\uFEFFa",
      "\xF4\x8F\xBF\xBF",
      "\x01\x02\x1F\x7F",
      std::string("a\0b", 3),
      std::string("\0", 1),
      std::string("'\0'", 3),
      std::string("tail\0", 5),
  };
  return texts;
}

const Texts kBroken = {
    "\xFF",
    "a\xC3",             // ends within a character
    "\x80",              // begins within one
    "\xC0\x80",          // a zero byte in a longer form
    "\xED\xA0\x80",      // half of a pair
    "\xF4\x90\x80\x80",  // beyond the last plane
    "'\xFF'",
};

constexpr std::size_t kMebibyte = std::size_t{1024} * 1024;

struct HeaderText {
  std::string OrderHeader::*Member;
  const char* Column;
};
const std::vector<HeaderText> kHeaderTexts = {
    {&OrderHeader::PurchaseOrderNumber, "zPurchaseOrderNumber"},
    {&OrderHeader::POReleaseNumber, "zPOReleaseNumber"},
    {&OrderHeader::OIProjectOrJobNumber, "zOIProjectOrJobNumber"},
    {&OrderHeader::OIRequisitionOrApprovalName, "zOIRequisitionOrApprovalName"},
    {&OrderHeader::OIDepartment, "zOIDepartment"},
    {&OrderHeader::OIAttention, "zOIAttention"},
    {&OrderHeader::OIPhoneNumber, "zOIPhoneNumber"},
    {&OrderHeader::OIEmail, "zOIEmail"},
    {&OrderHeader::OITaxIDNumber, "zOITaxIDNumber"},
    {&OrderHeader::DIFirstName, "zDIFirstName"},
    {&OrderHeader::DILastName, "zDILastName"},
    {&OrderHeader::DICompanyName, "zDICompanyName"},
    {&OrderHeader::DIAddress1, "zDIAddress1"},
    {&OrderHeader::DIAddress2, "zDIAddress2"},
    {&OrderHeader::DICity, "zDICity"},
    {&OrderHeader::DIState, "zDIState"},
    {&OrderHeader::DIStateOr, "zDIStateOr"},
    {&OrderHeader::DIZipOrPostCode, "zDIZipOrPostCode"},
    {&OrderHeader::DICountry, "zDICountry"},
    {&OrderHeader::DIPhoneNumber, "zDIPhoneNumber"},
    {&OrderHeader::DIPhoneExt, "zDIPhoneExt"},
    {&OrderHeader::DIFax, "zDIFax"},
    {&OrderHeader::DICallBranchNumber, "zDICallBranchNumber"},
    {&OrderHeader::DICallAttention, "zDICallAttention"},
    {&OrderHeader::DICallPhoneNumber, "zDICallPhoneNumber"},
    {&OrderHeader::DICallPhoneExt, "zDICallPhoneExt"},
    {&OrderHeader::DINotes, "zDINotes"},
    {&OrderHeader::PIMorvaneAccountNumber, "zPIMorvaneAccountNumber"},
    {&OrderHeader::CCFirstName, "zCCFirstName"},
    {&OrderHeader::CCLastName, "zCCLastName"},
    {&OrderHeader::CCCompanyName, "zCCCompanyName"},
    {&OrderHeader::CCAddress1, "zCCAddress1"},
    {&OrderHeader::CCAddress2, "zCCAddress2"},
    {&OrderHeader::CCCity, "zCCCity"},
    {&OrderHeader::CCState, "zCCState"},
    {&OrderHeader::CCStateOr, "zCCStateOr"},
    {&OrderHeader::CCZipOrPostCode, "zCCZipOrPostCode"},
    {&OrderHeader::CCCountry, "zCCCountry"},
    {&OrderHeader::CCPhoneNumber, "zCCPhoneNumber"},
    {&OrderHeader::CCPhoneExt, "zCCPhoneExt"},
    {&OrderHeader::CCFax, "zCCFax"},
    {&OrderHeader::CCAccountNumber, "zCCAccountNumber"},
    {&OrderHeader::CCComment1, "zCCComment1"},
    {&OrderHeader::CCComment2, "zCCComment2"},
    {&OrderHeader::CCComment3, "zCCComment3"},
    {&OrderHeader::CCComment4, "zCCComment4"},
};

struct LineText {
  std::string test::Line::*Member;
  const char* Column;
};
const std::vector<LineText> kLineTexts = {
    {&test::Line::ItemNumber, "zItemNumber"},
    {&test::Line::Description, "zDescription"},
    {&test::Line::ShortDescription, "zShortDescription"},
    {&test::Line::Manufacturer, "zManufacturer"},
    {&test::Line::Model, "zModel"},
    {&test::Line::CustomerPartNumber, "zCustomerPartNumber"},
    {&test::Line::CustomerNotes, "zCustomerNotes"},
};

struct SavedLineText {
  std::string test::SavedLine::*Member;
  const char* Column;
};
const std::vector<SavedLineText> kSavedLineTexts = {
    {&test::SavedLine::Description, "zDescription"},
    {&test::SavedLine::Manufacturer, "zManufacturer"},
    {&test::SavedLine::Model, "zModel"},
    {&test::SavedLine::CustomerPartNumber, "zCustomerPartNumber"},
    {&test::SavedLine::CustomerNotes, "zCustomerNotes"},
};

// The keys of the texts of a new order.
const Texts kTextKeys = {
    "DEFAULT_OI_PO_NUM",
    "DEFAULT_OI_PHONE_NUMBER",
    "DEFAULT_OI_EMAIL",
    "DEFAULT_OI_TAXIDNUMBER",
    "DEFAULT_OI_PORELEASE",
    "DEFAULT_OI_PROJECTNUMBER",
    "DEFAULT_OI_REQNAME",
    "DEFAULT_OI_DEPARTMENT",
    "DEFAULT_DI_FIRSTNAME",
    "DEFAULT_DI_LASTNAME",
    "DEFAULT_DI_COMPANYNAME",
    "DEFAULT_DI_ADDRESS1",
    "DEFAULT_DI_ADDRESS2",
    "DEFAULT_DI_CITY",
    "DEFAULT_DI_STATE",
    "DEFAULT_DI_STATEOR",
    "DEFAULT_DI_ZIP_OR_POSTCODE",
    "DEFAULT_DI_COUNTRY",
    "DEFAULT_DI_PH0NE_NUMBER",
    "DEFAULT_DI_PHONE_EXT",
    "DEFAULT_DI_FAX",
    "DEFAULT_DI_NOTES",
    "DEFAULT_DI_CALL_BRANCH_NUMBER",
    "DEFAULT_DI_CALL_ATTENTION",
    "DEFAULT_DI_CALL_PHONE_NUMBER",
    "DEFAULT_DI_CALL_PHONE_EXT",
    "DEFAULT_PI_MORVANE_ACCOUNT_NUMBER",
    "DEFAULT_CC_FIRST_NAME",
    "DEFAULT_CC_LAST_NAME",
    "DEFAULT_CC_COMPANY_NAME",
    "DEFAULT_CC_ADDRESS1",
    "DEFAULT_CC_ADDRESS2",
    "DEFAULT_CC_CITY",
    "DEFAULT_CC_STATE",
    "DEFAULT_CC_STATE_OR",
    "DEFAULT_CC_ZIP_OR_POSTCODE",
    "DEFAULT_CC_COUNTRY",
    "DEFAULT_CC_PHONE_NUMBER",
    "DEFAULT_CC_PHONE_EXT",
    "DEFAULT_CC_FAX",
    "DEFAULT_CC_ACCOUNT_NUMBER",
};

void ApplyRegistered(Database& orDatabase, const std::string& zvText) {
  orDatabase.ApplyDefaultsToCurrentOrder(zvText, zvText, zvText, zvText, zvText, zvText, zvText, zvText,
                                         zvText, zvText, zvText, zvText, zvText, zvText, zvText, zvText);
}

class AwkwardTexts : public test::DatabaseFixture {
 protected:
  AwkwardTexts() {
    AddOrder(7);
    AddOrder(12, true);
    AddLine(12, "A-1");
  }

  // How often the text stands in a row, byte for byte.
  static std::ptrdiff_t Times(const Row& row, const std::string& zvText) {
    return std::count(row.begin(), row.end(), zvText);
  }
};

TEST_F(AwkwardTexts, AreStoredIntactInEveryTextOfTheHeader) {
  for (const std::string& zText : Awkward()) {
    SCOPED_TRACE(zText);
    OrderHeader header;
    header.OrderID = 12;
    for (const HeaderText& text : kHeaderTexts) {
      header.*text.Member = zText;
    }
    Database.OrderDetails_SaveSummary(header);
    ASSERT_EQ("0 ", Recorded());
    const auto row = Database.OrderDetails_GetSummary(12, false);
    for (const HeaderText& text : kHeaderTexts) {
      EXPECT_EQ(zText, row->Fields(text.Column).Value().ToString()) << text.Column;
      EXPECT_EQ(zText, OfOrder(12, text.Column)) << text.Column;
    }
  }
}

TEST_F(AwkwardTexts, AreStoredIntactAsThePurchaseOrderNumber) {
  for (const std::string& zText : Awkward()) {
    Database.SavePONumber(12, zText);
    EXPECT_EQ("0 ", Recorded());
    EXPECT_EQ(zText, OfOrder(12, "zPurchaseOrderNumber"));
  }
}

TEST_F(AwkwardTexts, AreStoredIntactInEveryTextOfAnAddedLineAndFindIt) {
  for (const std::string& zText : Awkward()) {
    SCOPED_TRACE(zText);
    Store.Run("delete from tblOrderItem");
    test::Line line;
    line.Quantity = 5;
    for (const LineText& text : kLineTexts) {
      line.*text.Member = zText;
    }
    AddItem(Database, line);
    ASSERT_EQ("0 ", Recorded());
    {
      const auto rows = Database.OrderDetails_GetItems(12, 0, false);
      ASSERT_FALSE(rows->AtEnd());
      for (const LineText& text : kLineTexts) {
        EXPECT_EQ(zText, rows->Fields(text.Column).Value().ToString()) << text.Column;
      }
    }
    EXPECT_EQ(7, Times(Store.Query("select * from tblOrderItem").at(0), zText));
    EXPECT_TRUE(Database.OrderDetails_ItemExists(12, zText));
    EXPECT_EQ(5, Database.OrderDetails_GetQuantity(12, zText));
    EXPECT_FALSE(Database.OrderDetails_ItemExists(12, zText + "."));
    EXPECT_EQ(std::nullopt, Database.OrderDetails_GetQuantity(12, "." + zText));
  }
}

TEST_F(AwkwardTexts, AreStoredIntactInEveryTextOfASavedLine) {
  for (const std::string& zText : Awkward()) {
    SCOPED_TRACE(zText);
    test::SavedLine line;
    line.ItemNumber = zText;
    for (const SavedLineText& text : kSavedLineTexts) {
      line.*text.Member = zText;
    }
    SaveLine(Database, line);
    ASSERT_EQ("0 ", Recorded());
    for (const SavedLineText& text : kSavedLineTexts) {
      EXPECT_EQ(zText, OfLine(12, "A-1", text.Column)) << text.Column;
    }
  }
}

TEST_F(AwkwardTexts, AreStoredIntactAsPartNumberAndNotesAndFindTheirLine) {
  for (const std::string& zText : Awkward()) {
    SCOPED_TRACE(zText);
    Database.UpdateCustPartInfo({"A-1"}, {zText}, {zText}, 12);
    EXPECT_EQ(zText, OfLine(12, "A-1", "zCustomerPartNumber"));
    EXPECT_EQ(zText, OfLine(12, "A-1", "zCustomerNotes"));
    Database.deleteCustPartInfo({zText + "."}, 12);
    EXPECT_EQ(zText, OfLine(12, "A-1", "zCustomerNotes"));
    Database.deleteCustPartInfo({zText}, 12);
    EXPECT_EQ("", OfLine(12, "A-1", "zCustomerPartNumber"));
    EXPECT_EQ("", OfLine(12, "A-1", "zCustomerNotes"));
  }
}

TEST_F(AwkwardTexts, AreStoredIntactInEveryTextOfANewOrder) {
  for (const std::string& zText : Awkward()) {
    SCOPED_TRACE(zText);
    Store.Run("delete from tblOrder where bIsCurrent = -1");
    for (const std::string& zKey : kTextKeys) {
      Settings->Defaults[zKey] = zText;
    }
    Database.CreateCurrentOrder();
    EXPECT_EQ(static_cast<std::ptrdiff_t>(kTextKeys.size()),
              Times(Store.Query("select * from tblOrder where bIsCurrent = -1").at(0), zText));
  }
}

TEST_F(AwkwardTexts, AreStoredIntactAsDefaultsAndAsRegisteredValues) {
  for (const std::string& zText : Awkward()) {
    SCOPED_TRACE(zText);
    Settings->Defaults.clear();
    ApplyRegistered(Database, zText);
    EXPECT_EQ("0 ", Recorded());
    EXPECT_EQ(30, Times(Store.Query("select * from tblOrder where lOrderID = 12").at(0), zText));

    for (const std::string& zKey : kTextKeys) {
      Settings->Defaults[zKey] = zText + ".";
    }
    ApplyRegistered(Database, zText);
    EXPECT_EQ(30, Times(Store.Query("select * from tblOrder where lOrderID = 12").at(0), zText + "."));
  }
}

TEST_F(AwkwardTexts, NotesOfAMebibyteAreStoredIntact) {
  std::string zNotes;
  while (zNotes.size() < kMebibyte) {
    zNotes += "It's line " + std::to_string(zNotes.size()) + " \xC3\xA9\xF0\x9F\x98\x80\r\n\t\\ -- ; ";
  }
  const std::string zQuotes(kMebibyte, '\'');
  for (const std::string& zText : {zNotes, zQuotes}) {
    OrderHeader header;
    header.OrderID = 12;
    header.DINotes = zText;
    Database.OrderDetails_SaveSummary(header);
    EXPECT_EQ("0 ", Recorded());
    EXPECT_TRUE(zText == OfOrder(12, "zDINotes"));
    EXPECT_TRUE(zText == Database.OrderDetails_GetSummary(12, false)->Fields("zDINotes").Value().ToString());

    Settings->Defaults["DEFAULT_DI_NOTES"] = zText;
    Database.OrderDetails_SaveToHistory(
        std::stoi(Store.Value("select lOrderID from tblOrder where bIsCurrent = -1")));
    EXPECT_EQ("0 ", Recorded());
    EXPECT_TRUE(zText == Store.Value("select zDINotes from tblOrder where bIsCurrent = -1"));

    test::Line line;
    line.ItemNumber = "N";
    line.CustomerNotes = zText;
    AddItem(Database, line);
    EXPECT_EQ("0 ", Recorded());
    EXPECT_TRUE(zText == OfLine(12, "N", "zCustomerNotes"));
    Database.OrderItem_RemoveItem(12, "N");

    Database.UpdateCustPartInfo({"A-1"}, {"P"}, {zText}, 12);
    EXPECT_TRUE(zText == OfLine(12, "A-1", "zCustomerNotes"));
    test::SavedLine saved;
    saved.CustomerNotes = zText + "!";
    SaveLine(Database, saved);
    EXPECT_TRUE(zText + "!" == OfLine(12, "A-1", "zCustomerNotes"));
    EXPECT_TRUE(zText + "!" ==
                Database.OrderDetails_GetItems(12, 0, false)->Fields("zCustomerNotes").Value().ToString());
  }
}

// --- texts that are no UTF-8

TEST_F(AwkwardTexts, BrokenTextsFailASaveOfTheHeaderAndChangeNothing) {
  const Rows before = Store.Everything();
  for (const HeaderText& text : kHeaderTexts) {
    for (const std::string& zBroken : kBroken) {
      OrderHeader header;
      header.OrderID = 12;
      header.*text.Member = zBroken;
      Database.OrderDetails_SaveSummary(header);
      EXPECT_TRUE(Recorded().starts_with("5 -2147217900 : ")) << text.Column << Recorded();
    }
  }
  EXPECT_EQ(before, Store.Everything());
  EXPECT_TRUE(Settings->Defaults.empty());
}

TEST_F(AwkwardTexts, BrokenTextsFailTheStatementsOnLinesAndChangeNothing) {
  const Rows before = Store.Everything();
  for (const std::string& zBroken : kBroken) {
    for (const LineText& text : kLineTexts) {
      test::Line line;
      line.ItemNumber = "NEW";
      line.*text.Member = zBroken;
      AddItem(Database, line);
      EXPECT_EQ("4 Order not loaded", Recorded()) << text.Column;
    }
    for (const SavedLineText& text : kSavedLineTexts) {
      test::SavedLine line;
      line.*text.Member = zBroken;
      SaveLine(Database, line);
      EXPECT_TRUE(Recorded().starts_with("5 -2147217900 : ")) << text.Column << Recorded();
    }
    Database.SavePONumber(12, zBroken);
    EXPECT_TRUE(Recorded().starts_with("5 -2147217900 : ")) << Recorded();
    ApplyRegistered(Database, zBroken);
    EXPECT_TRUE(Recorded().starts_with("5 -2147217900 : ")) << Recorded();

    const std::vector<std::function<void()>> raising = {
        [&] { Database.OrderDetails_ItemExists(12, zBroken); },
        [&] { Database.OrderDetails_GetQuantity(12, zBroken); },
        [&] { Database.OrderDetails_IncrementQuantity(12, zBroken, 1, {}, {}); },
        [&] { Database.OrderDetails_UpdateItem(zBroken, 1, {}, {}, true, true); },
        [&] { Database.OrderItem_RemoveItem(12, zBroken); },
        [&] { Database.UpdateCustPartInfo({zBroken}, {"P"}, {"N"}, 12); },
        [&] { Database.UpdateCustPartInfo({"A-1"}, {zBroken}, {"N"}, 12); },
        [&] { Database.UpdateCustPartInfo({"A-1"}, {"P"}, {zBroken}, 12); },
        [&] { Database.deleteCustPartInfo({zBroken}, 12); },
        [&] {
          qm_ordering::OrderItems items;
          items.Add(test::Item(zBroken, 2), zBroken);
          Database.OrderDetails_UpdateItems(12, items);
        },
        [&] {
          qm_ordering::OrderItems items;
          items.Add(test::Item(zBroken, 0), zBroken);
          Database.OrderDetails_UpdateItems(12, items);
        },
    };
    for (std::size_t i = 0; i < raising.size(); ++i) {
      EXPECT_EQ(-2147217900, RaisedNumber(raising[i])) << i;
    }
  }
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(AwkwardTexts, BrokenShippingEstimatesFailTheirStatementsAndChangeNothing) {
  const Rows before = Store.Everything();
  for (const std::string& zBroken : kBroken) {
    test::Line line;
    line.ItemNumber = "NEW";
    line.UsuallyShips = zBroken;
    AddItem(Database, line);
    EXPECT_EQ("4 Order not loaded", Recorded());
    test::SavedLine saved;
    saved.UsuallyShips = zBroken;
    SaveLine(Database, saved);
    EXPECT_TRUE(Recorded().starts_with("5 -2147217900 : ")) << Recorded();
  }
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(AwkwardTexts, BrokenDefaultsFailTheCreationOfAnOrder) {
  Store.Run("delete from tblOrder where bIsCurrent = -1");
  const Rows before = Store.Everything();
  for (const std::string& zKey : kTextKeys) {
    Settings->Defaults = {{zKey, "a\xC3"}};
    EXPECT_EQ(-2147217900, RaisedNumber([&] { Database.CreateCurrentOrder(); })) << zKey;
  }
  EXPECT_EQ(before, Store.Everything());
}

}  // namespace
