#include "qm_ordering/history/OrderHistory.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/StoreFixture.h"
#include "tests/support/StrictXml.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::Date;
using qm_ordering::OrderHistory;
using qm_ordering::PreviousOrder;
using qm_ordering::Variant;
using test::RaisedNumber;
namespace failure = qm_ordering::failure;

class OrderHistoryTest : public test::StoreFixture {
 protected:
  // Enters an order of one line and submits it; answers its id.
  static std::int32_t Submit(const std::string& zvPONumber, const char* zvPrice) {
    qm_ordering::CurrentOrder order;
    const auto oItem = std::make_shared<qm_ordering::OrderItem>();
    oItem->ItemNumber("A-1");
    oItem->Quantity(1);
    oItem->SellQuantity(1);
    oItem->ShipQuantity(1);
    oItem->Price(Currency::Parse(zvPrice));
    order.AddItem(oItem);
    order.OrderDetails()->PurchaseOrderNumber(zvPONumber);
    order.SaveSummary();
    order.SaveToHistory();
    EXPECT_EQ(0, order.Error().Number) << order.Error().Description;
    return order.OrderDetails()->OrderID();
  }

  static std::string Loaded(std::int32_t lvSortOrder) {
    OrderHistory history;
    history.LoadOrders(lvSortOrder);
    std::string zNumbers;
    for (const auto& oOrder : history) {
      zNumbers += oOrder->PurchaseOrderNumber() + " ";
    }
    return zNumbers;
  }

  test::EnvironmentScope Locale{"LC_ALL", "C"};
};

}  // namespace

TEST_F(OrderHistoryTest, OfNoSubmittedOrdersIsEmpty) {
  OrderHistory history;
  history.LoadOrders();
  EXPECT_EQ(0, history.Count());
  EXPECT_EQ("<orderhistory><previousorders/></orderhistory>", history.GetXML());
}

TEST_F(OrderHistoryTest, HoldsWhatWasSubmitted) {
  const std::int32_t lFirst = Submit("PO-1", "1234.5");
  Clock.Moment = Date(2003, 7, 5, 1, 2, 3);
  const std::int32_t lSecond = Submit("Bob's <PO>", "12");
  OrderHistory history;
  history.LoadOrders(2);
  ASSERT_EQ(2, history.Count());
  const auto oFirst = history.Item(lFirst);
  EXPECT_EQ("PO-1", oFirst->PurchaseOrderNumber());
  EXPECT_EQ(Date(2003, 7, 4, 15, 4, 5), oFirst->SubmitDate());
  EXPECT_EQ(Currency::Parse("1234.5"), oFirst->OrderTotal());
  EXPECT_EQ(lFirst, oFirst->OrderDetails()->OrderID());
  EXPECT_EQ(nullptr, oFirst->OrderDetails()->OrderInformation()) << "the order itself is not loaded";
  EXPECT_EQ(failure::kInvalidCall, RaisedNumber([&] { return history.Item(99); }));
  EXPECT_EQ("<orderhistory><previousorders><previousorder orderid=\"" + std::to_string(lFirst) +
                "\" purchaseordernumber=\"PO-1\" submitdate=\"7/4/2003\" ordertotal=\"1,234.50\"/>"
                "<previousorder orderid=\"" +
                std::to_string(lSecond) +
                "\" purchaseordernumber=\"Bob's &lt;PO>\" submitdate=\"7/5/2003\" ordertotal=\"12.00\"/>"
                "</previousorders></orderhistory>",
            history.GetXML());
  EXPECT_EQ("orderhistory", test::ReadStrictly(history.GetXML()).Name);
}

TEST_F(OrderHistoryTest, ComesInFourOrders) {
  Submit("b", "3");
  Clock.Moment = Date(2003, 7, 3);
  Submit("C", "1");
  Clock.Moment = Date(2003, 7, 2);
  Submit("a", "2");
  EXPECT_EQ("a b C ", Loaded(0));
  EXPECT_EQ("a b C ", Loaded(1));
  EXPECT_EQ("a C b ", Loaded(2));
  EXPECT_EQ("C a b ", Loaded(3));
  for (const std::int32_t lSortOrder : {-1, 4}) {
    EXPECT_EQ(failure::kIndexOutOfBounds, RaisedNumber([&] { return Loaded(lSortOrder); }));
  }
}

TEST_F(OrderHistoryTest, ComesByNumberThenDateUnlessItIsToldOtherwise) {
  Submit("a", "1");
  Clock.Moment = Date(2003, 7, 3);
  Submit("b", "3");
  Clock.Moment = Date(2003, 7, 2);
  Submit("A", "2");
  const test::TraceRecorder trace;
  OrderHistory history;
  history.LoadOrders();
  std::string zNumbers;
  for (const auto& oOrder : history) {
    zNumbers += oOrder->PurchaseOrderNumber() + " ";
  }
  EXPECT_EQ("A a b ", zNumbers);
  Loaded(0);
  Loaded(1);
  ASSERT_EQ(3U, trace.Statements().size());
  const std::string zOrder = " order by zPurchaseOrderNumber";
  EXPECT_TRUE(trace.Statements()[0].ends_with(zOrder + ", datSubmitDate")) << trace.Statements()[0];
  EXPECT_EQ(trace.Statements()[0], trace.Statements()[1]);
  EXPECT_TRUE(trace.Statements()[2].ends_with(zOrder)) << trace.Statements()[2];
}

TEST_F(OrderHistoryTest, WritesItsTotalsAsTheUsersLocaleSays) {
  Submit("PO-1", "1234.5");
  OrderHistory history;
  history.LoadOrders();
  const test::EnvironmentScope path("LOCPATH", QM_ORDERING_LOCALES);
  const test::EnvironmentScope german("LC_ALL", "de_DE.UTF-8");
  EXPECT_NE(std::string::npos, history.GetXML().find("submitdate=\"7/4/2003\" ordertotal=\"1.234,50\""))
      << history.GetXML();
}

TEST_F(OrderHistoryTest, RaisesWhatTheStoreRaises) {
  const std::int32_t lOrderID = Submit("PO-1", "1");
  Store.Run("create trigger refuse before delete on tblOrder begin select raise(abort, 'not now'); end");
  OrderHistory history;
  EXPECT_EQ(failure::kStoreCommand, test::FailureOf([&] { history.DeleteOrder(lOrderID); }).Number());
  EXPECT_EQ(Variant(true), history.ItemExists("PO-1"));
  Store.Run("drop view qryGetOrderItems; drop view qryGetOrderSummary; alter table tblOrder rename to gone");
  EXPECT_EQ(failure::kStoreNoTable, test::FailureOf([&] { history.LoadOrders(); }).Number());
  EXPECT_EQ(failure::kStoreNoTable, test::FailureOf([&] { history.DeleteOrder(lOrderID); }).Number());
  qm_ordering::ClearLastFailure();
  EXPECT_TRUE(history.ItemExists("PO-1").IsEmpty()) << "neither yes nor no";
  EXPECT_EQ(failure::kStoreNoTable, qm_ordering::LastFailure().Number);
  EXPECT_EQ("Database.OrderHistory_ItemExists", qm_ordering::LastFailure().Operation);
}

TEST_F(OrderHistoryTest, RaisesForAnOrderWhoseDateOrTotalIsNone) {
  const std::int32_t lOrderID = Submit("PO-1", "1");
  Submit("PO-2", "1");
  const std::string zWhere = " where lOrderID = " + std::to_string(lOrderID);
  for (const char* zChange : {"datSubmitDate = 'yesterday'", "datSubmitDate = null, cTotalPrice = 'abc'"}) {
    Store.Run("update tblOrder set " + std::string(zChange) + zWhere);
    OrderHistory history;
    EXPECT_EQ(failure::kTypeMismatch, test::FailureOf([&] { history.LoadOrders(); }).Number()) << zChange;
    EXPECT_EQ(0, history.Count());
  }
}

TEST_F(OrderHistoryTest, RaisesWhenItIsLoadedTwice) {
  Submit("a", "1");
  OrderHistory history;
  history.LoadOrders();
  EXPECT_EQ(failure::kDuplicateKey, RaisedNumber([&] {
              history.LoadOrders();
              return 0;
            }));
  EXPECT_EQ(1, history.Count());
}

TEST_F(OrderHistoryTest, KeepsTheEntryOfAnOrderThatItDeletes) {
  const std::int32_t lOrderID = Submit("PO-1", "1");
  OrderHistory history;
  history.LoadOrders();
  EXPECT_EQ(Variant(true), history.ItemExists("po-1"));
  history.DeleteOrder(lOrderID);
  EXPECT_EQ(1, history.Count());
  EXPECT_EQ("PO-1", history.Item(lOrderID)->PurchaseOrderNumber());
  EXPECT_EQ(Variant(false), history.ItemExists("PO-1"));
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrderItem"));
}

TEST_F(OrderHistoryTest, IsNotHiddenByARowWithoutItsValues) {
  Submit("a", "1");
  Store.Run("insert into tblOrder (bIsCurrent) values (0)");
  OrderHistory history;
  history.LoadOrders();
  ASSERT_EQ(2, history.Count());
  const auto oOrder = *history.begin();
  EXPECT_EQ("", oOrder->PurchaseOrderNumber());
  EXPECT_TRUE(oOrder->SubmitDate().IsZero());
  EXPECT_NE(std::string::npos, history.GetXML().find("submitdate=\"\" ordertotal=\"0.00\""));
}

TEST_F(OrderHistoryTest, SaysWhichOrderHasANumberThatXMLCannotHold) {
  Submit("PO-1", "1");
  const std::int32_t lOrderID = Submit("PO-2", "1");
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'x' || char(1) where lOrderID = " +
            std::to_string(lOrderID));
  OrderHistory history;
  history.LoadOrders();
  const qm_ordering::Failure raised = test::FailureOf([&] { history.GetXML(); });
  EXPECT_EQ(failure::kXmlCharacter, raised.Number());
  EXPECT_TRUE(raised.Description().starts_with("Order " + std::to_string(lOrderID) + ": "))
      << raised.Description();
}

TEST_F(OrderHistoryTest, GivesTheWholeOrderOfAnEntry) {
  const std::int32_t lOrderID = Submit("PO-1", "2.5");
  OrderHistory history;
  history.LoadOrders();
  const auto oOrder = history.Item(lOrderID);
  oOrder->LoadSummary();
  oOrder->OrderDetails()->LoadItems(0);
  EXPECT_EQ(1, oOrder->OrderDetails()->OrderItems()->Count());
  EXPECT_FALSE(oOrder->OrderDetails()->IsCurrentOrder());
  EXPECT_EQ(oOrder->OrderDetails()->GetXML(), oOrder->GetXML());
}

TEST_F(OrderHistoryTest, PreviousOrderSetsTheIdOfItsDetailsToo) {
  PreviousOrder order;
  EXPECT_EQ(-1, order.OrderID());
  EXPECT_EQ(-1, order.OrderDetails()->OrderID());
  order.OrderID(12);
  EXPECT_EQ(12, order.OrderID());
  EXPECT_EQ(12, order.OrderDetails()->OrderID());
  const auto oOther = std::make_shared<qm_ordering::OrderDetails>();
  order.OrderDetails(oOther);
  EXPECT_EQ(oOther, order.OrderDetails());
  EXPECT_EQ(-1, oOther->OrderID());
  order.OrderDetails(nullptr);
  EXPECT_EQ(failure::kObjectNotSet, RaisedNumber([&] {
              order.OrderID(13);
              return 0;
            }));
  EXPECT_EQ(12, order.OrderID());
  EXPECT_EQ(failure::kObjectNotSet, RaisedNumber([&] { return order.GetXML(); }));
}

TEST_F(OrderHistoryTest, PreviousOrderHasOneOrderDetails) {
  PreviousOrder order;
  order.OrderID(12);
  const auto oDetails = order.OrderDetails();
  EXPECT_EQ(12, oDetails->OrderID());
  order.OrderID(13);
  EXPECT_EQ(oDetails, order.OrderDetails());
  EXPECT_EQ(13, oDetails->OrderID());
}

TEST_F(OrderHistoryTest, PreviousOrderTakesNullBeforeItsDetailsAreAskedFor) {
  PreviousOrder order;
  order.OrderDetails(nullptr);
  EXPECT_EQ(nullptr, order.OrderDetails());
  for (const auto& use : std::vector<std::function<void()>>{
           [&] { order.OrderID(13); }, [&] { order.LoadSummary(13); }, [&] { order.GetXML(); }}) {
    EXPECT_EQ(failure::kObjectNotSet, RaisedNumber([&] {
                use();
                return 0;
              }));
  }
}

TEST_F(OrderHistoryTest, PreviousOrderLoadsTheSummaryOfTheOrderThatIsNamed) {
  const std::int32_t lOrderID = Submit("PO-1", "2.5");
  PreviousOrder order;
  const test::TraceRecorder trace;
  order.LoadSummary();
  EXPECT_EQ(-1, order.OrderID()) << "without an id it does nothing";
  EXPECT_EQ(std::vector<std::string>{}, trace.Statements());
  EXPECT_EQ(0, order.OrderDetails()->Error().Number);
  EXPECT_EQ(nullptr, order.OrderDetails()->OrderInformation());
  order.LoadSummary(std::to_string(lOrderID));
  EXPECT_EQ(lOrderID, order.OrderID());
  EXPECT_EQ("PO-1", order.PurchaseOrderNumber());
  EXPECT_EQ(Date(2003, 7, 4, 15, 4, 5), order.SubmitDate());
  EXPECT_EQ(Currency::Parse("2.5"), order.OrderTotal());
  EXPECT_EQ(failure::kTypeMismatch, RaisedNumber([&] {
              order.LoadSummary("abc");
              return 0;
            }));
  EXPECT_EQ(lOrderID, order.OrderID());
  order.LoadSummary(4711);
  EXPECT_EQ(4711, order.OrderID());
  EXPECT_EQ(3, order.OrderDetails()->Error().Number);
  EXPECT_EQ("PO-1", order.PurchaseOrderNumber());
}
