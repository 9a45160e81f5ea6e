#include <gtest/gtest.h>

#include "qm_ordering/platform/value/Date.h"
#include "tests/store/DatabaseFixture.h"

// The statements on the header of an order, and what is kept of it as the defaults of the next one.

namespace {

using qm_ordering::Date;
using qm_ordering::OrderHeader;
using qm_ordering::Variant;
using test::Money;
using test::Row;
using test::Rows;
using Texts = std::vector<std::string>;

class OrderHeaderStatements : public test::DatabaseFixture {
 protected:
  OrderHeaderStatements() {
    AddOrder(7);
    AddOrder(12, true);
  }
};

// A header whose values all differ.
OrderHeader FullHeader() {
  OrderHeader header;
  header.OrderID = 12;
  header.PurchaseOrderNumber = "PO-7";
  header.TotalPrice = Money("1234.5");
  header.POReleaseNumber = "release";
  header.OIProjectOrJobNumber = "project";
  header.OIRequisitionOrApprovalName = "requisition";
  header.OIDepartment = "department";
  header.OIAttention = "attention";
  header.OIPhoneNumber = "oi phone";
  header.OIEmail = "oi email";
  header.OIIsTaxExempt = true;
  header.OITaxIDNumber = "tax id";
  header.DIDeliveryMethod = 1;
  header.DIFirstName = "di first";
  header.DILastName = "di last";
  header.DICompanyName = "di company";
  header.DIAddress1 = "di address 1";
  header.DIAddress2 = "di address 2";
  header.DICity = "di city";
  header.DIState = "di state";
  header.DIStateOr = "di state or";
  header.DIZipOrPostCode = "di zip";
  header.DICountry = "di country";
  header.DIPhoneNumber = "di phone";
  header.DIPhoneExt = "di ext";
  header.DIFax = "di fax";
  header.DICallBranchNumber = "call branch";
  header.DICallAttention = "call attention";
  header.DICallPhoneNumber = "call phone";
  header.DICallPhoneExt = "call ext";
  header.DIShippingMethod = 9;
  header.DINotes = "notes";
  header.PIPaymentMethod = 2;
  header.PIMorvaneAccountNumber = "pi account";
  header.CCFirstName = "cc first";
  header.CCLastName = "cc last";
  header.CCCompanyName = "cc company";
  header.CCAddress1 = "cc address 1";
  header.CCAddress2 = "cc address 2";
  header.CCCity = "cc city";
  header.CCState = "cc state";
  header.CCStateOr = "cc state or";
  header.CCZipOrPostCode = "cc zip";
  header.CCCountry = "cc country";
  header.CCPhoneNumber = "cc phone";
  header.CCPhoneExt = "cc ext";
  header.CCFax = "cc fax";
  header.CCAccountNumber = "cc account";
  header.CCComment1 = "comment 1";
  header.CCComment2 = "comment 2";
  header.CCComment3 = "comment 3";
  header.CCComment4 = "comment 4";
  return header;
}

// What the store holds of it, column by column; numbers and flags as the engine has them.
const std::vector<std::pair<std::string, std::string>> kFullRow = {
    {"zPurchaseOrderNumber", "PO-7"},
    {"cTotalPrice", "12345000"},
    {"zPOReleaseNumber", "release"},
    {"zOIProjectOrJobNumber", "project"},
    {"zOIRequisitionOrApprovalName", "requisition"},
    {"zOIDepartment", "department"},
    {"zOIAttention", "attention"},
    {"zOIPhoneNumber", "oi phone"},
    {"zOIEmail", "oi email"},
    {"bOIIsTaxExempt", "-1"},
    {"zOITaxIDNumber", "tax id"},
    {"lDIDeliveryMethod", "1"},
    {"zDIFirstName", "di first"},
    {"zDILastName", "di last"},
    {"zDICompanyName", "di company"},
    {"zDIAddress1", "di address 1"},
    {"zDIAddress2", "di address 2"},
    {"zDICity", "di city"},
    {"zDIState", "di state"},
    {"zDIStateOr", "di state or"},
    {"zDIZipOrPostCode", "di zip"},
    {"zDICountry", "di country"},
    {"zDIPhoneNumber", "di phone"},
    {"zDIPhoneExt", "di ext"},
    {"zDIFax", "di fax"},
    {"zDICallBranchNumber", "call branch"},
    {"zDICallAttention", "call attention"},
    {"zDICallPhoneNumber", "call phone"},
    {"zDICallPhoneExt", "call ext"},
    {"lDIShippingMethod", "9"},
    {"zDINotes", "notes"},
    {"lPIPaymentMethod", "2"},
    {"zPIMorvaneAccountNumber", "pi account"},
    {"zCCFirstName", "cc first"},
    {"zCCLastName", "cc last"},
    {"zCCCompanyName", "cc company"},
    {"zCCAddress1", "cc address 1"},
    {"zCCAddress2", "cc address 2"},
    {"zCCCity", "cc city"},
    {"zCCState", "cc state"},
    {"zCCStateOr", "cc state or"},
    {"zCCZipOrPostCode", "cc zip"},
    {"zCCCountry", "cc country"},
    {"zCCPhoneNumber", "cc phone"},
    {"zCCPhoneExt", "cc ext"},
    {"zCCFax", "cc fax"},
    {"zCCAccountNumber", "cc account"},
    {"zCCComment1", "comment 1"},
    {"zCCComment2", "comment 2"},
    {"zCCComment3", "comment 3"},
    {"zCCComment4", "comment 4"},
};

const char* const kFullUpdate =
    "update tblOrder set zPurchaseOrderNumber = 'PO-7', zPOReleaseNumber = 'release', cTotalPrice = 1234.5, "
    "zOIProjectOrJobNumber = 'project', zOIRequisitionOrApprovalName = 'requisition', "
    "zOIDepartment = 'department', zOIAttention = 'attention', zOIPhoneNumber = 'oi phone', "
    "zOIEmail = 'oi email', bOIIsTaxExempt = True, zOITaxIDNumber = 'tax id', lDIDeliveryMethod = 1, "
    "zDIFirstName = 'di first', zDILastName = 'di last', zDICompanyName = 'di company', "
    "zDIAddress1 = 'di address 1', zDIAddress2 = 'di address 2', zDICity = 'di city', zDIState = 'di state', "
    "zDIStateOr = 'di state or', zDIZipOrPostCode = 'di zip', zDICountry = 'di country', "
    "zDIPhoneNumber = 'di phone', zDIPhoneExt = 'di ext', zDIFax = 'di fax', "
    "zDICallBranchNumber = 'call branch', zDICallAttention = 'call attention', "
    "zDICallPhoneNumber = 'call phone', zDICallPhoneExt = 'call ext', lDIShippingMethod = 9, "
    "zDINotes = 'notes', lPIPaymentMethod = 2, zPIMorvaneAccountNumber = 'pi account', "
    "zCCFirstName = 'cc first', zCCLastName = 'cc last', zCCCompanyName = 'cc company', "
    "zCCAddress1 = 'cc address 1', zCCAddress2 = 'cc address 2', zCCCity = 'cc city', zCCState = 'cc state', "
    "zCCStateor = 'cc state or', zCCZipOrPostcode = 'cc zip', zCCCountry = 'cc country', "
    "zCCPhoneNumber = 'cc phone', zCCPhoneExt = 'cc ext', zCCFax = 'cc fax', zCCAccountNumber = 'cc "
    "account', "
    "zCCComment1 = 'comment 1', zCCComment2 = 'comment 2', zCCComment3 = 'comment 3', "
    "zCCComment4 = 'comment 4' where lOrderID = 12";

TEST_F(OrderHeaderStatements, SavingTheHeaderWritesEveryColumnOfTheOrder) {
  Database.OrderDetails_SaveSummary(FullHeader());

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ((Texts{kFullUpdate}), Trace.Statements());
  for (const auto& [zColumn, zValue] : kFullRow) {
    EXPECT_EQ(zValue, OfOrder(12, zColumn)) << zColumn;
  }
  // The row has no columns beyond these but its key, its state and its date, which stay.
  EXPECT_EQ(std::to_string(kFullRow.size() + 3),
            Store.Value("select count(*) from pragma_table_info('tblOrder')"));
  EXPECT_EQ("-1", OfOrder(12, "bIsCurrent"));
  EXPECT_EQ("NULL", OfOrder(12, "datSubmitDate"));
}

TEST_F(OrderHeaderStatements, SavingTheHeaderLeavesOtherOrdersAlone) {
  const Rows before = Store.Query("select * from tblOrder where lOrderID = 7");
  Database.OrderDetails_SaveSummary(FullHeader());
  EXPECT_EQ(before, Store.Query("select * from tblOrder where lOrderID = 7"));
}

TEST_F(OrderHeaderStatements, SavingAnEmptyHeaderWritesEmptyTextsAndZeros) {
  Store.Run(
      "update tblOrder set zDINotes = 'old', cTotalPrice = 1, bOIIsTaxExempt = -1, lDIShippingMethod = 3");
  OrderHeader header;
  header.OrderID = 7;
  Database.OrderDetails_SaveSummary(header);

  EXPECT_EQ(
      (Texts{
          "update tblOrder set zPurchaseOrderNumber = '', zPOReleaseNumber = '', cTotalPrice = 0, "
          "zOIProjectOrJobNumber = '', zOIRequisitionOrApprovalName = '', zOIDepartment = '', "
          "zOIAttention = '', zOIPhoneNumber = '', zOIEmail = '', bOIIsTaxExempt = False, "
          "zOITaxIDNumber = '', lDIDeliveryMethod = 0, zDIFirstName = '', zDILastName = '', "
          "zDICompanyName = '', zDIAddress1 = '', zDIAddress2 = '', zDICity = '', zDIState = '', "
          "zDIStateOr = '', zDIZipOrPostCode = '', zDICountry = '', zDIPhoneNumber = '', zDIPhoneExt = '', "
          "zDIFax = '', zDICallBranchNumber = '', zDICallAttention = '', zDICallPhoneNumber = '', "
          "zDICallPhoneExt = '', lDIShippingMethod = 0, zDINotes = '', lPIPaymentMethod = 0, "
          "zPIMorvaneAccountNumber = '', zCCFirstName = '', zCCLastName = '', zCCCompanyName = '', "
          "zCCAddress1 = '', zCCAddress2 = '', zCCCity = '', zCCState = '', zCCStateor = '', "
          "zCCZipOrPostcode = '', zCCCountry = '', zCCPhoneNumber = '', zCCPhoneExt = '', zCCFax = '', "
          "zCCAccountNumber = '', zCCComment1 = '', zCCComment2 = '', zCCComment3 = '', zCCComment4 = '' "
          "where lOrderID = 7"}),
      Trace.Statements());
  EXPECT_EQ((Rows{{"", "0", "0", "0"}}),
            Store.Query("select zDINotes, cTotalPrice, bOIIsTaxExempt, lDIShippingMethod from tblOrder "
                        "where lOrderID = 7"));
}

TEST_F(OrderHeaderStatements, SavingTheHeaderDoublesTheQuotesOfEveryText) {
  OrderHeader header = FullHeader();
  for (std::string* zText : {&header.PurchaseOrderNumber,
                             &header.POReleaseNumber,
                             &header.OIProjectOrJobNumber,
                             &header.OIRequisitionOrApprovalName,
                             &header.OIDepartment,
                             &header.OIAttention,
                             &header.OIPhoneNumber,
                             &header.OIEmail,
                             &header.OITaxIDNumber,
                             &header.DIFirstName,
                             &header.DILastName,
                             &header.DICompanyName,
                             &header.DIAddress1,
                             &header.DIAddress2,
                             &header.DICity,
                             &header.DIState,
                             &header.DIStateOr,
                             &header.DIZipOrPostCode,
                             &header.DICountry,
                             &header.DIPhoneNumber,
                             &header.DIPhoneExt,
                             &header.DIFax,
                             &header.DICallBranchNumber,
                             &header.DICallAttention,
                             &header.DICallPhoneNumber,
                             &header.DICallPhoneExt,
                             &header.DINotes,
                             &header.PIMorvaneAccountNumber,
                             &header.CCFirstName,
                             &header.CCLastName,
                             &header.CCCompanyName,
                             &header.CCAddress1,
                             &header.CCAddress2,
                             &header.CCCity,
                             &header.CCState,
                             &header.CCStateOr,
                             &header.CCZipOrPostCode,
                             &header.CCCountry,
                             &header.CCPhoneNumber,
                             &header.CCPhoneExt,
                             &header.CCFax,
                             &header.CCAccountNumber,
                             &header.CCComment1,
                             &header.CCComment2,
                             &header.CCComment3,
                             &header.CCComment4}) {
    *zText = "'" + *zText + "''";
  }
  header.TotalPrice = Money("-0.0001");
  header.DIDeliveryMethod = -1;
  header.DIShippingMethod = -2147483648;
  header.PIPaymentMethod = 2147483647;
  Database.OrderDetails_SaveSummary(header);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_EQ(
      (Texts{"update tblOrder set zPurchaseOrderNumber = '''PO-7''''', zPOReleaseNumber = '''release''''', "
             "cTotalPrice = -0.0001, zOIProjectOrJobNumber = '''project''''', "
             "zOIRequisitionOrApprovalName = '''requisition''''', zOIDepartment = '''department''''', "
             "zOIAttention = '''attention''''', zOIPhoneNumber = '''oi phone''''', "
             "zOIEmail = '''oi email''''', bOIIsTaxExempt = True, zOITaxIDNumber = '''tax id''''', "
             "lDIDeliveryMethod = -1, zDIFirstName = '''di first''''', zDILastName = '''di last''''', "
             "zDICompanyName = '''di company''''', zDIAddress1 = '''di address 1''''', "
             "zDIAddress2 = '''di address 2''''', zDICity = '''di city''''', zDIState = '''di state''''', "
             "zDIStateOr = '''di state or''''', zDIZipOrPostCode = '''di zip''''', "
             "zDICountry = '''di country''''', zDIPhoneNumber = '''di phone''''', "
             "zDIPhoneExt = '''di ext''''', zDIFax = '''di fax''''', "
             "zDICallBranchNumber = '''call branch''''', zDICallAttention = '''call attention''''', "
             "zDICallPhoneNumber = '''call phone''''', zDICallPhoneExt = '''call ext''''', "
             "lDIShippingMethod = -2147483648, zDINotes = '''notes''''', lPIPaymentMethod = 2147483647, "
             "zPIMorvaneAccountNumber = '''pi account''''', zCCFirstName = '''cc first''''', "
             "zCCLastName = '''cc last''''', zCCCompanyName = '''cc company''''', "
             "zCCAddress1 = '''cc address 1''''', zCCAddress2 = '''cc address 2''''', "
             "zCCCity = '''cc city''''', zCCState = '''cc state''''', zCCStateor = '''cc state or''''', "
             "zCCZipOrPostcode = '''cc zip''''', zCCCountry = '''cc country''''', "
             "zCCPhoneNumber = '''cc phone''''', zCCPhoneExt = '''cc ext''''', zCCFax = '''cc fax''''', "
             "zCCAccountNumber = '''cc account''''', zCCComment1 = '''comment 1''''', "
             "zCCComment2 = '''comment 2''''', zCCComment3 = '''comment 3''''', "
             "zCCComment4 = '''comment 4''''' where lOrderID = 12"}),
      Trace.Statements());
  for (const auto& [zColumn, zValue] : kFullRow) {
    if (zColumn.front() == 'z') {
      EXPECT_EQ("'" + zValue + "''", OfOrder(12, zColumn)) << zColumn;
    }
  }
  EXPECT_EQ((Rows{{"-1", "-1", "-2147483648", "2147483647"}}),
            Store.Query("select cTotalPrice, lDIDeliveryMethod, lDIShippingMethod, lPIPaymentMethod "
                        "from tblOrder where lOrderID = 12"));
}

// --- what is kept for the next order

TEST_F(OrderHeaderStatements, SavingTheHeaderThenKeepsItsValuesAsTheDefaultsOfTheNextOrder) {
  Texts events;
  Trace.Before = [&](const std::string&) { events.emplace_back("statement"); };
  Settings->Before = [&](const std::string& zCall) { events.push_back(zCall); };
  Settings->Calls.clear();
  Database.OrderDetails_SaveSummary(FullHeader());

  const Texts calls = {
      "create order defaults",
      "default set DEFAULT_OI_PO_NUM=PO-7",
      "default set DEFAULT_OI_PHONE_NUMBER=oi phone",
      "default set DEFAULT_OI_EMAIL=oi email",
      "default set DEFAULT_OI_ISTAXEXEMPT=True",
      "default set DEFAULT_OI_TAXIDNUMBER=tax id",
      "default set DEFAULT_OI_PORELEASE=release",
      "default set DEFAULT_OI_PROJECTNUMBER=project",
      "default set DEFAULT_OI_REQNAME=requisition",
      "default set DEFAULT_OI_DEPARTMENT=department",
      "default set DEFAULT_DI_DELIVERYMETHOD=1",
      "default set DEFAULT_DI_FIRSTNAME=di first",
      "default set DEFAULT_DI_LASTNAME=di last",
      "default set DEFAULT_DI_COMPANYNAME=di company",
      "default set DEFAULT_DI_ADDRESS1=di address 1",
      "default set DEFAULT_DI_ADDRESS2=di address 2",
      "default set DEFAULT_DI_CITY=di city",
      "default set DEFAULT_DI_STATE=di state",
      "default set DEFAULT_DI_STATEOR=di state or",
      "default set DEFAULT_DI_ZIP_OR_POSTCODE=di zip",
      "default set DEFAULT_DI_COUNTRY=di country",
      "default set DEFAULT_DI_PH0NE_NUMBER=di phone",
      "default set DEFAULT_DI_PHONE_EXT=di ext",
      "default set DEFAULT_DI_FAX=di fax",
      "default set DEFAULT_DI_SHIPPING_METHOD=9",
      "default set DEFAULT_DI_NOTES=notes",
      "default set DEFAULT_DI_CALL_BRANCH_NUMBER=call branch",
      "default set DEFAULT_DI_CALL_ATTENTION=call attention",
      "default set DEFAULT_DI_CALL_PHONE_NUMBER=call phone",
      "default set DEFAULT_DI_CALL_PHONE_EXT=call ext",
      "default set DEFAULT_PI_PAYMENT_METHOD=2",
      "default set DEFAULT_PI_MORVANE_ACCOUNT_NUMBER=pi account",
      "default set DEFAULT_CC_FIRST_NAME=cc first",
      "default set DEFAULT_CC_LAST_NAME=cc last",
      "default set DEFAULT_CC_COMPANY_NAME=cc company",
      "default set DEFAULT_CC_ADDRESS1=cc address 1",
      "default set DEFAULT_CC_ADDRESS2=cc address 2",
      "default set DEFAULT_CC_CITY=cc city",
      "default set DEFAULT_CC_STATE=cc state",
      "default set DEFAULT_CC_STATE_OR=cc state or",
      "default set DEFAULT_CC_ZIP_OR_POSTCODE=cc zip",
      "default set DEFAULT_CC_COUNTRY=cc country",
      "default set DEFAULT_CC_PHONE_NUMBER=cc phone",
      "default set DEFAULT_CC_PHONE_EXT=cc ext",
      "default set DEFAULT_CC_FAX=cc fax",
      "default set DEFAULT_CC_ACCOUNT_NUMBER=cc account",
      "save",
  };
  Texts withRelease = calls;
  withRelease.emplace_back("release order defaults");
  EXPECT_EQ(withRelease, Settings->Calls);

  Texts inTime = {"statement"};
  inTime.insert(inTime.end(), calls.begin(), calls.end());
  EXPECT_EQ(inTime, events);
}

TEST_F(OrderHeaderStatements, TheUpdateHasRunWhenTheFirstDefaultIsKept) {
  std::string zSeen;
  Settings->Before = [&](const std::string& zCall) {
    if (zCall == "create order defaults") {
      zSeen = OfOrder(12, "zDINotes");
    }
  };
  Database.OrderDetails_SaveSummary(FullHeader());
  EXPECT_EQ("notes", zSeen);
}

TEST_F(OrderHeaderStatements, DefaultsAreKeptAsTheyStandWithQuotesAndEmptyTexts) {
  OrderHeader header;
  header.OrderID = 12;
  header.PurchaseOrderNumber = "O'Neil's";
  header.DIShippingMethod = -3;
  Settings->Defaults["DEFAULT_DI_NOTES"] = "old";
  Database.OrderDetails_SaveSummary(header);

  EXPECT_EQ("O'Neil's", Settings->Defaults["DEFAULT_OI_PO_NUM"]);
  EXPECT_EQ("-3", Settings->Defaults["DEFAULT_DI_SHIPPING_METHOD"]);
  EXPECT_EQ("0", Settings->Defaults["DEFAULT_DI_DELIVERYMETHOD"]);
  EXPECT_EQ("False", Settings->Defaults["DEFAULT_OI_ISTAXEXEMPT"]);
  EXPECT_EQ("", Settings->Defaults["DEFAULT_DI_NOTES"]);
}

TEST_F(OrderHeaderStatements, DefaultsAreKeptForASubmittedOrderToo) {
  OrderHeader header = FullHeader();
  header.OrderID = 7;
  Database.OrderDetails_SaveSummary(header);

  EXPECT_EQ("PO-7", OfOrder(7, "zPurchaseOrderNumber"));
  EXPECT_EQ("0", OfOrder(7, "bIsCurrent"));
  EXPECT_EQ(45u, Settings->Defaults.size());
}

TEST_F(OrderHeaderStatements, SavingAnOrderThatIsNotThereChangesNoOrderAndKeepsTheDefaults) {
  const Rows before = Store.Everything();
  OrderHeader header = FullHeader();
  header.OrderID = -1;
  Database.OrderDetails_SaveSummary(header);

  EXPECT_EQ("0 ", Recorded());
  EXPECT_TRUE(Trace.Statements().at(0).ends_with(" where lOrderID = -1"));
  EXPECT_EQ(before, Store.Everything());
  EXPECT_EQ("PO-7", Settings->Defaults["DEFAULT_OI_PO_NUM"]);
}

TEST_F(OrderHeaderStatements, NoDefaultsAreKeptWhenTheUpdateFails) {
  Settings->Calls.clear();
  OrderHeader header = FullHeader();
  header.DINotes = "broken \xFF";
  Database.OrderDetails_SaveSummary(header);

  EXPECT_EQ(5, Database.Error().Number);
  EXPECT_EQ(Texts{}, Settings->Calls);
}

// --- the purchase-order number

TEST_F(OrderHeaderStatements, SavingThePurchaseOrderNumberOfOneOrder) {
  Database.SavePONumber(12, "PO-7");
  Database.SavePONumber(7, "O'Neil's ''x''");
  Database.SavePONumber(-1, " ");
  Database.SavePONumber(12, "");

  EXPECT_EQ((Texts{"update tblOrder set zPurchaseOrderNumber = 'PO-7' where lOrderID = 12",
                   "update tblOrder set zPurchaseOrderNumber = 'O''Neil''s ''''x''''' where lOrderID = 7",
                   "update tblOrder set zPurchaseOrderNumber = ' ' where lOrderID = -1",
                   "update tblOrder set zPurchaseOrderNumber = '' where lOrderID = 12"}),
            Trace.Statements());
  EXPECT_EQ("O'Neil's ''x''", OfOrder(7, "zPurchaseOrderNumber"));
  EXPECT_EQ("", OfOrder(12, "zPurchaseOrderNumber"));
  EXPECT_EQ("0 ", Recorded());
  EXPECT_TRUE(Settings->Defaults.empty()) << "it is not kept as a default";
}

// --- reading the header

TEST_F(OrderHeaderStatements, ReadingTheHeaderOfAnOrderOrOfTheCurrentOne) {
  const auto byID = Database.OrderDetails_GetSummary(7, false);
  const auto current = Database.OrderDetails_GetSummary(7, true);
  static_cast<void>(Database.OrderDetails_GetSummary(-1, false));
  static_cast<void>(Database.OrderDetails_GetSummary(-2147483648, false));

  EXPECT_EQ((Texts{"Select * from qryGetOrderSummary where lOrderID = 7",
                   "Select * from qryGetOrderSummary where bIsCurrent = True",
                   "Select * from qryGetOrderSummary where lOrderID = -1",
                   "Select * from qryGetOrderSummary where lOrderID = -2147483648"}),
            Trace.Statements());
  EXPECT_EQ(7, byID->Fields("lOrderID").Value().ToInteger());
  EXPECT_EQ(12, current->Fields("lOrderID").Value().ToInteger());
}

TEST_F(OrderHeaderStatements, TheHeaderOfAnOrderThatIsNotThereIsEmptyAndNoFailure) {
  const auto byID = Database.OrderDetails_GetSummary(99, false);
  EXPECT_TRUE(byID->AtBeginning());
  EXPECT_TRUE(byID->AtEnd());

  Store.Run("update tblOrder set bIsCurrent = 0");
  const auto current = Database.OrderDetails_GetSummary(12, true);
  EXPECT_TRUE(current->AtBeginning());
  EXPECT_TRUE(current->AtEnd());
}

TEST_F(OrderHeaderStatements, TheHeaderReadIsTheHeaderSavedInTheKindsOfItsColumns) {
  Database.OrderDetails_SaveSummary(FullHeader());
  Store.Run("update tblOrder set datSubmitDate = '2003-07-04 15:04:05' where lOrderID = 12");
  const auto row = Database.OrderDetails_GetSummary(12, false);

  EXPECT_TRUE(Variant(12) == row->Fields("lOrderID").Value());
  EXPECT_TRUE(Variant(true) == row->Fields("bIsCurrent").Value());
  EXPECT_TRUE(Variant(Date(2003, 7, 4, 15, 4, 5)) == row->Fields("datSubmitDate").Value());
  for (const auto& [zColumn, zValue] : kFullRow) {
    Variant vExpected = zValue;
    if (zColumn.front() == 'l') {
      vExpected = vExpected.ToInteger();
    } else if (zColumn.front() == 'b') {
      vExpected = zValue != "0";
    } else if (zColumn.front() == 'c') {
      vExpected = Money("1234.5");
    }
    EXPECT_TRUE(vExpected == row->Fields(zColumn).Value()) << zColumn;
  }
}

TEST_F(OrderHeaderStatements, AFreshOrdersHeaderHasNullsForTextsAndZerosForNumbers) {
  const auto row = Database.OrderDetails_GetSummary(12, false);
  EXPECT_TRUE(row->Fields("zDINotes").Value().IsNull());
  EXPECT_TRUE(row->Fields("datSubmitDate").Value().IsNull());
  EXPECT_TRUE(Variant(0) == row->Fields("lPIPaymentMethod").Value());
  EXPECT_TRUE(Variant(false) == row->Fields("bOIIsTaxExempt").Value());
  EXPECT_TRUE(Variant(Money("0")) == row->Fields("cTotalPrice").Value());
}

}  // namespace
