#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/order/LibraryAccess.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/FailureOf.h"
#include "tests/support/OrderFields.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::CheckOrderStore;
using qm_ordering::Currency;
using qm_ordering::ErrorInfo;
using qm_ordering::OrderDetails;
using qm_ordering::OrderItem;
using qm_ordering::OrderItems;
using test::FailureOf;
using test::LineFields;
using test::RaisedNumber;
using test::SampleValue;

using Texts = std::vector<std::string>;

constexpr std::int32_t kSmallest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kLargest = std::numeric_limits<std::int32_t>::max();
constexpr const char* kMost = "922337203685477.5807";

Currency Amount(const char* zvAmount) {
  return Currency::Parse(zvAmount);
}

class OrderDetailsItems : public test::OrderFixture {
 protected:
  // A collection of the items, each under its own number.
  static std::shared_ptr<OrderItems> Collection(const std::vector<std::shared_ptr<OrderItem>>& oItems) {
    auto oCollection = std::make_shared<OrderItems>();
    for (const auto& oItem : oItems) {
      oCollection->Add(oItem, oItem->ItemNumber());
    }
    return oCollection;
  }

  // A record that the operations below do not set, so that it shows whether they clear it.
  static void SetRecord(OrderDetails& orOrder) {
    const std::int32_t lOrderID = orOrder.OrderID();
    orOrder.OrderID(-1);
    orOrder.SaveSummary();
    orOrder.OrderID(lOrderID);
    ASSERT_EQ(orOrder.Error().Number, 1);
  }
};

using OrderDetailsAddItem = OrderDetailsItems;
using OrderDetailsUpdateItems = OrderDetailsItems;
using OrderDetailsRemoveItem = OrderDetailsItems;
using OrderDetailsClearItems = OrderDetailsItems;
using OrderDetailsItemExists = OrderDetailsItems;
using OrderDetailsItemCount = OrderDetailsItems;

TEST_F(OrderDetailsAddItem, RefusesAnItemBeforeAnyLoad) {
  OrderDetails order;
  const auto oItem = NewItem("A", 2, "3");
  order.AddItem(oItem);
  EXPECT_EQ(order.Error(), (ErrorInfo{4, "Order not loaded"}));
  EXPECT_EQ(order.OrderItems()->Count(), 0);
  EXPECT_EQ(order.TotalPrice(), Currency());
  EXPECT_EQ(oItem->OrderID(), 0);
  EXPECT_EQ(oItem->ExtendedPrice(), Currency());
  EXPECT_EQ(StoredLines(), Texts());
}

TEST_F(OrderDetailsAddItem, RaisesANullItemOnceAnOrderIsLoaded) {
  OrderDetails order;
  order.AddItem(nullptr);
  EXPECT_EQ(order.Error(), (ErrorInfo{4, "Order not loaded"}));
  const auto oOrder = LoadCurrent();
  EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(nullptr); }), 91);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsAddItem, StoresEveryFieldOfANewLine) {
  const auto oOrder = LoadCurrent();
  for (const int lMark : {1, 2}) {
    const auto oItem = std::make_shared<OrderItem>();
    for (const auto& field : LineFields()) {
      if (field.Set) {
        field.Set(*oItem, SampleValue(field.Column, lMark));
      }
    }
    oItem->UsuallyShips("1-3 days");
    oItem->Quantity(3);
    oItem->Price(Amount("12.3456"));
    qm_ordering::LibraryAccess::Imported(*oItem, true);
    oOrder->AddItem(oItem);
    ASSERT_EQ(oOrder->Error(), ErrorInfo());
    for (const auto& field : LineFields()) {
      // Whether an item is a contract item and whether it was imported is not for a host to store.
      const bool bStored = field.Column != "bHasContractItem" && field.Column != "bImported";
      EXPECT_EQ(Store.Value("select " + field.Column +
                            " from tblOrderItem where zItemNumber = " + test::Quoted(oItem->ItemNumber())),
                bStored ? field.Get(*oItem) : "0")
          << field.Column;
    }
  }
  EXPECT_EQ(Store.Query("select lOrderID, lUsuallyShipsSortOrder, cExtendedPrice from tblOrderItem"),
            (test::Rows{{"1", "1", "370368"}, {"1", "1", "370368"}}));
}

TEST_F(OrderDetailsAddItem, PutsANewLineIntoOrderStoreAndTotals) {
  const auto oOrder = LoadCurrent();
  const auto oItem = NewItem("A'1", 3, "2.5");
  oItem->ExtendedPrice(Amount("99"));
  oOrder->AddItem(oItem);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(oItem->OrderID(), 1);
  EXPECT_EQ(oItem->ExtendedPrice(), Amount("7.5"));
  EXPECT_EQ(oOrder->OrderItems()->Item("A'1"), oItem);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("7.5"));
  oOrder->AddItem(NewItem("B", 1, "0.0001"));
  EXPECT_EQ(oOrder->TotalPrice(), Amount("7.5001"));
  EXPECT_EQ(StoredLines(), (Texts{"1 A'1 3 x 25000 = 75000", "1 B 1 x 1 = 1"}));
  EXPECT_EQ(StoredTotal(1), "75001");
  EXPECT_EQ(NumbersOf(*oOrder), (Texts{"A'1", "B"}));
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsAddItem, AddsANewLinesPriceToTheTotalInMemoryWhateverThatIs) {
  const auto oOrder = LoadCurrent();
  oOrder->TotalPrice(Amount("100"));
  oOrder->AddItem(NewItem("A", 1, "2"));
  EXPECT_EQ(oOrder->TotalPrice(), Amount("102"));
  EXPECT_EQ(StoredTotal(1), "20000");
}

TEST_F(OrderDetailsAddItem, ClearsTheRecordWithANewLine) {
  const auto oOrder = LoadCurrent();
  SetRecord(*oOrder);
  oOrder->AddItem(NewItem("A"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsAddItem, AddsQuantitiesOfALineThatIsThereAndPricesTheSum) {
  const auto oFirst = NewItem("A", 5, "2");
  oFirst->Description("first");
  const auto oOrder = CurrentWith({oFirst, NewItem("B", 1, "10")});
  const auto oMore = NewItem("A", 3, "1.5");
  oMore->Description("second");
  oOrder->AddItem(oMore);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(StoredLines(), (Texts{"1 A 8 x 15000 = 120000", "1 B 1 x 100000 = 100000"}));
  EXPECT_EQ(Store.Value("select zDescription from tblOrderItem where zItemNumber = 'A'"), "first");
  EXPECT_EQ(StoredTotal(1), "220000");
  EXPECT_EQ(oOrder->TotalPrice(), Amount("22"));
  EXPECT_EQ(oMore->OrderID(), 1);
  EXPECT_EQ(oMore->Quantity(), 3);
  EXPECT_EQ(oMore->ExtendedPrice(), Amount("4.5"));
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsAddItem, LeavesTheCollectionAsItIsForALineThatIsThere) {
  const auto oFirst = NewItem("A", 5, "2");
  const auto oOrder = CurrentWith({oFirst});
  oOrder->AddItem(NewItem("A", 3, "2"));
  EXPECT_EQ(NumbersOf(*oOrder), Texts{"A"});
  EXPECT_EQ(oOrder->OrderItems()->Item("A"), oFirst);
  EXPECT_EQ(oFirst->Quantity(), 5);
  EXPECT_EQ(oOrder->ItemCount(), 1);
  oOrder->LoadItems();
  EXPECT_EQ(oOrder->OrderItems()->Item("A")->Quantity(), 8);
  EXPECT_EQ(oOrder->OrderItems()->Item("A")->ExtendedPrice(), Amount("16"));
}

TEST_F(OrderDetailsAddItem, AddsToAStoredLineThatTheCollectionDoesNotHold) {
  CurrentWith({NewItem("A", 5, "2")});
  const auto oOrder = LoadCurrent();
  oOrder->AddItem(NewItem("A", 3, "2"));
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  EXPECT_EQ(StoredLines(), Texts{"1 A 8 x 20000 = 160000"});
}

TEST_F(OrderDetailsAddItem, FindsALineInAnyLetterCase) {
  const auto oOrder = CurrentWith({NewItem("Prüf-É7", 5, "2")});
  oOrder->AddItem(NewItem("PRÜF-é7", 1, "3"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(StoredLines(), Texts{"1 Prüf-É7 6 x 30000 = 180000"});
  EXPECT_EQ(oOrder->OrderItems()->Count(), 1);
}

TEST_F(OrderDetailsAddItem, AddsTheSameObjectTwice) {
  const auto oItem = NewItem("A", 2, "1");
  const auto oOrder = CurrentWith({oItem, oItem});
  EXPECT_EQ(StoredLines(), Texts{"1 A 4 x 10000 = 40000"});
  EXPECT_EQ(oOrder->TotalPrice(), Amount("4"));
  EXPECT_EQ(oItem->Quantity(), 2);
}

TEST_F(OrderDetailsAddItem, TakesQuantitiesOfEitherSignAndZero) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 0, "2"), NewItem("C", -4, "0.5")});
  oOrder->AddItem(NewItem("A", -5, "2"));
  oOrder->AddItem(NewItem("B", -1, "-2"));
  EXPECT_EQ(StoredLines(), (Texts{"1 A 0 x 20000 = 0", "1 B -1 x -20000 = 20000", "1 C -4 x 5000 = -20000"}));
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsAddItem, LooksForTheLineInItsOwnOrderAlone) {
  AddSubmittedOrder(5);
  Store.Run("insert into tblOrderItem (lOrderID, zItemNumber, lQuantity) values (5, 'A', 40)");
  const auto oOrder = CurrentWith({NewItem("A", 1, "2")});
  EXPECT_EQ(StoredLines(), (Texts{"5 A 40 x 0 = 0", "6 A 1 x 20000 = 20000"}));
  EXPECT_EQ(NumbersOf(*oOrder), Texts{"A"});
}

TEST_F(OrderDetailsAddItem, KeepsTheTotalInMemoryWhileAnEarlierErrorStands) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  SetRecord(*oOrder);
  oOrder->AddItem(NewItem("A", 3, "2"));
  EXPECT_EQ(oOrder->Error(), (ErrorInfo{1, "Order not loaded yet"}));
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
  EXPECT_EQ(StoredLines(), Texts{"1 A 8 x 20000 = 160000"});
  EXPECT_EQ(StoredTotal(1), "160000");
}

TEST_F(OrderDetailsAddItem, ChangesNothingWhenPriceTimesQuantityIsOutOfRange) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  const auto before = Store.Everything();
  for (const char* zNumber : {"A", "B"}) {
    for (const std::int32_t lQuantity : {2, -2, kLargest, kSmallest}) {
      const auto oItem = NewItem(zNumber, lQuantity, kMost);
      oItem->ExtendedPrice(Amount("1"));
      EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(oItem); }), 6);
      EXPECT_EQ(oItem->OrderID(), 0);
      EXPECT_EQ(oItem->ExtendedPrice(), Amount("1"));
    }
  }
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
  EXPECT_EQ(NumbersOf(*oOrder), Texts{"A"});
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsAddItem, ChangesNothingWhenTheSumOfQuantitiesIsOutOfRange) {
  const auto oOrder = CurrentWith({NewItem("A", kLargest, "1"), NewItem("B", kSmallest, "1")});
  const auto before = Store.Everything();
  const auto failure = FailureOf([&] { oOrder->AddItem(NewItem("a", 1, "1")); });
  EXPECT_EQ(failure.Number(), 6);
  EXPECT_NE(failure.Description().find("2147483647 of item a"), std::string::npos) << failure.Description();
  EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(NewItem("B", -1, "1")); }), 6);
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("-1"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  oOrder->AddItem(NewItem("A", -1, "1"));
  EXPECT_EQ(oOrder->TotalPrice(), Amount("-2"));
}

TEST_F(OrderDetailsAddItem, ChangesNothingWhenThePriceOfTheSumIsOutOfRange) {
  const auto oOrder = CurrentWith({NewItem("A", 1, kMost)});
  const auto before = Store.Everything();
  EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(NewItem("A", 1, kMost)); }), 6);
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount(kMost));
}

TEST_F(OrderDetailsAddItem, ReachesBothEndsOfTheRangeOfMoney) {
  const auto oOrder = CurrentWith({NewItem("A", 1, kMost)});
  EXPECT_EQ(oOrder->TotalPrice(), Amount(kMost));
  oOrder->AddItem(NewItem("B", -1, kMost));
  oOrder->AddItem(NewItem("C", 1, "-922337203685477.5808"));
  EXPECT_EQ(oOrder->TotalPrice(), Amount("-922337203685477.5808"));
  EXPECT_EQ(StoredTotal(1), "-9223372036854775808");
  OrderDetails loaded;
  loaded.LoadSummary(true);
  loaded.LoadItems();
  EXPECT_EQ(loaded.TotalPrice(), Amount("-922337203685477.5808"));
  EXPECT_EQ(loaded.OrderItems()->Item("A")->ExtendedPrice(), Amount(kMost));
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsAddItem, RecordsATotalOutOfRangeAndTheLineStays) {
  const auto oOrder = CurrentWith({NewItem("A", 1, kMost)});
  const auto oItem = NewItem("B", 1, "0.0001");
  oOrder->AddItem(oItem);
  EXPECT_EQ(oOrder->Error().Number, 5);
  EXPECT_TRUE(oOrder->Error().Description.starts_with("6 : ")) << oOrder->Error().Description;
  EXPECT_EQ(StoredLines(), (Texts{"1 A 1 x 9223372036854775807 = 9223372036854775807", "1 B 1 x 1 = 1"}));
  EXPECT_EQ(StoredTotal(1), "9223372036854775807");
  EXPECT_EQ(oOrder->TotalPrice(), Amount(kMost));
  EXPECT_EQ(NumbersOf(*oOrder), Texts{"A"});
  EXPECT_EQ(CheckOrderStore(), Texts{"order 1: the sum of its lines is beyond the range of money"});
}

TEST_F(OrderDetailsAddItem, RaisesATotalOutOfRangeForALineThatIsThereAndTheLineStays) {
  const auto oOrder = CurrentWith({NewItem("A", 1, kMost), NewItem("B", 0, "1")});
  EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(NewItem("B", 1, "0.0001")); }), 6);
  EXPECT_EQ(StoredLines(), (Texts{"1 A 1 x 9223372036854775807 = 9223372036854775807", "1 B 1 x 1 = 1"}));
  EXPECT_EQ(StoredTotal(1), "9223372036854775807");
  EXPECT_EQ(oOrder->TotalPrice(), Amount(kMost));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(CheckOrderStore().size(), 1U);
}

TEST_F(OrderDetailsAddItem, RefusesAQuoteInTheUsuallyShipsTextAlsoABalancedOne) {
  const auto oOrder = LoadCurrent();
  for (const char* zUsuallyShips :
       {"'", "in ''a'' week", "x', 999, True, 1, 1, True, '', '', True, True) --"}) {
    const auto oItem = NewItem("A");
    oItem->UsuallyShips(zUsuallyShips);
    oOrder->AddItem(oItem);
    EXPECT_EQ(oOrder->Error(), (ErrorInfo{4, "Order not loaded"})) << zUsuallyShips;
  }
  EXPECT_EQ(StoredLines(), Texts());
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
}

TEST_F(OrderDetailsAddItem, StoresAnItemNumberWithAQuoteAndCannotAddToIt) {
  const auto oOrder = CurrentWith({NewItem("A'1", 5, "2")});
  const auto before = Store.Everything();
  EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(NewItem("a'1", 3, "2")); }),
            qm_ordering::failure::kStoreCommand);
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsAddItem, RecordsALineForAnOrderThatIsNotInTheStore) {
  LoadCurrent();
  OrderDetails order;
  order.OrderID(99);
  order.AddItem(NewItem("A"));
  EXPECT_EQ(order.Error(), (ErrorInfo{4, "Order not loaded"}));
  EXPECT_EQ(StoredLines(), Texts());
  EXPECT_EQ(order.OrderItems()->Count(), 0);
  EXPECT_EQ(order.TotalPrice(), Currency());
}

TEST_F(OrderDetailsAddItem, StoresARemovedItemAgainAndThenRaisesItsKeyUntilTheLinesAreLoaded) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  oOrder->RemoveItem("A");
  EXPECT_EQ(RaisedNumber([&] { oOrder->AddItem(NewItem("A", 3, "2")); }), 457);
  EXPECT_EQ(StoredLines(), Texts{"1 A 3 x 20000 = 60000"});
  EXPECT_EQ(StoredTotal(1), "60000");
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
  EXPECT_EQ(oOrder->OrderItems()->Item("A")->Quantity(), 5);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());

  oOrder->RemoveItem("A");
  oOrder->LoadSummary();
  oOrder->LoadItems();
  oOrder->AddItem(NewItem("A", 3, "2"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(oOrder->TotalPrice(), Amount("6"));
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsAddItem, TakesTheDuplicateMarkerAsAnyOtherText) {
  const auto oOrder = CurrentWith({NewItem("A1", 1, "1"), NewItem("A1 DUP", 2, "1")});
  EXPECT_EQ(NumbersOf(*oOrder), (Texts{"A1", "A1 DUP"}));
  EXPECT_EQ(StoredLines(), (Texts{"1 A1 1 x 10000 = 10000", "1 A1 DUP 2 x 10000 = 20000"}));
}

TEST_F(OrderDetailsUpdateItems, WritesQuantitiesPricesAndFlagsIntoTheStoredLines) {
  const auto oFirst = NewItem("A", 5, "2");
  oFirst->Description("kept");
  const auto oOrder = CurrentWith({oFirst, NewItem("B", 1, "10"), NewItem("C", 1, "100")});
  const auto oA = NewItem("A", 7, "3");
  oA->ExtendedPrice(Amount("20.5"));
  oA->IsPriceModified(true);
  oA->Description("not written");
  const auto oB = NewItem("b", 2, "4");
  oB->ExtendedPrice(Amount("8"));
  oB->IsTaxable(true);
  oOrder->UpdateItems(Collection({oA, oB}));
  EXPECT_EQ(Store.Query("select zItemNumber, lQuantity, cPrice, cExtendedPrice, bIsPriceModified, "
                        "bIsTaxable, zDescription from tblOrderItem order by lOrderEntered"),
            (test::Rows{{"A", "7", "30000", "205000", "-1", "0", "kept"},
                        {"B", "2", "40000", "80000", "0", "-1", ""},
                        {"C", "1", "1000000", "1000000", "0", "0", ""}}));
  EXPECT_EQ(oOrder->TotalPrice(), Amount("128.5"));
  EXPECT_EQ(StoredTotal(1), "1285000");
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsUpdateItems, RemovesTheLinesOfQuantityZero) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 1, "10")});
  oOrder->UpdateItems(Collection({NewItem("A", 0, "2")}));
  EXPECT_EQ(StoredLines(), Texts{"1 B 1 x 100000 = 100000"});
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
  oOrder->UpdateItems(Collection({NewItem("b", 0, "2")}));
  EXPECT_EQ(StoredLines(), Texts());
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
  EXPECT_EQ(StoredTotal(1), "0");
}

TEST_F(OrderDetailsUpdateItems, DoesNotReplaceTheCollection) {
  const auto oFirst = NewItem("A", 5, "2");
  const auto oOrder = CurrentWith({oFirst});
  const auto oItems = oOrder->OrderItems();
  oOrder->UpdateItems(Collection({NewItem("A", 0, "2")}));
  EXPECT_EQ(oOrder->OrderItems(), oItems);
  EXPECT_EQ(oItems->Item("A"), oFirst);
  EXPECT_EQ(oFirst->Quantity(), 5);
}

TEST_F(OrderDetailsUpdateItems, TakesItsOwnCollection) {
  const auto oFirst = NewItem("A", 5, "2");
  const auto oOrder = CurrentWith({oFirst});
  oFirst->Quantity(6);
  oFirst->ExtendedPrice(Amount("12"));
  oOrder->UpdateItems(oOrder->OrderItems());
  EXPECT_EQ(StoredLines(), Texts{"1 A 6 x 20000 = 120000"});
  EXPECT_EQ(oOrder->TotalPrice(), Amount("12"));
}

TEST_F(OrderDetailsUpdateItems, PassesOverItemsThatAreNotStoredAndLinesOfOtherOrders) {
  AddSubmittedOrder(5);
  Store.Run("insert into tblOrderItem (lOrderID, zItemNumber, lQuantity) values (5, 'A', 40)");
  const auto oOrder = CurrentWith({NewItem("A", 1, "2")});
  const auto oA = NewItem("A", 2, "2");
  oA->ExtendedPrice(Amount("4"));
  oOrder->UpdateItems(Collection({NewItem("Z", 9, "9"), oA, NewItem("Y", 0, "1")}));
  EXPECT_EQ(StoredLines(), (Texts{"5 A 40 x 0 = 0", "6 A 2 x 20000 = 40000"}));
}

TEST_F(OrderDetailsUpdateItems, DoesNotFindALineByTheShortNumberThatItShows) {
  const auto oOrder = CurrentWith({NewItem("A1 DUP", 2, "1")});
  oOrder->LoadItems();
  oOrder->OrderItems()->Item(1)->Quantity(0);
  oOrder->UpdateItems(oOrder->OrderItems());
  EXPECT_EQ(StoredLines(), Texts{"1 A1 DUP 2 x 10000 = 20000"});
}

TEST_F(OrderDetailsUpdateItems, RaisesAStoredLineWhoseItemStandsUnderAnotherKey) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 5, "2")});
  const auto before = Store.Everything();
  const auto oItems = Collection({NewItem("B", 6, "2")});
  oItems->Add(NewItem("A", 6, "2"), "key");
  EXPECT_EQ(RaisedNumber([&] { oOrder->UpdateItems(oItems); }), 91);
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("20"));
}

TEST_F(OrderDetailsUpdateItems, BringsTheTotalUpToDateAlsoForAnEmptyCollection) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  Store.Run("update tblOrder set cTotalPrice = 77");
  oOrder->UpdateItems(Collection({}));
  EXPECT_EQ(StoredTotal(1), "100000");
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
}

TEST_F(OrderDetailsUpdateItems, RaisesNullAndChangesNothing) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  const auto before = Store.Everything();
  EXPECT_EQ(RaisedNumber([&] { oOrder->UpdateItems(nullptr); }), 91);
  EXPECT_EQ(Store.Everything(), before);
}

TEST_F(OrderDetailsUpdateItems, RaisesAQuoteInAnItemNumberAndChangesNothing) {
  const auto oOrder = CurrentWith({NewItem("A'1", 5, "2"), NewItem("B", 1, "1")});
  const auto before = Store.Everything();
  EXPECT_EQ(RaisedNumber([&] {
              oOrder->UpdateItems(Collection({NewItem("B", 2), NewItem("A'1", 2)}));
            }),
            qm_ordering::failure::kStoreCommand);
  EXPECT_EQ(RaisedNumber([&] {
              oOrder->UpdateItems(Collection({NewItem("B", 0), NewItem("A'1", 0)}));
            }),
            qm_ordering::failure::kStoreCommand);
  EXPECT_EQ(RaisedNumber([&] { oOrder->UpdateItems(Collection({NewItem("') or ('' = '", 0)})); }),
            qm_ordering::failure::kStoreCommand);
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("11"));
}

TEST_F(OrderDetailsUpdateItems, RaisesATotalOutOfRangeAndTheLinesStay) {
  const auto oOrder = CurrentWith({NewItem("A", 1, kMost), NewItem("B", 1, "-1")});
  const auto oB = NewItem("B", 1, "1");
  oB->ExtendedPrice(Amount("1"));
  EXPECT_EQ(RaisedNumber([&] { oOrder->UpdateItems(Collection({oB})); }), 6);
  EXPECT_EQ(Store.Value("select cExtendedPrice from tblOrderItem where zItemNumber = 'B'"), "10000");
  EXPECT_EQ(oOrder->TotalPrice(), Amount("922337203685476.5807"));
  EXPECT_EQ(StoredTotal(1), "9223372036854765807");
  EXPECT_EQ(CheckOrderStore().size(), 1U);
}

TEST_F(OrderDetailsRemoveItem, RemovesTheStoredLineAndKeepsItInMemory) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 1, "10")});
  oOrder->RemoveItem("a");
  EXPECT_EQ(StoredLines(), Texts{"1 B 1 x 100000 = 100000"});
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
  EXPECT_EQ(StoredTotal(1), "100000");
  EXPECT_EQ(NumbersOf(*oOrder), (Texts{"A", "B"}));
  EXPECT_TRUE(oOrder->ItemExists("A"));
  EXPECT_EQ(oOrder->ItemCount(), 1);
  oOrder->RemoveItem("B");
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
  EXPECT_EQ(StoredTotal(1), "0");
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsRemoveItem, PassesOverAnItemThatIsNotThere) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  oOrder->RemoveItem("B");
  EXPECT_EQ(StoredLines(), Texts{"1 A 5 x 20000 = 100000"});
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
}

TEST_F(OrderDetailsRemoveItem, RaisesAQuoteAndRemovesNothing) {
  const auto oOrder = CurrentWith({NewItem("A'1", 5, "2")});
  const auto before = Store.Everything();
  for (const char* zNumber : {"A'1", "A''1", "' or '' = '"}) {
    EXPECT_EQ(RaisedNumber([&] { oOrder->RemoveItem(zNumber); }), qm_ordering::failure::kStoreCommand);
  }
  EXPECT_EQ(Store.Everything(), before);
  EXPECT_EQ(oOrder->TotalPrice(), Amount("10"));
}

TEST_F(OrderDetailsRemoveItem, LeavesOtherOrdersAlone) {
  AddSubmittedOrder(5);
  Store.Run("insert into tblOrderItem (lOrderID, zItemNumber, lQuantity) values (5, 'A', 40)");
  const auto oOrder = CurrentWith({NewItem("A", 1, "2")});
  oOrder->RemoveItem("A");
  EXPECT_EQ(StoredLines(), Texts{"5 A 40 x 0 = 0"});
}

TEST_F(OrderDetailsClearItems, SetsTheTotalToZeroAndKeepsTheLinesInMemory) {
  AddSubmittedOrder(5);
  Store.Run("insert into tblOrderItem (lOrderID, zItemNumber, lQuantity) values (5, 'A', 40)");
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 1, "10")});
  oOrder->ClearItems();
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
  EXPECT_EQ(StoredTotal(6), "0");
  EXPECT_EQ(StoredLines(), Texts{"5 A 40 x 0 = 0"});
  EXPECT_EQ(NumbersOf(*oOrder), (Texts{"A", "B"}));
  EXPECT_EQ(oOrder->ItemCount(), 0);
  EXPECT_EQ(CheckOrderStore(), Texts());
}

TEST_F(OrderDetailsItemExists, LooksInTheCollectionAlone) {
  const auto oOrder = CurrentWith({NewItem("A1", 5, "2")});
  EXPECT_TRUE(oOrder->ItemExists("A1"));
  EXPECT_FALSE(oOrder->ItemExists("B1"));
  EXPECT_FALSE(oOrder->ItemExists(""));
  EXPECT_FALSE(LoadCurrent()->ItemExists("A1"));
  oOrder->ClearItems();
  EXPECT_TRUE(oOrder->ItemExists("A1"));
}

TEST_F(OrderDetailsItemExists, MindsLetterCaseAndBlanks) {
  const auto oOrder = CurrentWith({NewItem("A1", 5, "2")});
  EXPECT_FALSE(oOrder->ItemExists("a1"));
  EXPECT_FALSE(oOrder->ItemExists("A1 "));
}

TEST_F(OrderDetailsItemExists, DoesNotFindALineByTheShortNumberThatItShows) {
  const auto oOrder = CurrentWith({NewItem("A1DUP", 5, "2")});
  EXPECT_TRUE(oOrder->ItemExists("A1DUP"));
  oOrder->LoadItems();
  EXPECT_EQ(oOrder->OrderItems()->Item("A1DUP")->ItemNumber(), "A1");
  EXPECT_FALSE(oOrder->ItemExists("A1"));
  EXPECT_FALSE(oOrder->ItemExists("A1DUP"));
}

TEST_F(OrderDetailsItemExists, DoesNotFindAnItemUnderAnotherKeyThanItsNumber) {
  const auto oOrder = LoadCurrent();
  oOrder->OrderItems()->Add(NewItem("A1"), "key");
  EXPECT_FALSE(oOrder->ItemExists("A1"));
  EXPECT_FALSE(oOrder->ItemExists("key"));
}

TEST_F(OrderDetailsItemCount, CountsInTheStore) {
  const auto oOrder = CurrentWith({NewItem("A"), NewItem("B")});
  EXPECT_EQ(oOrder->ItemCount(), 2);
  EXPECT_EQ(LoadCurrent()->ItemCount(), 2);
  EXPECT_EQ(OrderDetails().ItemCount(), 0);
  Store.Run("delete from tblOrderItem where zItemNumber = 'A'");
  EXPECT_EQ(oOrder->ItemCount(), 1);
  EXPECT_EQ(oOrder->OrderItems()->Count(), 2);
}

// What was recorded stays until an operation that sets the record.
TEST_F(OrderDetailsItems, LeaveTheRecordAsItIs) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B"), NewItem("C")});
  SetRecord(*oOrder);
  const ErrorInfo before = oOrder->Error();
  oOrder->LoadItems(0, true, true);
  EXPECT_EQ(oOrder->Error(), before);
  oOrder->AddItem(NewItem("A", 1, "2"));
  EXPECT_EQ(oOrder->Error(), before);
  oOrder->UpdateItems(Collection({NewItem("B", 0)}));
  EXPECT_EQ(oOrder->Error(), before);
  oOrder->RemoveItem("A");
  EXPECT_EQ(oOrder->Error(), before);
  EXPECT_EQ(oOrder->ItemCount(), 1);
  EXPECT_TRUE(oOrder->ItemExists("C"));
  EXPECT_EQ(oOrder->Error(), before);
  oOrder->ClearItems();
  EXPECT_EQ(oOrder->Error(), before);
  EXPECT_NE(oOrder->GetXML(), "");
  EXPECT_EQ(oOrder->Error(), before);
}

}  // namespace
