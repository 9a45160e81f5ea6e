#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/order/OrderDetails.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/order/OrderFixture.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::CheckOrderStore;
using qm_ordering::Currency;
using qm_ordering::ErrorInfo;
using qm_ordering::Failure;
using qm_ordering::OrderDetails;
using qm_ordering::OrderItems;
using qm_ordering::failure::kStoreCommand;
using qm_ordering::failure::kStoreUnavailable;
using test::RaisedNumber;

using Texts = std::vector<std::string>;

// Each member with the store failing at each of its statements in turn.
class OrderDetailsFailures : public test::OrderFixture {
 protected:
  static inline const ErrorInfo kRecorded = {5, "-2147467259 : the disk is gone"};

  // The record of a failure in the last step of an operation whose others stand.
  static ErrorInfo RecordedBehind(const std::string& zvWhatStands) {
    return {5, "-2147467259 : " + zvWhatStands + ": the disk is gone"};
  }

  // Runs the call with its statement at this place, counted from 1, failing. Answers the number that was
  // raised; fails the test when the call does not come to that statement, or goes on behind it.
  static std::int32_t RaisedAt(std::size_t lvStatement, const std::function<void()>& call,
                               std::int32_t lvNumber = kStoreUnavailable) {
    qm_ordering::ClearLastFailure();
    test::TraceRecorder trace;
    trace.Before = [&trace, lvStatement, lvNumber](const std::string&) {
      if (trace.Statements().size() == lvStatement) {
        throw Failure(lvNumber, "the disk is gone");
      }
    };
    const std::int32_t lRaised = RaisedNumber(call);
    EXPECT_EQ(trace.Statements().size(), lvStatement);
    return lRaised;
  }

  // The same for a call that is expected to record the failure; the record is the answer.
  static ErrorInfo RecordedAt(std::size_t lvStatement, OrderDetails& orOrder,
                              const std::function<void()>& call, const char* zvOperation) {
    EXPECT_EQ(RaisedAt(lvStatement, call), 0);
    EXPECT_EQ(qm_ordering::LastFailure().Number, kStoreUnavailable);
    EXPECT_TRUE(qm_ordering::LastFailure().Description.ends_with("the disk is gone"));
    EXPECT_EQ(qm_ordering::LastFailure().Operation, zvOperation);
    return orOrder.Error();
  }

  // How many statements the call runs when nothing fails.
  static std::size_t StatementsOf(const std::function<void()>& call) {
    const test::TraceRecorder trace;
    call();
    return trace.Statements().size();
  }
};

TEST_F(OrderDetailsFailures, AreRecordedByLoadSummary) {
  OrderDetails order;
  order.OrderID(1);
  EXPECT_EQ(RecordedAt(
                1, order, [&] { order.LoadSummary(); }, "OrderDetails.LoadSummary"),
            kRecorded);
  for (const std::size_t lStatement : {1U, 2U}) {
    EXPECT_EQ(RecordedAt(
                  lStatement, order, [&] { order.LoadSummary(true); }, "OrderDetails.LoadSummary"),
              kRecorded);
    EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "0");
  }
  EXPECT_EQ(RecordedAt(
                3, order, [&] { order.LoadSummary(true); }, "OrderDetails.LoadSummary"),
            kRecorded);
  EXPECT_EQ(order.OrderID(), 1);
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "1");
  order.LoadSummary(true);
  EXPECT_EQ(order.Error(), ErrorInfo());
  EXPECT_EQ(Store.Value("select count(*) from tblOrder"), "1");
}

TEST_F(OrderDetailsFailures, AreRaisedByLoadItems) {
  const auto oOrder = CurrentWith({NewItem("A")});
  EXPECT_EQ(RaisedAt(1, [&] { oOrder->LoadItems(0, true, true); }), kStoreUnavailable);
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  oOrder->LoadItems();
  EXPECT_EQ(oOrder->OrderItems()->Count(), 1);
}

TEST_F(OrderDetailsFailures, AreRaisedByAddItemAsLongAsItLooksForTheLine) {
  const auto oOrder = LoadCurrent();
  EXPECT_EQ(RaisedAt(1, [&] { oOrder->AddItem(NewItem("A")); }), kStoreUnavailable);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(StoredLines(), Texts());
}

TEST_F(OrderDetailsFailures, AreRecordedByAddItemOfANewLine) {
  const auto oOrder = LoadCurrent();
  const auto add = [&] { oOrder->AddItem(NewItem("A", 1, "2")); };
  EXPECT_EQ(RecordedAt(2, *oOrder, add, "Database.OrderDetails_AddItem"), kRecorded);
  EXPECT_EQ(StoredLines(), Texts());
  EXPECT_EQ(CheckOrderStore(), Texts());
  EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
  EXPECT_EQ(oOrder->TotalPrice(), Currency());
}

TEST_F(OrderDetailsFailures, AreRecordedByAddItemAsARefusedLineWhenTheStoreRefusesTheCommand) {
  const auto oOrder = LoadCurrent();
  EXPECT_EQ(RaisedAt(
                2, [&] { oOrder->AddItem(NewItem("A")); }, kStoreCommand),
            0);
  EXPECT_EQ(oOrder->Error(), (ErrorInfo{4, "Order not loaded"}));
  EXPECT_EQ(StoredLines(), Texts());
}

TEST_F(OrderDetailsFailures, BehindTheInsertLeaveTheLineAndTheOldTotal) {
  for (const std::size_t lStatement : {3U, 4U}) {
    Store.Run("delete from tblOrderItem; update tblOrder set cTotalPrice = 0");
    const auto oOrder = LoadCurrent();
    const auto add = [&] { oOrder->AddItem(NewItem("A", 1, "2")); };
    EXPECT_EQ(RecordedAt(lStatement, *oOrder, add, "Database.OrderDetails_AddItem"),
              RecordedBehind("The line is stored, but the order's total could not be brought up to date"));
    EXPECT_EQ(StoredLines(), Texts{"1 A 1 x 20000 = 20000"});
    EXPECT_EQ(StoredTotal(1), "0");
    EXPECT_EQ(oOrder->OrderItems()->Count(), 0);
    EXPECT_EQ(oOrder->TotalPrice(), Currency());
    EXPECT_EQ(CheckOrderStore(), Texts{"order 1: its total is 0, its lines add up to 2"});
    // The next operation that changes a line puts it right.
    oOrder->UpdateItems(std::make_shared<OrderItems>());
    EXPECT_EQ(CheckOrderStore(), Texts());
  }
}

TEST_F(OrderDetailsFailures, AreRaisedByAddItemOfALineThatIsThere) {
  for (std::size_t lStatement = 1; lStatement <= 6; ++lStatement) {
    Store.Run("delete from tblOrderItem; update tblOrder set cTotalPrice = 0");
    const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
    EXPECT_EQ(RaisedAt(lStatement, [&] { oOrder->AddItem(NewItem("A", 3, "2")); }), kStoreUnavailable);
    const bool bLine = lStatement > 3;
    const bool bTotal = lStatement > 5;
    EXPECT_EQ(StoredLines(), Texts{bLine ? "1 A 8 x 20000 = 160000" : "1 A 5 x 20000 = 100000"});
    EXPECT_EQ(StoredTotal(1), bTotal ? "160000" : "100000");
    EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("10"));
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
    oOrder->AddItem(NewItem("A", 1, "2"));
    EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse(bLine ? "18" : "12"));
    EXPECT_EQ(CheckOrderStore(), Texts());
  }
}

TEST_F(OrderDetailsFailures, AreRaisedByUpdateItems) {
  const auto oItems = std::make_shared<OrderItems>();
  oItems->Add(NewItem("A", 0, "2"), "A");
  oItems->Add(NewItem("B", 3, "2"), "B");
  oItems->Item("B")->ExtendedPrice(Currency::Parse("6"));
  for (std::size_t lStatement = 1; lStatement <= 5; ++lStatement) {
    Store.Run("delete from tblOrderItem; update tblOrder set cTotalPrice = 0");
    const auto oOrder = CurrentWith({NewItem("A", 5, "2"), NewItem("B", 1, "2")});
    EXPECT_EQ(RaisedAt(lStatement, [&] { oOrder->UpdateItems(oItems); }), kStoreUnavailable);
    Texts lines;
    if (lStatement < 2) {
      lines.emplace_back("1 A 5 x 20000 = 100000");
    }
    lines.emplace_back(lStatement < 3 ? "1 B 1 x 20000 = 20000" : "1 B 3 x 20000 = 60000");
    EXPECT_EQ(StoredLines(), lines) << lStatement;
    EXPECT_EQ(StoredTotal(1), lStatement < 5 ? "120000" : "60000");
    EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("12"));
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
    oOrder->UpdateItems(oItems);
    EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("6"));
    EXPECT_EQ(CheckOrderStore(), Texts());
  }
}

TEST_F(OrderDetailsFailures, AreRaisedByRemoveItem) {
  for (std::size_t lStatement = 1; lStatement <= 4; ++lStatement) {
    Store.Run("delete from tblOrderItem; update tblOrder set cTotalPrice = 0");
    const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
    EXPECT_EQ(RaisedAt(lStatement, [&] { oOrder->RemoveItem("A"); }), kStoreUnavailable);
    EXPECT_EQ(StoredLines().size(), lStatement < 2 ? 1U : 0U);
    EXPECT_EQ(StoredTotal(1), lStatement < 4 ? "100000" : "0");
    EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("10"));
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
    oOrder->RemoveItem("A");
    EXPECT_EQ(oOrder->TotalPrice(), Currency());
    EXPECT_EQ(CheckOrderStore(), Texts());
  }
}

TEST_F(OrderDetailsFailures, AreRaisedByClearItems) {
  for (std::size_t lStatement = 1; lStatement <= 2; ++lStatement) {
    Store.Run("delete from tblOrderItem; update tblOrder set cTotalPrice = 0");
    const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
    EXPECT_EQ(RaisedAt(lStatement, [&] { oOrder->ClearItems(); }), kStoreUnavailable);
    EXPECT_EQ(StoredLines().size(), lStatement < 2 ? 1U : 0U);
    EXPECT_EQ(StoredTotal(1), "100000");
    EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("10"));
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
    oOrder->ClearItems();
    EXPECT_EQ(CheckOrderStore(), Texts());
  }
}

TEST_F(OrderDetailsFailures, AreRecordedBySaveSummary) {
  const auto oOrder = LoadCurrent();
  oOrder->PurchaseOrderNumber("PO");
  const auto save = [&] { oOrder->SaveSummary(); };
  Settings->Calls.clear();
  EXPECT_EQ(RecordedAt(1, *oOrder, save, "Database.OrderDetails_SaveSummary"), kRecorded);
  EXPECT_EQ(StoredHeader("zPurchaseOrderNumber"), "");
  EXPECT_EQ(Settings->Calls, Texts());
  EXPECT_EQ(oOrder->PurchaseOrderNumber(), "PO");
}

TEST_F(OrderDetailsFailures, AreRecordedBySavePONumber) {
  const auto oOrder = LoadCurrent();
  oOrder->PurchaseOrderNumber("PO");
  const auto save = [&] { oOrder->SavePONumber(); };
  EXPECT_EQ(RecordedAt(1, *oOrder, save, "Database.SavePONumber"), kRecorded);
  EXPECT_EQ(StoredHeader("zPurchaseOrderNumber"), "");
}

TEST_F(OrderDetailsFailures, AreRecordedBySaveToHistory) {
  const auto oOrder = LoadCurrent();
  const auto submit = [&] { oOrder->SaveToHistory(); };
  for (const std::size_t lStatement : {1U, 2U}) {
    EXPECT_EQ(RecordedAt(lStatement, *oOrder, submit, "Database.OrderDetails_SaveToHistory"), kRecorded);
    EXPECT_EQ(Store.Query("select bIsCurrent, datSubmitDate from tblOrder"), (test::Rows{{"-1", "NULL"}}));
  }
  EXPECT_EQ(RecordedAt(3, *oOrder, submit, "Database.OrderDetails_SaveToHistory"),
            RecordedBehind(
                "The order is submitted, but the next one could not be created; loading the current order "
                "tries again"));
  EXPECT_EQ(Store.Query("select bIsCurrent, datSubmitDate from tblOrder"),
            (test::Rows{{"0", "2003-07-04 15:04:05"}}));
  oOrder->LoadSummary(true);
  EXPECT_EQ(oOrder->OrderID(), 2);
}

TEST_F(OrderDetailsFailures, AreNoLinesToItemCount) {
  const auto oOrder = CurrentWith({NewItem("A")});
  std::int32_t lCount = -1;
  EXPECT_EQ(RecordedAt(
                1, *oOrder, [&] { lCount = oOrder->ItemCount(); }, "Database.OrderDetails_ItemCount"),
            ErrorInfo());
  EXPECT_EQ(lCount, 0);
  EXPECT_EQ(oOrder->ItemCount(), 1);
}

TEST_F(OrderDetailsFailures, AreRecordedByApplyRegistrationSettings) {
  const auto oOrder = LoadCurrent();
  Settings->Registration.City = "Reims";
  const auto apply = [&] { oOrder->ApplyRegistrationSettings(); };
  EXPECT_EQ(RecordedAt(1, *oOrder, apply, "Database.ApplyDefaultsToCurrentOrder"), kRecorded);
  EXPECT_EQ(StoredHeader("zDICity"), "");
}

// The tests above name as many statements as there are.
TEST_F(OrderDetailsFailures, AreTriedAtEveryStatement) {
  OrderDetails order;
  EXPECT_EQ(StatementsOf([&] { order.LoadSummary(true); }), 3U);
  EXPECT_EQ(StatementsOf([&] { order.LoadSummary(); }), 1U);
  EXPECT_EQ(StatementsOf([&] { order.LoadItems(); }), 1U);
  EXPECT_EQ(StatementsOf([&] { order.AddItem(NewItem("A")); }), 4U);
  EXPECT_EQ(StatementsOf([&] { order.AddItem(NewItem("A")); }), 6U);
  const auto oItems = std::make_shared<OrderItems>();
  oItems->Add(NewItem("A", 1), "A");
  oItems->Add(NewItem("B", 0), "B");
  EXPECT_EQ(StatementsOf([&] { order.UpdateItems(oItems); }), 5U);
  EXPECT_EQ(StatementsOf([&] { order.RemoveItem("A"); }), 4U);
  EXPECT_EQ(StatementsOf([&] { order.ClearItems(); }), 2U);
  EXPECT_EQ(StatementsOf([&] { order.SaveSummary(); }), 1U);
  EXPECT_EQ(StatementsOf([&] { order.SavePONumber(); }), 1U);
  EXPECT_EQ(StatementsOf([&] { order.ItemCount(); }), 1U);
  EXPECT_EQ(StatementsOf([&] { order.ApplyRegistrationSettings(); }), 1U);
  EXPECT_EQ(StatementsOf([&] { order.SaveToHistory(); }), 3U);
}

TEST_F(OrderDetailsFailures, OfAStoreThatIsGoneAreRaisedOrRecordedByMember) {
  const auto oOrder = CurrentWith({NewItem("A", 5, "2")});
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::rename(Store.Path(), Store.Path() + ".away");
  const auto raised = [&](const std::function<void()>& call) {
    const std::int32_t lRaised = RaisedNumber(call);
    EXPECT_EQ(oOrder->Error(), ErrorInfo());
    return lRaised;
  };
  EXPECT_EQ(raised([&] { oOrder->AddItem(NewItem("A")); }), kStoreUnavailable);
  EXPECT_EQ(raised([&] { oOrder->UpdateItems(oOrder->OrderItems()); }), kStoreUnavailable);
  EXPECT_EQ(raised([&] { oOrder->RemoveItem("A"); }), kStoreUnavailable);
  EXPECT_EQ(raised([&] { oOrder->ClearItems(); }), kStoreUnavailable);
  EXPECT_EQ(raised([&] { EXPECT_EQ(oOrder->ItemCount(), 0); }), 0);
  EXPECT_EQ(raised([&] { EXPECT_TRUE(oOrder->ItemExists("A")); }), 0);
  EXPECT_EQ(oOrder->TotalPrice(), Currency::Parse("10"));
  for (const auto& call : std::vector<std::function<void()>>{
           [&] { oOrder->SaveSummary(); }, [&] { oOrder->SavePONumber(); }, [&] { oOrder->SaveToHistory(); },
           [&] { oOrder->ApplyRegistrationSettings(); }, [&] { oOrder->LoadSummary(true); }}) {
    EXPECT_EQ(RaisedNumber(call), 0);
    EXPECT_EQ(oOrder->Error().Number, 5);
    EXPECT_TRUE(oOrder->Error().Description.starts_with("-2147467259 : ")) << oOrder->Error().Description;
    EXPECT_NE(oOrder->Error().Description.find(Store.Path()), std::string::npos)
        << oOrder->Error().Description;
  }
  EXPECT_FALSE(std::filesystem::exists(Store.Path()));
  std::filesystem::rename(Store.Path() + ".away", Store.Path());
  oOrder->LoadSummary(true);
  EXPECT_EQ(oOrder->Error(), ErrorInfo());
  EXPECT_EQ(oOrder->ItemCount(), 1);
}

}  // namespace
