#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/support/FailureOf.h"
#include "tests/support/StoreFixture.h"

namespace {

using qm_ordering::CurrentOrder;
using qm_ordering::Failure;
namespace failure = qm_ordering::failure;

struct Use {
  const char* Name;
  std::function<void(CurrentOrder&)> Run;
};

std::shared_ptr<qm_ordering::OrderItem> NewItem() {
  auto oItem = std::make_shared<qm_ordering::OrderItem>();
  oItem->ItemNumber("NEW");
  oItem->Quantity(1);
  oItem->SellQuantity(1);
  oItem->ShipQuantity(1);
  return oItem;
}

const Use kUses[] = {
    {"LoadSummary", [](CurrentOrder& order) { order.LoadSummary(); }},
    {"LoadItems", [](CurrentOrder& order) { order.LoadItems(0); }},
    {"AddItem", [](CurrentOrder& order) { order.AddItem(NewItem()); }},
    {"ItemCount", [](CurrentOrder& order) { order.ItemCount(); }},
    {"UpdateItems",
     [](CurrentOrder& order) {
       const auto oItems = std::make_shared<qm_ordering::OrderItems>();
       oItems->Add(NewItem(), "NEW");
       order.UpdateItems(oItems);
     }},
    {"RemoveItem", [](CurrentOrder& order) { order.RemoveItem("NEW"); }},
    {"SaveSummary", [](CurrentOrder& order) { order.SaveSummary(); }},
    {"SavePONumber", [](CurrentOrder& order) { order.SavePONumber(); }},
    {"ApplyRegistrationSettings", [](CurrentOrder& order) { order.ApplyRegistrationSettings(); }},
    {"ClearItems", [](CurrentOrder& order) { order.ClearItems(); }},
    {"SaveToHistory", [](CurrentOrder& order) { order.SaveToHistory(); }},
};

void PrintTo(const Use& use, std::ostream* out) {
  *out << use.Name;
}

class StatementTraceReentry : public test::StoreFixture, public testing::WithParamInterface<Use> {};

TEST_P(StatementTraceReentry, OfTheSameObjectIsRefusedAndHarmsNothing) {
  for (const Use& within : kUses) {
    SCOPED_TRACE(within.Name);
    CurrentOrder order;
    int lRefused = 0;
    {
      test::TraceRecorder trace;
      trace.Before = [&, bWithin = false](const std::string&) mutable {
        if (std::exchange(bWithin, true)) {
          return;  // a statement that the use below causes
        }
        qm_ordering::ClearLastFailure();
        std::int32_t lNumber = 0;
        try {
          within.Run(order);
        } catch (const Failure& failure) {
          lNumber = failure.Number();
        }
        if (lNumber == failure::kInvalidCall || qm_ordering::LastFailure().Number == failure::kInvalidCall) {
          ++lRefused;
        }
        bWithin = false;
      };
      EXPECT_NO_THROW(GetParam().Run(order));
    }
    EXPECT_GT(lRefused, 0);
    EXPECT_NO_THROW(order.LoadItems(0));
    EXPECT_EQ(qm_ordering::CheckOrderStore(), std::vector<std::string>());
  }
}

INSTANTIATE_TEST_SUITE_P(Each, StatementTraceReentry, testing::ValuesIn(kUses),
                         [](const auto& use) { return std::string(use.param.Name); });

TEST_F(StatementTraceReentry, IsToldWhatIsRefused) {
  CurrentOrder order;
  test::TraceRecorder trace;
  std::string zWhy;
  trace.Before = [&](const std::string&) {
    const Failure refused = test::FailureOf([&] { order.LoadItems(0); });
    EXPECT_EQ(refused.Number(), failure::kInvalidCall);
    zWhy = refused.Description();
  };
  order.ItemCount();
  EXPECT_EQ(zWhy, "The statement trace may not use the object whose statement it shows.");
}

TEST_F(StatementTraceReentry, OfAnotherObjectWorks) {
  CurrentOrder order;
  CurrentOrder other;
  test::TraceRecorder trace;
  int lCounted = -1;
  trace.Before = [&, bWithin = false](const std::string&) mutable {
    if (!bWithin) {
      bWithin = true;
      lCounted = other.ItemCount();
    }
  };
  order.LoadItems(0);
  EXPECT_EQ(lCounted, 0);
}

}  // namespace
