#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/order/OrderDetails.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::OrderDetails;
using qm_ordering::OrderItem;
using qm_ordering::OrderItems;
using test::RaisedNumber;

using Texts = std::vector<std::string>;

constexpr const char* kCurrentSummary = "Select * from qryGetOrderSummary where bIsCurrent = True";
// With no default set.
constexpr const char* kNewCurrentOrder =
    "insert into tblOrder (bIsCurrent,zPurchaseOrderNumber, zOIPhoneNumber, zOIEmail, zDIFirstName, "
    "zDILastName, zDICompanyName, zDIAddress1, zDIAddress2, zDICity, zDIState, zDIStateOr, zDIZipOrPostCode, "
    "zDICountry, zDIPhoneNumber, zDIPhoneExt, zDIFax, zDINotes,zCCFirstName, zCCLastName, zCCCompanyName, "
    "zCCAddress1, zCCAddress2, zCCCity, zCCState, zCCStateOr, zCCZipOrPostCode, zCCCountry, zCCPhoneNumber, "
    "zCCPhoneExt, zCCAccountNumber, zCCFax, zPIMorvaneAccountNumber,zDICallBranchNumber,zDICallAttention,"
    "zDICallPhoneNumber,zDICallPhoneExt, lDIShippingMethod,lDIDeliveryMethod,lPIPaymentMethod,"
    "zOITaxIDNumber,bOIIsTaxExempt,zPOReleaseNumber, zOIProjectOrJobNumber, zOIRequisitionOrApprovalName, "
    "zOIDepartment) values(True, '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', "
    "'', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', '', 0, 0, 0, '', False, '', '', '', '')";
constexpr const char* kSum = "select sum(cExtendedPrice) from tblOrderItem where lOrderID = 1";
constexpr const char* kGetTotal = "select cTotalPrice from tblOrder where lOrderID = 1";

// The statements of each member, in their order and letter by letter, and whether they run.
class OrderDetailsStatements : public test::OrderFixture {
 protected:
  OrderDetailsStatements() : m_oOrder(LoadCurrent()) { m_oTrace = std::make_unique<test::TraceRecorder>(); }

  Texts Take() { return m_oTrace->Take(); }

  std::shared_ptr<OrderDetails> m_oOrder;
  std::unique_ptr<test::TraceRecorder> m_oTrace;
};

TEST_F(OrderDetailsStatements, MakingAnOrderRunsNone) {
  const OrderDetails order;
  EXPECT_EQ(Take(), Texts());
}

TEST_F(OrderDetailsStatements, LoadSummaryAsksForTheOrderOrForTheCurrentOne) {
  m_oOrder->LoadSummary();
  EXPECT_EQ(Take(), Texts{"Select * from qryGetOrderSummary where lOrderID = 1"});
  m_oOrder->LoadSummary(true);
  EXPECT_EQ(Take(), Texts{kCurrentSummary});
  OrderDetails order;
  order.LoadSummary();
  EXPECT_EQ(Take(), Texts{"Select * from qryGetOrderSummary where lOrderID = -1"});
}

TEST_F(OrderDetailsStatements, LoadSummaryCreatesTheCurrentOrderAndAsksAgain) {
  Store.Run("delete from tblOrder");
  m_oOrder->LoadSummary(true);
  EXPECT_EQ(Take(), (Texts{kCurrentSummary, kNewCurrentOrder, kCurrentSummary}));
  EXPECT_EQ(m_oOrder->OrderID(), 2);
}

TEST_F(OrderDetailsStatements, LoadItemsAsksOnceInTheSortOrder) {
  const Texts orders = {"lOrderEntered, zItemNumber", "zItemNumber",
                        "zDescription,  zItemNumber", "zManufacturer, zItemNumber",
                        "zModel, zItemNumber",        "lUsuallyShipsSortOrder, zItemNumber",
                        "cPrice, zItemNumber"};
  for (std::size_t l = 0; l < orders.size(); ++l) {
    m_oOrder->LoadItems(static_cast<std::int32_t>(l), false, l % 2 == 0);
    EXPECT_EQ(Take(), Texts{"select * from qryGetOrderItems where lOrderID = 1 order by " + orders[l]});
    m_oOrder->LoadItems(static_cast<std::int32_t>(l), true);
    EXPECT_EQ(Take(), Texts{"select * from qryGetOrderItems where bIsCurrent = True order by " + orders[l]});
  }
  m_oOrder->LoadItems();
  EXPECT_EQ(Take(), Texts{"select * from qryGetOrderItems where lOrderID = 1 order by " + orders[0]});
  EXPECT_EQ(RaisedNumber([&] { m_oOrder->LoadItems(7); }), 9);
  EXPECT_EQ(Take(), Texts());
}

TEST_F(OrderDetailsStatements, AddItemOfANewLineInsertsItAndStoresTheTotal) {
  const auto oItem = NewItem("A'1", 3, "1.25");
  oItem->Description("O'Neil");
  oItem->ShortDescription("short");
  oItem->Manufacturer("maker");
  oItem->Model("model");
  oItem->SellQuantity(2);
  oItem->ShipQuantity(-4);
  oItem->UsuallyShips("Today");
  oItem->IsTaxable(true);
  oItem->CustomerPartNumber("part");
  oItem->CustomerNotes("notes");
  oItem->HasNotes(true);
  oItem->HasContractItem(true);
  m_oOrder->AddItem(oItem);
  EXPECT_EQ(
      Take(),
      (Texts{"select count(*) from tblOrderItem where zItemNumber = 'A''1' and lOrderID = 1",
             "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, zDescription, zShortDescription, "
             "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, lUsuallyShipsSortOrder, "
             "bIsTaxable, cPrice, cExtendedPrice, bIsPriceModified, zCustomerPartNumber, zCustomerNotes, "
             "bHasNotes, bHasPartsInfo) values (1, 'A''1', 3, 'O''Neil', 'short', 'maker', 'model', 2, -4, "
             "'Today', 0, True, 1.25, 3.75, False, 'part', 'notes', True, False)",
             kSum, "update tblOrder set cTotalPrice = 3.75 where lOrderID = 1"}));
}

TEST_F(OrderDetailsStatements, AddItemOfALineThatIsThereReadsItsQuantityAndSetsTheSum) {
  m_oOrder->AddItem(NewItem("A", 5, "2"));
  Take();
  m_oOrder->AddItem(NewItem("a", 3, "1.5"));
  EXPECT_EQ(
      Take(),
      (Texts{"select count(*) from tblOrderItem where zItemNumber = 'a' and lOrderID = 1",
             "select lQuantity from tblOrderItem where zItemNumber = 'a' and lOrderID = 1",
             "update tblOrderItem set lQuantity = 8, cPrice = 1.5, cExtendedPrice = 12 where lOrderID = "
             "1 and zItemNumber = 'a'",
             kSum, "update tblOrder set cTotalPrice = 12 where lOrderID = 1", kGetTotal}));
}

TEST_F(OrderDetailsStatements, AddItemDoesNotReadTheTotalWhileAnErrorStands) {
  m_oOrder->AddItem(NewItem("A", 5, "2"));
  m_oOrder->OrderID(99);
  m_oOrder->LoadSummary();
  m_oOrder->OrderID(1);
  ASSERT_EQ(m_oOrder->Error().Number, 3);
  Take();
  m_oOrder->AddItem(NewItem("A", 1, "2"));
  const Texts statements = Take();
  ASSERT_EQ(statements.size(), 5U);
  EXPECT_EQ(statements.back(), "update tblOrder set cTotalPrice = 12 where lOrderID = 1");
}

TEST_F(OrderDetailsStatements, AddItemThatIsRefusedRunsNoneOrStopsWhereItFails) {
  OrderDetails order;
  order.AddItem(NewItem("A"));
  EXPECT_EQ(RaisedNumber([&] { m_oOrder->AddItem(nullptr); }), 91);
  EXPECT_EQ(RaisedNumber([&] { m_oOrder->AddItem(NewItem("A", 2, "922337203685477")); }), 6);
  EXPECT_EQ(Take(), Texts());
}

TEST_F(OrderDetailsStatements, AddItemShowsTheStatementThatAQuoteStops) {
  const auto oItem = NewItem("A");
  oItem->UsuallyShips("it's");
  m_oOrder->AddItem(oItem);
  EXPECT_EQ(m_oOrder->Error().Number, 4);
  const Texts statements = Take();
  ASSERT_EQ(statements.size(), 2U);
  EXPECT_NE(statements.back().find(", 'it's', 999, "), std::string::npos) << statements.back();
}

TEST_F(OrderDetailsStatements, UpdateItemsDeletesThenReadsForChangingThenStoresTheTotal) {
  for (const char* zNumber : {"A", "B", "C", "D"}) {
    m_oOrder->AddItem(NewItem(zNumber, 1, "2"));
  }
  const auto oItems = std::make_shared<OrderItems>();
  for (const auto& oItem : {NewItem("A", 0), NewItem("B", 2), NewItem("C", 0), NewItem("D", 3)}) {
    oItem->ExtendedPrice(Currency::Parse("4.5"));
    oItems->Add(oItem, oItem->ItemNumber());
  }
  Take();
  m_oOrder->UpdateItems(oItems);
  EXPECT_EQ(Take(), (Texts{"delete from tblOrderItem where lOrderID = 1 and zItemNumber in ('A', 'C')",
                           "select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, "
                           "bIsTaxable from tblOrderItem where lOrderID = 1 and zItemNumber in ('B', 'D')",
                           kSum, "update tblOrder set cTotalPrice = 9 where lOrderID = 1", kGetTotal}));
}

TEST_F(OrderDetailsStatements, UpdateItemsRunsOnlyWhatItNeeds) {
  const auto oItems = std::make_shared<OrderItems>();
  m_oOrder->UpdateItems(oItems);
  EXPECT_EQ(Take(), (Texts{kSum, "update tblOrder set cTotalPrice = 0 where lOrderID = 1", kGetTotal}));
  oItems->Add(NewItem("A", 0), "A");
  m_oOrder->UpdateItems(oItems);
  EXPECT_EQ(Take(), (Texts{"delete from tblOrderItem where lOrderID = 1 and zItemNumber in ('A')", kSum,
                           "update tblOrder set cTotalPrice = 0 where lOrderID = 1", kGetTotal}));
}

TEST_F(OrderDetailsStatements, RemoveItemDeletesStoresTheTotalAndReadsIt) {
  m_oOrder->RemoveItem("A");
  EXPECT_EQ(Take(), (Texts{"delete from tblOrderItem where lOrderID = 1and zItemNumber = 'A'", kSum,
                           "update tblOrder set cTotalPrice = 0 where lOrderID = 1", kGetTotal}));
}

TEST_F(OrderDetailsStatements, ClearItemsDeletesAndSetsTheTotal) {
  m_oOrder->ClearItems();
  EXPECT_EQ(Take(), (Texts{"delete from tblOrderItem where lOrderID = 1",
                           "update tblOrder set cTotalPrice = 0 where lOrderID = 1"}));
}

TEST_F(OrderDetailsStatements, SaveSummaryWritesTheWholeHeader) {
  OrderDetails& order = *m_oOrder;
  order.PurchaseOrderNumber("PO'1");
  order.TotalPrice(Currency::Parse("-1234.5"));
  order.OrderInformation()->PORelease("rel");
  order.OrderInformation()->IsTaxExempt(true);
  order.DeliveryInformation()->DeliveryMethod(1);
  order.DeliveryInformation()->ShippingMethod(-9);
  order.PaymentInformation()->Method(2);
  order.PaymentInformation()->CreditCardDetails()->StateOr("so");
  order.PaymentInformation()->CreditCardDetails()->ZipOrPostCode("zip");
  order.PaymentInformation()->CreditCardDetails()->Comment4("c4");
  order.SaveSummary();
  EXPECT_EQ(
      Take(),
      Texts{"update tblOrder set zPurchaseOrderNumber = 'PO''1', zPOReleaseNumber = 'rel', cTotalPrice = "
            "-1234.5, zOIProjectOrJobNumber = '', zOIRequisitionOrApprovalName = '', zOIDepartment = '', "
            "zOIAttention = '', zOIPhoneNumber = '', zOIEmail = '', bOIIsTaxExempt = True, zOITaxIDNumber = "
            "'', lDIDeliveryMethod = 1, zDIFirstName = '', zDILastName = '', zDICompanyName = '', "
            "zDIAddress1 = '', zDIAddress2 = '', zDICity = '', zDIState = '', zDIStateOr = '', "
            "zDIZipOrPostCode = '', zDICountry = '', zDIPhoneNumber = '', zDIPhoneExt = '', zDIFax = '', "
            "zDICallBranchNumber = '', zDICallAttention = '', zDICallPhoneNumber = '', zDICallPhoneExt = "
            "'', lDIShippingMethod = -9, zDINotes = '', lPIPaymentMethod = 2, zPIMorvaneAccountNumber = '', "
            "zCCFirstName = '', zCCLastName = '', zCCCompanyName = '', zCCAddress1 = '', zCCAddress2 = '', "
            "zCCCity = '', zCCState = '', zCCStateor = 'so', zCCZipOrPostcode = 'zip', zCCCountry = '', "
            "zCCPhoneNumber = '', zCCPhoneExt = '', zCCFax = '', zCCAccountNumber = '', zCCComment1 = '', "
            "zCCComment2 = '', zCCComment3 = '', zCCComment4 = 'c4' where lOrderID = 1"});
  EXPECT_EQ(StoredHeader("zCCComment4"), "c4");
}

TEST_F(OrderDetailsStatements, SavePONumberWritesTheNumber) {
  m_oOrder->PurchaseOrderNumber("PO'1");
  m_oOrder->SavePONumber();
  EXPECT_EQ(Take(), Texts{"update tblOrder set zPurchaseOrderNumber = 'PO''1' where lOrderID = 1"});
  OrderDetails order;
  order.SavePONumber();
  EXPECT_EQ(Take(), Texts{"update tblOrder set zPurchaseOrderNumber = '' where lOrderID = -1"});
}

TEST_F(OrderDetailsStatements, SaveToHistoryAsksSubmitsAndMakesTheNextOrder) {
  m_oOrder->SaveToHistory();
  EXPECT_EQ(Take(), (Texts{"select count(*) from tblOrder where lOrderID = 1and bIsCurrent = True",
                           "update tblOrder set bIsCurrent = False, datSubmitDate = '2003-07-04 15:04:05' "
                           "where lOrderID = 1",
                           kNewCurrentOrder}));
  m_oOrder->SaveToHistory();
  EXPECT_EQ(Take(), Texts{"select count(*) from tblOrder where lOrderID = 1and bIsCurrent = True"});
}

TEST_F(OrderDetailsStatements, ItemCountCountsAndItemExistsRunsNone) {
  EXPECT_EQ(m_oOrder->ItemCount(), 0);
  EXPECT_EQ(Take(), Texts{"select count(*) from tblOrderItem where lOrderID = 1"});
  EXPECT_FALSE(m_oOrder->ItemExists("A"));
  EXPECT_EQ(Take(), Texts());
}

TEST_F(OrderDetailsStatements, ApplyRegistrationSettingsWritesEveryOrder) {
  Settings->Registration = {"ci", "co", "a1", "a2", "fa", "te", "ex", "cn",
                            "em", "fi", "la", "st", "so", "zi", "ac"};
  Settings->Defaults["DEFAULT_DI_CITY"] = "default's";
  m_oOrder->ApplyRegistrationSettings();
  EXPECT_EQ(
      Take(),
      Texts{"update tblOrder set zOIPhoneNumber = 'te', zOIEmail = 'em', zDIFirstName = 'fi', zDILastName = "
            "'la', zDICompanyName = 'co', zDIAddress1 = 'a1', zDIAddress2 = 'a2', zDICity = 'default''s', "
            "zDIState = 'st', zDIStateOr = 'so', zDIZipOrPostCode = 'zi', zDICountry = 'cn', zDIPhoneNumber "
            "= 'te', zDIPhoneExt = 'ex', zDIFax = 'fa', zCCFirstName = 'fi', zCCLastName = 'la', "
            "zCCCompanyName = 'co', zCCAddress1 = 'a1', zCCAddress2 = 'a2', zCCCity = 'ci', zCCState = "
            "'st', zCCStateOr = 'so', zCCZipOrPostCode = 'zi', zCCCountry = 'cn', zCCPhoneNumber = 'te', "
            "zCCPhoneExt = 'ex', zCCAccountNumber = 'ac', zCCFax = 'fa', zPIMorvaneAccountNumber = 'ac'"});
}

TEST_F(OrderDetailsStatements, GetXMLRunsNone) {
  m_oOrder->GetXML();
  EXPECT_EQ(Take(), Texts());
}

}  // namespace
