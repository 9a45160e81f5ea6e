#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/FailureOf.h"
#include "tests/support/OrderFields.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::ErrorInfo;
using qm_ordering::OrderDetails;
using qm_ordering::OrderItem;
using test::FailureOf;
using test::HeaderFields;
using test::LineFields;
using test::Quoted;
using test::RaisedNumber;
using test::SampleValue;

using Numbers = std::vector<std::string>;

class OrderDetailsLoad : public test::OrderFixture {
 protected:
  // Every stored value of the order, by its column.
  static std::map<std::string, std::string> ValuesOf(const OrderDetails& order) {
    std::map<std::string, std::string> values;
    for (const auto& field : HeaderFields()) {
      values[field.Column] = field.Get(order);
    }
    return values;
  }

  static std::map<std::string, std::string> ValuesOf(const OrderItem& item) {
    std::map<std::string, std::string> values;
    for (const auto& field : LineFields()) {
      values[field.Column] = field.Get(item);
    }
    return values;
  }

  // The values of a column as the file takes them: texts in quotes.
  static std::string Literal(const std::string& zvColumn, const std::string& zvValue) {
    return zvColumn.starts_with("z") || zvColumn.starts_with("dat") ? Quoted(zvValue) : zvValue;
  }

  // Fills every column of the order's row but its key and its being current with the sample value.
  void FillStoredHeader(std::int32_t lvOrderID, int lvMark) const {
    std::string zAssignments;
    for (const auto& field : HeaderFields()) {
      if (field.Column != "lOrderID" && field.Column != "bIsCurrent") {
        zAssignments += (zAssignments.empty() ? "" : ", ") + field.Column + " = " +
                        Literal(field.Column, SampleValue(field.Column, lvMark));
      }
    }
    Store.Run("update tblOrder set " + zAssignments + " where lOrderID = " + std::to_string(lvOrderID));
  }

  // Makes the stored query of the summaries yield these columns of tblOrder.
  void ReplaceSummaryQuery(const std::vector<std::string>& zvColumns) const {
    std::string zList;
    for (const std::string& zColumn : zvColumns) {
      zList += (zList.empty() ? "" : ", ") + zColumn;
    }
    qm_ordering::ado::embedded::CloseIdleSessions();
    Store.Run("drop view qryGetOrderSummary; create view qryGetOrderSummary as select " + zList +
              " from tblOrder");
  }

  static std::vector<std::string> HeaderColumns() {
    std::vector<std::string> columns;
    for (const auto& field : HeaderFields()) {
      columns.push_back(field.Column);
    }
    return columns;
  }

  // Adds a line to order 1, past the library.
  void AddStoredLine(const std::string& zvItemNumber, const std::string& zvColumns = "",
                     const std::string& zvValues = "") const {
    Store.Run("insert into tblOrderItem (lOrderID, zItemNumber, lSellQuantity, lShipQuantity" +
              (zvColumns.empty() ? "" : ", " + zvColumns) + ") values (1, " + Quoted(zvItemNumber) +
              ", 1, 1" + (zvValues.empty() ? "" : ", " + zvValues) + ")");
  }

  // The lines of order 1 in the sort order.
  static Numbers Sorted(std::int32_t lvSortType) {
    OrderDetails order;
    order.OrderID(1);
    order.LoadItems(lvSortType);
    return NumbersOf(order);
  }

  // The line's number as the order shows it, the line being the only one.
  std::string Shown(const std::string& zvStored) const {
    AddStoredLine(zvStored);
    OrderDetails order;
    order.OrderID(1);
    order.LoadItems();
    Store.Run("delete from tblOrderItem");
    EXPECT_EQ(order.OrderItems()->Count(), 1);
    const auto oItem = order.OrderItems()->Item(zvStored);
    return oItem == nullptr ? "(not under its stored number)" : oItem->ItemNumber();
  }
};

TEST_F(OrderDetailsLoad, NamesNoOrderAndHasNoHeaderWhenNew) {
  const OrderDetails order;
  EXPECT_STREQ(order.ClassName(), "OrderDetails");
  EXPECT_EQ(order.OrderID(), -1);
  EXPECT_EQ(order.TotalPrice(), Currency());
  EXPECT_TRUE(order.SubmitDate().IsZero());
  EXPECT_FALSE(order.IsCurrentOrder());
  EXPECT_EQ(order.PurchaseOrderNumber(), "");
  EXPECT_EQ(order.OrderInformation(), nullptr);
  EXPECT_EQ(order.PaymentInformation(), nullptr);
  EXPECT_EQ(order.DeliveryInformation(), nullptr);
  ASSERT_NE(order.OrderItems(), nullptr);
  EXPECT_EQ(order.OrderItems()->Count(), 0);
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_FALSE(order.HasInvalidQuantities());
}

TEST_F(OrderDetailsLoad, KeepsWhatItIsGiven) {
  OrderDetails order;
  order.OrderID(7);
  order.TotalPrice(Currency::Parse("12.3456"));
  order.SubmitDate(Date(2004, 2, 29, 1, 2, 3));
  order.PurchaseOrderNumber("  PO 7 ");
  EXPECT_EQ(order.OrderID(), 7);
  EXPECT_EQ(order.TotalPrice(), Currency::Parse("12.3456"));
  EXPECT_EQ(order.SubmitDate(), Date(2004, 2, 29, 1, 2, 3));
  EXPECT_EQ(order.PurchaseOrderNumber(), "  PO 7 ");
}

TEST_F(OrderDetailsLoad, TouchesNoStoreWhenNew) {
  Settings->User["OrderingDatabasePath"] = Folder.File("nowhere");
  qm_ordering::ForgetStartUp();
  const OrderDetails order;
  EXPECT_EQ(order.Error(), ErrorInfo());
}

TEST_F(OrderDetailsLoad, ReportsAnOrderThatIsNotInTheStoreAndStaysAsItWas) {
  const auto oOrder = LoadCurrent();
  test::FillHeader(*oOrder);
  oOrder->OrderID(99);
  const auto before = ValuesOf(*oOrder);
  oOrder->LoadSummary();
  EXPECT_EQ(oOrder->Error(), (ErrorInfo{3, "Order not found"}));
  EXPECT_EQ(ValuesOf(*oOrder), before);
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "1");
}

TEST_F(OrderDetailsLoad, MakesTheHeaderObjectsEvenWhenItFindsNoOrder) {
  OrderDetails order;
  order.LoadSummary(false);
  EXPECT_EQ(order.Error().Number, 3);
  EXPECT_NE(order.OrderInformation(), nullptr);
  EXPECT_NE(order.PaymentInformation(), nullptr);
  EXPECT_NE(order.DeliveryInformation(), nullptr);
  EXPECT_EQ(order.OrderID(), -1);
}

TEST_F(OrderDetailsLoad, CreatesTheCurrentOrderFromTheDefaultsInAnEmptyStore) {
  Settings->Defaults["DEFAULT_OI_PO_NUM"] = "PO-7";
  Settings->Defaults["DEFAULT_DI_CITY"] = "Reims";
  Settings->Defaults["DEFAULT_DI_PH0NE_NUMBER"] = "26.47.15.10";
  Settings->Defaults["DEFAULT_CC_LAST_NAME"] = "O'Hara";
  Settings->Defaults["DEFAULT_PI_PAYMENT_METHOD"] = "1";
  Settings->Defaults["DEFAULT_OI_ISTAXEXEMPT"] = "true";
  OrderDetails order;
  order.LoadSummary();
  EXPECT_EQ(order.Error().Number, 3);
  order.LoadSummary(true);
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(Store.Query("select lOrderID, bIsCurrent, datSubmitDate, cTotalPrice from tblOrder"),
            (test::Rows{{"1", "-1", "NULL", "0"}}));
  EXPECT_EQ(order.OrderID(), 1);
  EXPECT_TRUE(order.IsCurrentOrder());
  EXPECT_TRUE(order.SubmitDate().IsZero());
  EXPECT_EQ(order.TotalPrice(), Currency());
  EXPECT_EQ(order.PurchaseOrderNumber(), "PO-7");
  EXPECT_EQ(order.DeliveryInformation()->City(), "Reims");
  EXPECT_EQ(order.DeliveryInformation()->PhoneNumber(), "26.47.15.10");
  EXPECT_EQ(order.PaymentInformation()->CreditCardDetails()->LastName(), "O'Hara");
  EXPECT_EQ(order.PaymentInformation()->Method(), 1);
  EXPECT_TRUE(order.OrderInformation()->IsTaxExempt());
}

TEST_F(OrderDetailsLoad, CreatesAnOrderWithoutNullNumbersAndFlags) {
  LoadCurrent();
  for (const auto& field : HeaderFields()) {
    if (!field.Column.starts_with("z") && !field.Column.starts_with("dat")) {
      EXPECT_NE(StoredHeader(field.Column), "NULL") << field.Column;
    }
  }
}

TEST_F(OrderDetailsLoad, CreatesOneCurrentOrderAndNoMore) {
  LoadCurrent();
  const auto oAgain = LoadCurrent();
  EXPECT_EQ(oAgain->OrderID(), 1);
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "1");
}

TEST_F(OrderDetailsLoad, CreatesTheNextOneWhenAnotherProgramSubmitsAtOnceWhatItCreated) {
  OrderDetails order;
  {
    test::TraceRecorder trace;
    int lSelects = 0;
    trace.Before = [&](const std::string& zSQL) {
      if (zSQL.starts_with("Select * from qryGetOrderSummary") && ++lSelects == 2) {
        Store.Run("update tblOrder set bIsCurrent = 0");
      }
    };
    order.LoadSummary(true);
  }
  EXPECT_EQ(ErrorInfo(), order.Error()) << order.Error().Description;
  EXPECT_EQ(2, order.OrderID());
  EXPECT_TRUE(order.IsCurrentOrder());
}

TEST_F(OrderDetailsLoad, RecordsAStoreThatShowsNoCurrentOrderHoweverOftenOneIsCreated) {
  Store.Run("create trigger submit after insert on tblOrder begin update tblOrder set bIsCurrent = 0; end");
  OrderDetails order;
  order.LoadSummary(true);
  EXPECT_EQ(5, order.Error().Number);
  EXPECT_TRUE(order.Error().Description.starts_with("3021")) << order.Error().Description;
  EXPECT_EQ(-1, order.OrderID());
}

TEST_F(OrderDetailsLoad, LooksForTheCurrentOrderAndNotForItsOwnNumber) {
  AddSubmittedOrder(5);
  LoadCurrent();
  OrderDetails order;
  order.OrderID(5);
  order.LoadSummary(true);
  EXPECT_EQ(order.OrderID(), 6);
  EXPECT_TRUE(order.IsCurrentOrder());
}

TEST_F(OrderDetailsLoad, ReadsASubmittedOrderByItsNumber) {
  LoadCurrent();
  AddSubmittedOrder(5);
  OrderDetails order;
  order.OrderID(5);
  order.LoadSummary();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderID(), 5);
  EXPECT_FALSE(order.IsCurrentOrder());
  EXPECT_EQ(order.SubmitDate(), Date(2001, 3, 3, 10, 0, 0));
}

TEST_F(OrderDetailsLoad, TakesEveryColumnOfTheSummaryToItsPlace) {
  const auto oOrder = LoadCurrent();
  FillStoredHeader(1, 2);
  oOrder->LoadSummary();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  for (const auto& field : HeaderFields()) {
    if (field.Column != "lOrderID" && field.Column != "bIsCurrent") {
      EXPECT_EQ(field.Get(*oOrder), SampleValue(field.Column, 2)) << field.Column;
    }
  }
  FillStoredHeader(1, 3);
  oOrder->LoadSummary();
  EXPECT_TRUE(oOrder->OrderInformation()->IsTaxExempt());
  EXPECT_EQ(oOrder->DeliveryInformation()->Notes(), SampleValue("zDINotes", 3));
}

TEST_F(OrderDetailsLoad, MakesNullTextsEmptyAndANullSubmitDateTheZeroDate) {
  const auto oOrder = LoadCurrent();
  test::FillHeader(*oOrder);
  std::string zAssignments;
  for (const auto& field : HeaderFields()) {
    if (field.Column.starts_with("z") || field.Column.starts_with("dat")) {
      zAssignments += (zAssignments.empty() ? "" : ", ") + field.Column + " = null";
    }
  }
  Store.Run("update tblOrder set " + zAssignments);
  oOrder->LoadSummary();
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(oOrder->PurchaseOrderNumber(), "");
  EXPECT_TRUE(oOrder->SubmitDate().IsZero());
  for (const auto& field : HeaderFields()) {
    if (field.Column.starts_with("z")) {
      EXPECT_EQ(field.Get(*oOrder), "") << field.Column;
    }
  }
}

// Each column in its turn is taken out of the stored query: what stands before it has been copied by then,
// what stands behind it has not. So the order of the copying shows.
TEST_F(OrderDetailsLoad, CopiesTheColumnsInTheirOrderUpToOneThatIsMissing) {
  LoadCurrent();
  FillStoredHeader(1, 2);
  Store.Run("update tblOrder set lOrderID = 8");
  const std::vector<std::string> all = HeaderColumns();
  for (std::size_t lMissing = 0; lMissing < all.size(); ++lMissing) {
    const std::string& zMissing = all[lMissing];
    std::vector<std::string> columns = all;
    columns.erase(columns.begin() + static_cast<std::ptrdiff_t>(lMissing));
    if (zMissing == "bIsCurrent") {
      // The statement asks for it, so only its value can be missing.
      continue;
    }
    ReplaceSummaryQuery(columns);
    OrderDetails order;
    order.LoadSummary();  // makes the header objects
    test::FillHeader(order, 3);
    order.OrderID(8);
    const auto before = ValuesOf(order);
    order.LoadSummary(zMissing == "lOrderID");
    EXPECT_EQ(order.Error().Number, 5) << zMissing;
    EXPECT_TRUE(order.Error().Description.starts_with("3265 : ")) << order.Error().Description;
    EXPECT_NE(order.Error().Description.find(zMissing), std::string::npos) << order.Error().Description;
    for (std::size_t l = 0; l < all.size(); ++l) {
      if (all[l] != "lOrderID" && all[l] != "bIsCurrent") {
        const std::string zExpected = l < lMissing ? SampleValue(all[l], 2) : before.at(all[l]);
        EXPECT_EQ(HeaderFields()[l].Get(order), zExpected) << all[l] << " without " << zMissing;
      }
    }
    EXPECT_EQ(order.IsCurrentOrder(), lMissing > 4) << zMissing;
  }
}

TEST_F(OrderDetailsLoad, RecordsTheNullOfANumberAndKeepsWhatItHasCopied) {
  LoadCurrent();
  FillStoredHeader(1, 2);
  for (const std::string zNull : {"lOrderID", "cTotalPrice", "bIsCurrent", "bOIIsTaxExempt",
                                  "lPIPaymentMethod", "lDIDeliveryMethod", "lDIShippingMethod"}) {
    std::vector<std::string> columns;
    for (const std::string& zColumn : HeaderColumns()) {
      columns.push_back(zColumn == zNull ? "null as " + zColumn : zColumn);
    }
    ReplaceSummaryQuery(columns);
    OrderDetails order;
    order.OrderID(1);
    order.LoadSummary(zNull != "bIsCurrent");
    EXPECT_EQ(order.Error().Number, 5) << zNull;
    EXPECT_TRUE(order.Error().Description.starts_with("94 : ")) << order.Error().Description;
    EXPECT_EQ(order.PurchaseOrderNumber(),
              zNull == "lOrderID" || zNull == "cTotalPrice" ? "" : SampleValue("zPurchaseOrderNumber", 2));
    EXPECT_EQ(order.DeliveryInformation()->City(), "") << zNull;
    EXPECT_EQ(qm_ordering::LastFailure().Number, 94);
    EXPECT_EQ(qm_ordering::LastFailure().Operation, "OrderDetails.LoadSummary");
  }
}

TEST_F(OrderDetailsLoad, ClearsItsRecordWhenItSucceeds) {
  OrderDetails order;
  order.OrderID(99);
  order.LoadSummary();
  ASSERT_EQ(order.Error().Number, 3);
  order.LoadSummary(true);
  EXPECT_EQ(order.Error(), ErrorInfo());
}

TEST_F(OrderDetailsLoad, RecordsAStoreThatIsMissing) {
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::remove(Store.Path());
  for (const bool bCurrent : {false, true}) {
    OrderDetails order;
    order.OrderID(4);
    order.LoadSummary(bCurrent);
    EXPECT_EQ(order.Error().Number, 5);
    EXPECT_TRUE(order.Error().Description.starts_with("-2147467259 : ")) << order.Error().Description;
    EXPECT_NE(order.Error().Description.find(Store.Path()), std::string::npos) << order.Error().Description;
    EXPECT_EQ(order.OrderID(), 4);
    EXPECT_EQ(qm_ordering::LastFailure().Operation, "OrderDetails.LoadSummary");
  }
  EXPECT_FALSE(std::filesystem::exists(Store.Path()));
}

TEST_F(OrderDetailsLoad, RecordsDefaultsThatCannotBeReadWhenItCreatesTheCurrentOrder) {
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "default get DEFAULT_CC_FAX") {
      throw qm_ordering::Failure(75, "the settings are gone");
    }
  };
  OrderDetails order;
  order.LoadSummary(true);
  EXPECT_EQ(order.Error(), (ErrorInfo{5, "75 : the settings are gone"}));
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "0");
  Settings->Before = nullptr;
  order.LoadSummary(true);
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderID(), 1);
}

TEST_F(OrderDetailsLoad, UsesItsHeaderObjectsAgain) {
  const auto oOrder = LoadCurrent();
  const auto oInformation = oOrder->OrderInformation();
  const auto oPayment = oOrder->PaymentInformation();
  const auto oCard = oPayment->CreditCardDetails();
  const auto oDelivery = oOrder->DeliveryInformation();
  FillStoredHeader(1, 2);
  oOrder->LoadSummary();
  EXPECT_EQ(oOrder->OrderInformation(), oInformation);
  EXPECT_EQ(oOrder->PaymentInformation(), oPayment);
  EXPECT_EQ(oOrder->PaymentInformation()->CreditCardDetails(), oCard);
  EXPECT_EQ(oOrder->DeliveryInformation(), oDelivery);
  EXPECT_EQ(oDelivery->City(), SampleValue("zDICity", 2));
}

TEST_F(OrderDetailsLoad, KeepsTheCardThroughAReload) {
  const auto oOrder = LoadCurrent();
  const auto oCard = oOrder->PaymentInformation()->CreditCardDetails();
  oCard->CardType("Visa");
  oCard->CardNumber("4111 1111");
  oCard->ExpiryMonth(7);
  oCard->ExpiryYear(2009);
  oCard->CardHoldersRef("ref");
  oOrder->LoadSummary(true);
  EXPECT_EQ(oCard->CardType(), "Visa");
  EXPECT_EQ(oCard->CardNumber(), "4111 1111");
  EXPECT_EQ(oCard->ExpiryMonth(), 7);
  EXPECT_EQ(oCard->ExpiryYear(), 2009);
  EXPECT_EQ(oCard->CardHoldersRef(), "ref");
}

TEST_F(OrderDetailsLoad, LeavesTheLinesAlone) {
  const auto oOrder = CurrentWith({NewItem("A")});
  const auto oItems = oOrder->OrderItems();
  oOrder->LoadSummary(true);
  EXPECT_EQ(oOrder->OrderItems(), oItems);
  EXPECT_EQ(oItems->Count(), 1);
}

TEST_F(OrderDetailsLoad, ReleasesItsPartsWithItself) {
  auto oOrder = LoadCurrent();
  const std::weak_ptr<qm_ordering::OrderInformation> oInformation = oOrder->OrderInformation();
  const std::weak_ptr<qm_ordering::PaymentInformation> oPayment = oOrder->PaymentInformation();
  const std::weak_ptr<qm_ordering::DeliveryInformation> oDelivery = oOrder->DeliveryInformation();
  const std::weak_ptr<qm_ordering::OrderItems> oItems = oOrder->OrderItems();
  oOrder.reset();
  EXPECT_TRUE(oInformation.expired());
  EXPECT_TRUE(oPayment.expired());
  EXPECT_TRUE(oDelivery.expired());
  EXPECT_TRUE(oItems.expired());
}

TEST_F(OrderDetailsLoad, SortsTheLinesInEachOfTheSevenOrders) {
  LoadCurrent();
  const std::string zColumns = "zDescription, zManufacturer, zModel, lUsuallyShipsSortOrder, cPrice";
  AddStoredLine("D", zColumns, "'b', 'a', 'c', 2, 100000");
  AddStoredLine("a", zColumns, "'C', 'd', 'B', 0, 90000");
  AddStoredLine("C", zColumns, "'d', 'C', 'd', 999, -10000");
  AddStoredLine("B", zColumns, "'A', 'b', 'A', 1, 20000");
  EXPECT_EQ(Sorted(0), (Numbers{"D", "a", "C", "B"}));
  EXPECT_EQ(Sorted(1), (Numbers{"a", "B", "C", "D"}));
  EXPECT_EQ(Sorted(2), (Numbers{"B", "D", "a", "C"}));
  EXPECT_EQ(Sorted(3), (Numbers{"D", "B", "C", "a"}));
  EXPECT_EQ(Sorted(4), (Numbers{"B", "a", "D", "C"}));
  EXPECT_EQ(Sorted(5), (Numbers{"a", "B", "D", "C"}));
  EXPECT_EQ(Sorted(6), (Numbers{"C", "B", "a", "D"}));
}

TEST_F(OrderDetailsLoad, SortsLinesThatAreAlikeByTheirItemNumber) {
  LoadCurrent();
  for (const char* zNumber : {"C", "a", "B"}) {
    AddStoredLine(zNumber, "zDescription, zManufacturer, zModel", "'same', 'same', 'same'");
  }
  for (const std::int32_t lSortType : {2, 3, 4, 5, 6}) {
    EXPECT_EQ(Sorted(lSortType), (Numbers{"a", "B", "C"})) << lSortType;
  }
}

TEST_F(OrderDetailsLoad, RaisesASortOrderThatIsNoneAndHasNoLinesThen) {
  const auto oOrder = CurrentWith({NewItem("A")});
  const auto oBefore = oOrder->OrderItems();
  for (const std::int32_t lSortType :
       {7, -1, 8, std::numeric_limits<std::int32_t>::max(), std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(RaisedNumber([&] { oOrder->LoadItems(lSortType); }), 9) << lSortType;
    EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  }
  EXPECT_EQ(oBefore->Count(), 1);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsLoad, PutsANewCollectionInThePlaceOfTheOldOne) {
  const auto oOrder = CurrentWith({NewItem("A")});
  const auto oBefore = oOrder->OrderItems();
  const auto oItemBefore = oBefore->Item("A");
  oOrder->LoadItems();
  EXPECT_NE(oOrder->OrderItems(), oBefore);
  EXPECT_EQ(oBefore->Count(), 1);
  EXPECT_EQ(oBefore->Item("A"), oItemBefore);
  ASSERT_NE(oOrder->OrderItems()->Item("A"), nullptr);
  EXPECT_NE(oOrder->OrderItems()->Item("A"), oItemBefore);
}

TEST_F(OrderDetailsLoad, TakesEveryColumnOfALineToItsPlace) {
  LoadCurrent();
  for (const int lMark : {1, 2}) {
    std::string zColumns;
    std::string zValues;
    for (const auto& field : LineFields()) {
      if (field.Column != "lOrderID") {
        zColumns += ", " + field.Column;
        zValues += ", " + Literal(field.Column, SampleValue(field.Column, lMark));
      }
    }
    Store.Run("insert into tblOrderItem (lOrderID" + zColumns + ") values (1" + zValues + ")");
  }
  OrderDetails order;
  order.OrderID(1);
  order.LoadItems();
  ASSERT_EQ(order.OrderItems()->Count(), 2);
  for (const int lMark : {1, 2}) {
    const auto oItem = order.OrderItems()->Item(lMark);
    for (const auto& field : LineFields()) {
      EXPECT_EQ(field.Get(*oItem), field.Column == "lOrderID" ? "1" : SampleValue(field.Column, lMark))
          << field.Column;
    }
    EXPECT_TRUE(oItem->ValidQuantity());
    EXPECT_EQ(oItem->Error(), ErrorInfo());
  }
}

// The flags of the other test are all alike in a line.
TEST_F(OrderDetailsLoad, KeepsTheFlagsOfALineApart) {
  LoadCurrent();
  const std::vector<std::string> flags = {"bIsPriceModified", "bIsTaxable", "bHasContractItem",
                                          "bHasNotes",        "bImported",  "bHasPartsInfo"};
  for (const std::string& zFlag : flags) {
    AddStoredLine(zFlag, zFlag, "-1");
  }
  OrderDetails order;
  order.OrderID(1);
  order.LoadItems();
  for (const std::string& zFlag : flags) {
    const auto oItem = order.OrderItems()->Item(zFlag);
    ASSERT_NE(oItem, nullptr);
    auto values = ValuesOf(*oItem);
    for (const std::string& zOther : flags) {
      EXPECT_EQ(values[zOther], zOther == zFlag ? "-1" : "0") << zOther << " of " << zFlag;
    }
  }
}

TEST_F(OrderDetailsLoad, MakesNullTextsOfALineEmpty) {
  LoadCurrent();
  AddStoredLine("A");
  EXPECT_EQ(Store.Value("select zDescription from tblOrderItem"), "NULL");
  OrderDetails order;
  order.OrderID(1);
  order.LoadItems();
  const auto oItem = order.OrderItems()->Item("A");
  ASSERT_NE(oItem, nullptr);
  for (const auto& field : LineFields()) {
    if (field.Column.starts_with("z") && field.Column != "zItemNumber") {
      EXPECT_EQ(field.Get(*oItem), "") << field.Column;
    }
  }
}

TEST_F(OrderDetailsLoad, RaisesTheNullOfALinesNumberAndKeepsTheLinesBefore) {
  LoadCurrent();
  AddStoredLine("A");
  AddStoredLine("B");
  Store.Run(
      "drop view qryGetOrderItems; create view qryGetOrderItems as select i.lOrderEntered, i.lOrderID, "
      "i.zItemNumber, i.lQuantity, i.zDescription, i.zShortDescription, i.zManufacturer, i.zModel, "
      "i.lSellQuantity, i.lShipQuantity, i.zUsuallyShips, i.lUsuallyShipsSortOrder, i.bIsTaxable, "
      "case i.zItemNumber when 'B' then null else i.cPrice end as cPrice, i.cExtendedPrice, "
      "i.bIsPriceModified, i.zCustomerPartNumber, i.zCustomerNotes, i.bHasNotes, i.bHasPartsInfo, "
      "i.bHasContractItem, i.bImported, o.bIsCurrent from tblOrderItem i join tblOrder o on o.lOrderID = "
      "i.lOrderID");
  qm_ordering::ado::embedded::CloseIdleSessions();
  OrderDetails order;
  order.OrderID(1);
  EXPECT_EQ(RaisedNumber([&] { order.LoadItems(); }), 94);
  EXPECT_EQ(NumbersOf(order), Numbers{"A"});
  EXPECT_EQ(order.Error(), ErrorInfo());
}

TEST_F(OrderDetailsLoad, LoadsTheLinesOfItsOwnNumberBeforeItsSummary) {
  CurrentWith({NewItem("A")});
  OrderDetails order;
  order.LoadItems();
  EXPECT_EQ(order.OrderItems()->Count(), 0);
  order.OrderID(1);
  order.LoadItems();
  EXPECT_EQ(NumbersOf(order), Numbers{"A"});
  EXPECT_EQ(order.OrderItems()->Item("A")->OrderID(), 1);
}

TEST_F(OrderDetailsLoad, LoadsTheCurrentOrdersLinesWhateverItsOwnNumber) {
  AddSubmittedOrder(5);
  CurrentWith({NewItem("A")});
  OrderDetails order;
  order.OrderID(5);
  order.LoadItems(0, true);
  EXPECT_EQ(NumbersOf(order), Numbers{"A"});
  EXPECT_EQ(order.OrderID(), 5);
  EXPECT_EQ(order.OrderItems()->Item("A")->OrderID(), 6);
  order.LoadItems();
  EXPECT_EQ(order.OrderItems()->Count(), 0);
}

TEST_F(OrderDetailsLoad, FindsAQuantityThatIsNoWholeNumberOfPacks) {
  LoadCurrent();
  AddStoredLine("A", "lQuantity", "1");
  Store.Run("update tblOrderItem set lQuantity = 10, lSellQuantity = 3");
  AddStoredLine("B", "lQuantity", "4");
  const auto oOrder = LoadCurrent();
  oOrder->LoadItems(0, false, true);
  EXPECT_TRUE(oOrder->HasInvalidQuantities());
  EXPECT_FALSE(oOrder->OrderItems()->Item("A")->ValidQuantity());
  EXPECT_TRUE(oOrder->OrderItems()->Item("B")->ValidQuantity());
}

TEST_F(OrderDetailsLoad, FindsNoInvalidQuantityWhereAllFit) {
  LoadCurrent();
  AddStoredLine("A", "lQuantity", "4");
  const auto oOrder = LoadCurrent();
  oOrder->LoadItems(0, false, true);
  EXPECT_FALSE(oOrder->HasInvalidQuantities());
}

TEST_F(OrderDetailsLoad, ChecksShipPacksWhenTheOrderIsDelivered) {
  LoadCurrent();
  AddStoredLine("A", "lQuantity", "12");
  Store.Run("update tblOrderItem set lSellQuantity = 5, lShipQuantity = 4");
  const auto oOrder = LoadCurrent();
  oOrder->LoadItems(0, false, true);
  EXPECT_TRUE(oOrder->HasInvalidQuantities());
  // What counts is the method in memory, saved or not.
  oOrder->DeliveryInformation()->DeliveryMethod(7);
  oOrder->LoadItems(0, false, true);
  EXPECT_FALSE(oOrder->HasInvalidQuantities());
  EXPECT_TRUE(oOrder->OrderItems()->Item("A")->ValidQuantity());
}

TEST_F(OrderDetailsLoad, ChecksNoQuantityUnasked) {
  LoadCurrent();
  AddStoredLine("A", "lQuantity", "1");
  Store.Run("update tblOrderItem set lQuantity = 10, lSellQuantity = 3");
  const auto oOrder = LoadCurrent();
  oOrder->LoadItems(0, false, true);
  ASSERT_TRUE(oOrder->HasInvalidQuantities());
  oOrder->LoadItems();
  EXPECT_FALSE(oOrder->HasInvalidQuantities());
  EXPECT_TRUE(oOrder->OrderItems()->Item("A")->ValidQuantity());
}

TEST_F(OrderDetailsLoad, KeepsWhatItFoundOfTheQuantitiesWhenTheLinesCannotBeRead) {
  LoadCurrent();
  AddStoredLine("A", "lQuantity", "1");
  Store.Run("update tblOrderItem set lQuantity = 10, lSellQuantity = 3");
  const auto oOrder = LoadCurrent();
  oOrder->LoadItems(0, false, true);
  ASSERT_TRUE(oOrder->HasInvalidQuantities());
  EXPECT_EQ(RaisedNumber([&] { oOrder->LoadItems(7); }), 9);
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  EXPECT_TRUE(oOrder->HasInvalidQuantities());
}

TEST_F(OrderDetailsLoad, RaisesAPackOfZeroAndKeepsTheLinesBefore) {
  LoadCurrent();
  AddStoredLine("A", "lQuantity", "1");
  Store.Run("update tblOrderItem set lQuantity = 10, lSellQuantity = 3");
  AddStoredLine("B");
  Store.Run("update tblOrderItem set lSellQuantity = 0 where zItemNumber = 'B'");
  AddStoredLine("C");
  const auto oOrder = LoadCurrent();
  EXPECT_EQ(RaisedNumber([&] { oOrder->LoadItems(0, false, true); }), 11);
  EXPECT_EQ(NumbersOf(*oOrder), Numbers{"A"});
  EXPECT_TRUE(oOrder->HasInvalidQuantities());
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  oOrder->LoadItems();
  EXPECT_EQ(NumbersOf(*oOrder), (Numbers{"A", "B", "C"}));
}

TEST_F(OrderDetailsLoad, NeedsTheDeliveryInformationToCheckALine) {
  CurrentWith({NewItem("A")});
  OrderDetails order;
  order.LoadItems(0, false, true);  // no line, nothing to check
  EXPECT_EQ(order.OrderItems()->Count(), 0);
  order.OrderID(1);
  const auto failure = FailureOf([&] { order.LoadItems(0, false, true); });
  EXPECT_EQ(failure.Number(), 91);
  EXPECT_NE(failure.Description().find("delivery information"), std::string::npos) << failure.Description();
  EXPECT_EQ(order.OrderItems()->Count(), 0);
}

TEST_F(OrderDetailsLoad, ShowsAnItemNumberUpToTheDuplicateMarkerAndKeysItAsStored) {
  LoadCurrent();
  EXPECT_EQ(Shown("12345 DUP2"), "12345");
  EXPECT_EQ(Shown("A1DUP"), "A1");
  EXPECT_EQ(Shown("  A1  DUP"), "A1");
  EXPECT_EQ(Shown("A 1 DUP 3"), "A 1");
  EXPECT_EQ(Shown("XDUPYDUPZ"), "X");
  EXPECT_EQ(Shown("DUP"), "");
  EXPECT_EQ(Shown("DUPLEX"), "");
  EXPECT_EQ(Shown("   DUP"), "");
  EXPECT_EQ(Shown("A\t DUP"), "A\t");
  EXPECT_EQ(Shown("ÉTÉ DUP1"), "ÉTÉ");
}

TEST_F(OrderDetailsLoad, ShowsAnItemNumberWithoutTheMarkerAsItIs) {
  LoadCurrent();
  EXPECT_EQ(Shown("A1dup"), "A1dup");
  EXPECT_EQ(Shown("A1Dup2"), "A1Dup2");
  EXPECT_EQ(Shown("D UP"), "D UP");
  EXPECT_EQ(Shown("  A1  "), "  A1  ");
  EXPECT_EQ(Shown(""), "");
}

TEST_F(OrderDetailsLoad, HoldsTwoLinesThatShowOneItemNumber) {
  LoadCurrent();
  for (const char* zNumber : {"A1", "A1 DUP1", "A1 DUP2"}) {
    AddStoredLine(zNumber);
  }
  OrderDetails order;
  order.OrderID(1);
  order.LoadItems();
  EXPECT_EQ(NumbersOf(order), (Numbers{"A1", "A1", "A1"}));
  EXPECT_NE(order.OrderItems()->Item("a1 dup2"), nullptr);
  EXPECT_NE(order.OrderItems()->Item("A1"), order.OrderItems()->Item("A1 DUP1"));
}

TEST_F(OrderDetailsLoad, RaisesAStoreThatIsMissingWhenItLoadsLines) {
  const auto oOrder = CurrentWith({NewItem("A")});
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::rename(Store.Path(), Store.Path() + ".away");
  EXPECT_EQ(RaisedNumber([&] { oOrder->LoadItems(); }), qm_ordering::failure::kStoreUnavailable);
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  std::filesystem::rename(Store.Path() + ".away", Store.Path());
  oOrder->LoadItems();
  EXPECT_EQ(oOrder->OrderItems()->Count(), 1);
}

}  // namespace
