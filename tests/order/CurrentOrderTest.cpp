#include "qm_ordering/order/CurrentOrder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/order/LibraryAccess.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::CurrentOrder;
using qm_ordering::ErrorInfo;
using qm_ordering::Failure;
using qm_ordering::LibraryAccess;
using qm_ordering::OrderItems;
using qm_ordering::failure::kStoreUnavailable;
using test::RaisedNumber;

using Texts = std::vector<std::string>;

class CurrentOrderTest : public test::OrderFixture {
 protected:
  void TakeStoreAway() const {
    qm_ordering::ado::embedded::CloseIdleSessions();
    std::filesystem::rename(Store.Path(), Store.Path() + ".away");
  }
  void BringStoreBack() const { std::filesystem::rename(Store.Path() + ".away", Store.Path()); }

  // Leaves an error record in the facade's order, and none in the facade.
  static void SetOrdersRecord(const CurrentOrder& order) {
    qm_ordering::OrderDetails& details = *order.OrderDetails();
    const std::int32_t lOrderID = details.OrderID();
    details.OrderID(99);
    details.LoadSummary();
    details.OrderID(lOrderID);
    ASSERT_EQ(details.Error().Number, 3);
  }

  // Leaves an error record in the facade, and none in its order.
  static void SetFacadesRecord(CurrentOrder& orOrder) {
    qm_ordering::OrderDetails& details = *orOrder.OrderDetails();
    const std::int32_t lOrderID = details.OrderID();
    details.OrderID(-1);
    orOrder.SaveSummary();
    details.OrderID(lOrderID);
    details.LoadSummary();
    ASSERT_EQ(orOrder.Error(), (ErrorInfo{1, "Order not loaded yet"}));
    ASSERT_EQ(details.Error(), ErrorInfo());
  }

  static inline const ErrorInfo kNotFound = {3, "Order not found"};
};

TEST_F(CurrentOrderTest, MakesTheOneCurrentOrderInAnEmptyStore) {
  const CurrentOrder order;
  EXPECT_STREQ(order.ClassName(), "CurrentOrder");
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(Store.Query("select lOrderID, bIsCurrent from tblOrder"), (test::Rows{{"1", "-1"}}));
  EXPECT_EQ(order.OrderDetails()->OrderID(), 1);
  EXPECT_TRUE(order.OrderDetails()->IsCurrentOrder());
  EXPECT_EQ(order.OrderDetails()->OrderItems()->Count(), 0);
  EXPECT_TRUE(LibraryAccess::SummaryLoaded(order));
  EXPECT_FALSE(LibraryAccess::ItemsLoaded(order));
}

TEST_F(CurrentOrderTest, FindsTheCurrentOrderThatIsThere) {
  CurrentWith({NewItem("A", 2, "3")});
  const CurrentOrder order;
  EXPECT_EQ(order.OrderDetails()->OrderID(), 1);
  EXPECT_EQ(order.OrderDetails()->TotalPrice(), Currency::Parse("6"));
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "1");
}

TEST_F(CurrentOrderTest, AsksOnceForTheSummaryWhenItIsMade) {
  LoadCurrent();
  const test::TraceRecorder trace;
  const CurrentOrder order;
  EXPECT_EQ(trace.Statements(), Texts{"Select * from qryGetOrderSummary where bIsCurrent = True"});
}

TEST_F(CurrentOrderTest, HasOneOrderForItsLife) {
  CurrentOrder order;
  const auto oDetails = order.OrderDetails();
  order.LoadSummary();
  order.LoadItems(0);
  order.SaveToHistory();
  order.LoadSummary();
  EXPECT_EQ(order.OrderDetails(), oDetails);
}

TEST_F(CurrentOrderTest, ShowsAFailedStartInItsOrderAloneAndInTheLastFailure) {
  TakeStoreAway();
  qm_ordering::ClearLastFailure();
  CurrentOrder order;
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderDetails()->Error().Number, 5);
  EXPECT_NE(order.OrderDetails()->Error().Description.find(Store.Path()), std::string::npos);
  EXPECT_EQ(qm_ordering::LastFailure().Number, kStoreUnavailable);
  EXPECT_EQ(qm_ordering::LastFailure().Operation, "OrderDetails.LoadSummary");
  EXPECT_NE(qm_ordering::LastFailure().Description.find(Store.Path()), std::string::npos);
  EXPECT_FALSE(LibraryAccess::SummaryLoaded(order));
  EXPECT_EQ(order.OrderDetails()->OrderID(), -1);
  BringStoreBack();
  order.LoadSummary();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderDetails()->OrderID(), 1);
  EXPECT_TRUE(LibraryAccess::SummaryLoaded(order));
}

TEST_F(CurrentOrderTest, ShowsWhatFailedInTheStoreAfterLoadSummary) {
  CurrentOrder order;
  TakeStoreAway();
  order.LoadSummary();
  EXPECT_EQ(order.Error().Number, 5);
  EXPECT_TRUE(order.Error().Description.starts_with("-2147467259 : ")) << order.Error().Description;
  EXPECT_EQ(order.Error(), order.OrderDetails()->Error());
  EXPECT_FALSE(LibraryAccess::SummaryLoaded(order));
  BringStoreBack();
  order.LoadSummary();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_TRUE(LibraryAccess::SummaryLoaded(order));
}

TEST_F(CurrentOrderTest, AnswersACopyOfItsRecord) {
  CurrentOrder order;
  SetFacadesRecord(order);
  ErrorInfo record = order.Error();
  record.Number = 77;
  EXPECT_EQ(order.Error().Number, 1);
}

TEST_F(CurrentOrderTest, LoadsTheCurrentOrdersLinesAndChecksThem) {
  CurrentWith({NewItem("B", 10, "1"), NewItem("A", 12, "1")});
  Store.Run("update tblOrderItem set lSellQuantity = 5, lShipQuantity = 4");
  CurrentOrder order;
  order.OrderDetails()->OrderID(99);
  const test::TraceRecorder trace;
  order.LoadItems(1);
  EXPECT_EQ(trace.Statements(),
            Texts{"select * from qryGetOrderItems where bIsCurrent = True order by zItemNumber"});
  EXPECT_EQ(NumbersOf(*order.OrderDetails()), (Texts{"A", "B"}));
  EXPECT_TRUE(order.OrderDetails()->HasInvalidQuantities());
  EXPECT_FALSE(order.OrderDetails()->OrderItems()->Item("A")->ValidQuantity());
  EXPECT_TRUE(order.OrderDetails()->OrderItems()->Item("B")->ValidQuantity());
  EXPECT_TRUE(LibraryAccess::ItemsLoaded(order));
}

TEST_F(CurrentOrderTest, ChecksTheLinesByTheDeliveryMethodOfTheSummary) {
  CurrentWith({NewItem("A", 12, "1")});
  Store.Run(
      "update tblOrderItem set lSellQuantity = 5, lShipQuantity = 4; update tblOrder set "
      "lDIDeliveryMethod = 1");
  CurrentOrder order;
  order.LoadItems(0);
  EXPECT_FALSE(order.OrderDetails()->HasInvalidQuantities());
  Store.Run("update tblOrder set lDIDeliveryMethod = 0");
  order.LoadSummary();
  order.LoadItems(0);
  EXPECT_TRUE(order.OrderDetails()->HasInvalidQuantities());
}

TEST_F(CurrentOrderTest, PassesOnWhatLoadItemsRaises) {
  CurrentWith({NewItem("A", 12, "1")});
  CurrentOrder order;
  EXPECT_EQ(RaisedNumber([&] { order.LoadItems(7); }), 9);
  EXPECT_EQ(RaisedNumber([&] { order.LoadItems(-1); }), 9);
  EXPECT_FALSE(LibraryAccess::ItemsLoaded(order));
  Store.Run("update tblOrderItem set lSellQuantity = 0");
  EXPECT_EQ(RaisedNumber([&] { order.LoadItems(0); }), 11);
  EXPECT_EQ(order.Error(), ErrorInfo());
}

TEST_F(CurrentOrderTest, DoesWhatItsOrderDoes) {
  CurrentOrder order;
  order.AddItem(NewItem("A", 2, "3"));
  order.AddItem(NewItem("B", 1, "1"));
  EXPECT_EQ(order.ItemCount(), 2);
  EXPECT_TRUE(order.ItemExists("A"));
  EXPECT_FALSE(order.ItemExists("a"));
  order.RemoveItem("B");
  EXPECT_EQ(StoredLines(), Texts{"1 A 2 x 30000 = 60000"});
  const auto oItems = std::make_shared<OrderItems>();
  oItems->Add(NewItem("A", 4, "3"), "A");
  oItems->Item("A")->ExtendedPrice(Currency::Parse("12"));
  order.UpdateItems(oItems);
  EXPECT_EQ(StoredLines(), Texts{"1 A 4 x 30000 = 120000"});
  EXPECT_EQ(order.OrderDetails()->TotalPrice(), Currency::Parse("12"));
  EXPECT_EQ(order.GetXML(), order.OrderDetails()->GetXML());
  order.OrderDetails()->PurchaseOrderNumber("PO-1");
  order.SavePONumber();
  EXPECT_EQ(StoredHeader("zPurchaseOrderNumber"), "PO-1");
  order.OrderDetails()->DeliveryInformation()->City("Reims");
  order.SaveSummary();
  EXPECT_EQ(StoredHeader("zDICity"), "Reims");
  order.ClearItems();
  EXPECT_EQ(order.ItemCount(), 0);
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(qm_ordering::CheckOrderStore(), Texts());
}

TEST_F(CurrentOrderTest, RunsNoOtherStatementsThanItsOrder) {
  CurrentOrder facade;
  const auto oOrder = LoadCurrent();
  test::TraceRecorder trace;
  const auto oItems = std::make_shared<OrderItems>();
  oItems->Add(NewItem("B", 1), "B");
  const auto same = [&](const std::function<void()>& byFacade, const std::function<void()>& byOrder) {
    byFacade();
    const Texts statements = trace.Take();
    byOrder();
    EXPECT_EQ(statements, trace.Take());
  };
  same([&] { facade.AddItem(NewItem("A")); },
       [&] {
         oOrder->RemoveItem("A");
         trace.Take();
         oOrder->AddItem(NewItem("A"));
       });
  same([&] { facade.UpdateItems(oItems); }, [&] { oOrder->UpdateItems(oItems); });
  same([&] { facade.RemoveItem("A"); }, [&] { oOrder->RemoveItem("A"); });
  same([&] { facade.ClearItems(); }, [&] { oOrder->ClearItems(); });
  same([&] { facade.ItemCount(); }, [&] { oOrder->ItemCount(); });
  same([&] { facade.ItemExists("A"); }, [&] { oOrder->ItemExists("A"); });
  same([&] { facade.LoadSummary(); }, [&] { oOrder->LoadSummary(true); });
  same([&] { facade.LoadItems(3); }, [&] { oOrder->LoadItems(3, true, true); });
  same([&] { facade.SaveSummary(); }, [&] { oOrder->SaveSummary(false); });
  same([&] { facade.SavePONumber(); }, [&] { oOrder->SavePONumber(); });
  same([&] { facade.GetXML(); }, [&] { oOrder->GetXML(); });
  same([&] { facade.ApplyRegistrationSettings(); },
       [&] {
         oOrder->ApplyRegistrationSettings();
         oOrder->LoadSummary(true);
       });
}

TEST_F(CurrentOrderTest, CopiesTheRecordOfItsOrderWhereItSaysSo) {
  CurrentOrder order;
  order.AddItem(NewItem("A"));
  SetOrdersRecord(order);
  ASSERT_EQ(order.Error(), ErrorInfo());
  // Adding to a line that is there sets no record, and the one that stands is copied.
  order.AddItem(NewItem("A"));
  EXPECT_EQ(order.Error(), kNotFound);
  order.AddItem(NewItem("B"));
  EXPECT_EQ(order.Error(), ErrorInfo());

  order.OrderDetails()->OrderID(-1);
  order.AddItem(NewItem("C"));
  EXPECT_EQ(order.Error(), (ErrorInfo{4, "Order not loaded"}));
  order.SaveSummary();
  EXPECT_EQ(order.Error(), (ErrorInfo{1, "Order not loaded yet"}));
  order.SavePONumber();
  EXPECT_EQ(order.Error(), ErrorInfo());
  order.SaveToHistory();
  EXPECT_EQ(order.Error(), (ErrorInfo{2, "Specified order is not the current order"}));
  order.LoadSummary();
  EXPECT_EQ(order.Error(), ErrorInfo());
}

TEST_F(CurrentOrderTest, ClearsAnErrorWithTheNextMemberThatCopiesARecord) {
  const std::vector<std::function<void(CurrentOrder&)>> members = {
      [](CurrentOrder& order) { order.AddItem(NewItem("new")); },
      [](CurrentOrder& order) { order.LoadSummary(); },
      [](CurrentOrder& order) { order.SaveSummary(); },
      [](CurrentOrder& order) { order.SavePONumber(); },
      [](CurrentOrder& order) { order.ApplyRegistrationSettings(); },
      [](CurrentOrder& order) { order.SaveToHistory(); }};
  for (const auto& member : members) {
    CurrentOrder order;
    SetFacadesRecord(order);
    member(order);
    EXPECT_EQ(order.Error(), ErrorInfo());
  }
}

TEST_F(CurrentOrderTest, LeavesItsRecordAloneInEveryOtherMember) {
  CurrentOrder order;
  order.AddItem(NewItem("A"));
  const std::vector<std::function<void()>> members = {
      [&] { order.LoadItems(0); }, [&] { order.RemoveItem("B"); },
      [&] { order.ItemCount(); },  [&] { order.ItemExists("A"); },
      [&] { order.GetXML(); },     [&] { order.UpdateItems(std::make_shared<OrderItems>()); },
      [&] { order.ClearItems(); }};
  SetFacadesRecord(order);
  for (const auto& member : members) {
    member();
    EXPECT_EQ(order.Error(), (ErrorInfo{1, "Order not loaded yet"}));
  }
  order.LoadSummary();
  SetOrdersRecord(order);
  for (const auto& member : members) {
    member();
    EXPECT_EQ(order.Error(), ErrorInfo());
    EXPECT_EQ(order.OrderDetails()->Error(), kNotFound);
  }
}

TEST_F(CurrentOrderTest, KeepsItsRecordWhereAMemberRaises) {
  CurrentOrder order;
  SetFacadesRecord(order);
  EXPECT_EQ(RaisedNumber([&] { order.AddItem(nullptr); }), 91);
  EXPECT_EQ(RaisedNumber([&] { order.UpdateItems(nullptr); }), 91);
  EXPECT_EQ(RaisedNumber([&] { order.RemoveItem("'"); }), qm_ordering::failure::kStoreCommand);
  TakeStoreAway();
  EXPECT_EQ(RaisedNumber([&] { order.LoadItems(0); }), kStoreUnavailable);
  EXPECT_EQ(RaisedNumber([&] { order.ClearItems(); }), kStoreUnavailable);
  EXPECT_EQ(order.ItemCount(), 0);
  EXPECT_EQ(order.Error(), (ErrorInfo{1, "Order not loaded yet"}));
}

TEST_F(CurrentOrderTest, ShowsTheNextOrderOnceTheSummaryAndTheLinesAreLoadedAnew) {
  CurrentOrder order;
  order.AddItem(NewItem("A", 2, "3"));
  order.SaveToHistory();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderDetails()->OrderID(), 1);
  EXPECT_EQ(order.ItemCount(), 1);
  order.LoadSummary();
  order.LoadItems(0);
  EXPECT_EQ(order.OrderDetails()->OrderID(), 2);
  EXPECT_EQ(order.ItemCount(), 0);
  EXPECT_EQ(order.OrderDetails()->OrderItems()->Count(), 0);
  EXPECT_EQ(order.OrderDetails()->TotalPrice(), Currency());
}

TEST_F(CurrentOrderTest, ShowsTheRegistrationAtOnce) {
  CurrentOrder order;
  Settings->Registration.City = "Reims";
  Settings->Registration.Telephone = "26.47";
  order.ApplyRegistrationSettings();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderDetails()->DeliveryInformation()->City(), "Reims");
  EXPECT_EQ(order.OrderDetails()->PaymentInformation()->CreditCardDetails()->City(), "Reims");
  EXPECT_EQ(order.OrderDetails()->OrderInformation()->PhoneNumber(), "26.47");
}

TEST_F(CurrentOrderTest, TellsOfTheReloadAfterTheRegistrationWhateverCameBefore) {
  CurrentOrder order;
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "create order defaults") {
      throw Failure(75, "no defaults");
    }
  };
  order.ApplyRegistrationSettings();
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(order.OrderDetails()->Error(), ErrorInfo());
  EXPECT_EQ(qm_ordering::LastFailure().Number, 75);
}

TEST_F(CurrentOrderTest, RaisesARegistrationThatCannotBeRead) {
  CurrentOrder order;
  SetFacadesRecord(order);
  Settings->Before = [](const std::string& zvCall) {
    if (zvCall == "read registration") {
      throw Failure(75, "no registration");
    }
  };
  EXPECT_EQ(RaisedNumber([&] { order.ApplyRegistrationSettings(); }), 75);
  EXPECT_EQ(order.Error().Number, 1);
}

TEST_F(CurrentOrderTest, RaisesAStartUpThatFailsAndTriesItAgainAtTheNext) {
  qm_ordering::ForgetStartUp();
  Settings->Before = [](const std::string&) { throw Failure(75, "no settings"); };
  EXPECT_EQ(RaisedNumber([] { return std::make_shared<CurrentOrder>(); }), 75);
  Settings->Before = nullptr;
  const CurrentOrder order;
  EXPECT_EQ(order.OrderDetails()->OrderID(), 1);
}

TEST_F(CurrentOrderTest, OutlivesItsFacadeInWhatAHostKeepsOfIt) {
  auto oFacade = std::make_unique<CurrentOrder>();
  const auto oOrder = oFacade->OrderDetails();
  oFacade.reset();
  oOrder->AddItem(NewItem("A"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(oOrder->ItemCount(), 1);
}

}  // namespace
