#include <gtest/gtest.h>
#include <sqlite3.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/processes/EngineSleep.h"
#include "tests/processes/SharedStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/Pipe.h"

namespace {

using qm_ordering::CurrentOrder;
using test::EngineSleep;
using test::NewItem;

constexpr std::int64_t kBusyTimeout = 5'000'000;

// A program that is in the middle of writing the store until it is told to end, and one that waits for it:
// this one. Its sleeps are counted and not slept.
class Waiting : public testing::Test {
 protected:
  Waiting() {
    {
      CurrentOrder order;
      order.AddItem(NewItem("OLD", 1, 10000));
    }
    test::SharedStore::Rest();
    m_oOther = std::make_unique<test::ChildProcess>([this] {
      sqlite3* pDatabase = nullptr;
      sqlite3_open(SharedStore.Store().Path().c_str(), &pDatabase);
      const bool bLocked = sqlite3_exec(pDatabase, "begin immediate", nullptr, nullptr, nullptr) == SQLITE_OK;
      m_oFromOther.Write(bLocked ? "y" : "n");
      m_oToOther.KeepReading();
      m_oToOther.Read();
      sqlite3_close(pDatabase);
      m_oFromOther.Write("e");
      return std::string();
    });
    EXPECT_EQ('y', m_oFromOther.Read());
    EngineSleep::Begin();
    EngineSleep::Instead = [](std::int64_t) {};
  }
  ~Waiting() override { EngineSleep::Instead = nullptr; }

  void LetOtherEnd() {
    m_oToOther.Write("e");
    EXPECT_EQ('e', m_oFromOther.Read());
  }

  // Makes the call; answers the failure that it raises or leaves in the error record, number 0 for none.
  static qm_ordering::Failure Call(CurrentOrder& order, const std::function<void()>& call) {
    const qm_ordering::Failure raised = test::FailureOf(call);
    const qm_ordering::ErrorInfo error = order.Error();
    return raised.Number() != 0 ? raised : qm_ordering::Failure(error.Number, error.Description);
  }

  // Every call that writes the store.
  static std::vector<std::pair<std::string, std::function<void(CurrentOrder&)>>> Calls() {
    return {
        {"add", [](CurrentOrder& order) { order.AddItem(NewItem("NEW", 1, 10000)); }},
        {"merge", [](CurrentOrder& order) { order.AddItem(NewItem("OLD", 1, 10000)); }},
        {"update",
         [](CurrentOrder& order) {
           const auto oItems = std::make_shared<qm_ordering::OrderItems>();
           oItems->Add(NewItem("OLD", 5, 10000), "OLD");
           order.UpdateItems(oItems);
         }},
        {"remove", [](CurrentOrder& order) { order.RemoveItem("OLD"); }},
        {"clear", [](CurrentOrder& order) { order.ClearItems(); }},
        {"save summary",
         [](CurrentOrder& order) {
           order.OrderDetails()->OrderInformation()->Attention("changed");
           order.SaveSummary();
         }},
        {"save PO number",
         [](CurrentOrder& order) {
           order.OrderDetails()->PurchaseOrderNumber("changed");
           order.SavePONumber();
         }},
        {"submit", [](CurrentOrder& order) { order.SaveToHistory(); }},
    };
  }

  test::SharedStore SharedStore;

 private:
  test::Pipe m_oToOther;
  test::Pipe m_oFromOther;
  std::unique_ptr<test::ChildProcess> m_oOther;
};

}  // namespace

TEST_F(Waiting, ForAStoreThatIsNeverFreedEndsAfterTheBusyTimeoutWithTheCause) {
  const test::Rows before = SharedStore.Store().Everything();
  for (const auto& [zName, call] : Calls()) {
    SCOPED_TRACE(zName);
    CurrentOrder order;
    EngineSleep::Begin();
    const qm_ordering::Failure failure = Call(order, [&] { call(order); });
    EXPECT_EQ(kBusyTimeout, EngineSleep::Asked());
    if (failure.Number() == 5) {
      EXPECT_EQ(0U, failure.Description().find(std::to_string(qm_ordering::failure::kStoreUnavailable)));
    } else {
      EXPECT_EQ(qm_ordering::failure::kStoreUnavailable, failure.Number());
    }
    for (const std::string& zWords :
         {SharedStore.Store().Path(), std::string("another program holds the store"),
          std::string("try again")}) {
      EXPECT_NE(std::string::npos, failure.Description().find(zWords)) << failure.Description();
    }
    EXPECT_EQ(before, SharedStore.Store().Everything());
  }
}

TEST_F(Waiting, ForAStoreThatIsFreedInTimeEndsWithTheCallDone) {
  bool bEnded = false;
  EngineSleep::Instead = [&](std::int64_t lvAsked) {
    if (!bEnded && lvAsked > kBusyTimeout - 500'000) {
      LetOtherEnd();
      bEnded = true;
    }
  };
  CurrentOrder order;
  const qm_ordering::Failure failure = Call(order, [&] { order.AddItem(NewItem("NEW", 2, 30000)); });
  EXPECT_EQ(0, failure.Number()) << failure.Description();
  EXPECT_TRUE(bEnded);
  EXPECT_GE(kBusyTimeout, EngineSleep::Asked());
  EXPECT_EQ("70000", SharedStore.Store().Value("select cTotalPrice from tblOrder"));
}

TEST_F(Waiting, IsNotNeededToRead) {
  CurrentOrder order;
  order.LoadItems(0);
  EXPECT_EQ(1, order.OrderDetails()->OrderItems()->Count());
  EXPECT_EQ(1, order.ItemCount());
  EXPECT_EQ(0, EngineSleep::Asked());
}
