#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <optional>
#include <ostream>
#include <string>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/history/OrderHistory.h"
#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/order/OrderItems.h"
#include "qm_ordering/platform/text/NumberFormat.h"
#include "qm_ordering/registry/CreateObject.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/memory/OperationFixture.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/OrderFields.h"
#include "tests/support/RaisedNumber.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::Currency;
using qm_ordering::CurrentOrder;
using qm_ordering::OrderItems;
using qm_ordering::PersonalLists;
using test::Extent;
using test::FailingAllocation;
using test::HalfWay;
using test::Operation;
using test::RaisedNumber;
using Order = std::optional<CurrentOrder>;

class OutOfMemory;

struct NamedOperation {
  const char* Name;
  Operation (OutOfMemory::*Make)();
  // How often an allocation fails in the full tests that begin without a session: most of those are the
  // engine's opening, the same in every operation.
  std::int64_t ColdStride = 13;
  // The same of those that begin with one.
  std::int64_t WarmStride = 1;

  friend void PrintTo(const NamedOperation& operation, std::ostream* pOut) { *pOut << operation.Name; }
};

// The operations, each with the store as it is before it.
class OutOfMemory : public test::OperationFixture, public testing::WithParamInterface<NamedOperation> {
 public:
  Operation Creation() {
    return {.Prepare = [](Order& order, std::string&) { return [&order] { order.emplace(); }; },
            .Creates = true};
  }

  Operation LoadSummary() {
    FillStore();
    return {.Prepare = [](Order& order, std::string&) { return [&order] { order->LoadSummary(); }; }};
  }

  Operation LoadItems() {
    FillStore();
    return {.Prepare = [](Order& order, std::string&) { return [&order] { order->LoadItems(3); }; }};
  }

  Operation AddItemOfANewLine() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string&) {
                  return [&order, oItem = NewItem("new", 4)] { order->AddItem(oItem); };
                },
            .HalfWays = {{HalfWay::From::After, OldTotal()}}};
  }

  Operation AddItemOfAnExistingLine() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string&) {
                  return [&order, oItem = NewItem("4qx18", 4)] { order->AddItem(oItem); };
                },
            .HalfWays = {{HalfWay::From::After, OldTotal()}}};
  }

  Operation SaveSummary() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string&) {
                  test::FillHeader(*order->OrderDetails(), 2);
                  return [&order] { order->SaveSummary(); };
                },
            .HalfWays = {{HalfWay::From::After, "", HalfWay::From::Before}}};
  }

  Operation SavePONumber() {
    FillStore();
    return {.Prepare = [](Order& order, std::string&) {
      order->OrderDetails()->PurchaseOrderNumber("A purchase order's number of some length");
      return [&order] { order->SavePONumber(); };
    }};
  }

  Operation SaveToHistory() {
    FillStore();
    return {.Prepare = [](Order& order, std::string&) { return [&order] { order->SaveToHistory(); }; },
            .HalfWays = {{HalfWay::From::After, "delete from tblOrder where bIsCurrent = -1"}}};
  }

  Operation UpdateItems() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string&) {
                  auto oItems = std::make_shared<OrderItems>();
                  oItems->Add(NewItem("4QX17", 0), "4QX17");
                  oItems->Add(NewItem("4QX18", 4), "4QX18");
                  return [&order, oItems] { order->UpdateItems(oItems); };
                },
            .HalfWays = {
                {HalfWay::From::Before, "delete from tblOrderItem where zItemNumber = '4QX17'"},
                {HalfWay::From::After, OldTotal()},
            }};
  }

  Operation RemoveItem() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string&) {
                  return [&order, zNumber = std::string("4QX17")] { order->RemoveItem(zNumber); };
                },
            .HalfWays = {{HalfWay::From::After, OldTotal()}}};
  }

  Operation ClearItems() {
    FillStore();
    return {.Prepare = [](Order& order, std::string&) { return [&order] { order->ClearItems(); }; },
            .HalfWays = {{HalfWay::From::After, OldTotal()}}};
  }

  Operation ItemCount() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string& zrAnswer) {
                  return [&order, &zrAnswer] { zrAnswer = std::to_string(order->ItemCount()); };
                },
            .Swallows = true};
  }

  Operation ItemExists() {
    FillStore();
    return {.Prepare =
                [](Order& order, std::string& zrAnswer) {
                  return [&order, &zrAnswer, zNumber = std::string("4QX17 as no item is called at all")] {
                    zrAnswer = order->ItemExists(zNumber) ? "yes" : "no";
                  };
                },
            .Swallows = true};
  }

  Operation ApplyRegistrationSettings() {
    FillStore();
    return {.Prepare = [](Order& order,
                          std::string&) { return [&order] { order->ApplyRegistrationSettings(); }; },
            .Swallows = true};
  }

  Operation GetXML() {
    FillStore();
    return {.Prepare = [](Order& order, std::string& zrAnswer) {
      // The signs of the last locale are kept: after another one they are read anew.
      const test::EnvironmentScope other("LC_ALL", "C");
      EXPECT_EQ(qm_ordering::text::AmountFormat().Text(Currency()), "0.00");
      return [&order, &zrAnswer] { zrAnswer = order->GetXML(); };
    }};
  }

  Operation StartUp() {
    FillStore();
    return {.Prepare = [](Order&, std::string& zrAnswer) {
      qm_ordering::ForgetStartUp();
      return [&zrAnswer] { zrAnswer = qm_ordering::OrderStorePath(); };
    }};
  }

  Operation CheckOrderStore() {
    FillStore();
    return {.Prepare = [](Order&, std::string& zrAnswer) {
      return [&zrAnswer] { zrAnswer = std::to_string(qm_ordering::CheckOrderStore().size()); };
    }};
  }

  Operation CreateObject() {
    FillStore();
    return {.Prepare =
                [](Order&, std::string& zrAnswer) {
                  return [&zrAnswer, zName = std::string("QM_Ordering.CurrentOrder")] {
                    zrAnswer = qm_ordering::CreateObject(zName)->ClassName();
                  };
                },
            .Swallows = true};
  }

  // One that replaces a list, and so does what adding one does, too.
  Operation CreateList() {
    return OnLists([](PersonalLists& lists,
                      const std::string& zvName) { return std::to_string(lists.CreateList(zvName)); },
                   "TOOLS", "0");
  }

  Operation RenameList() {
    return OnLists(
        [](PersonalLists& lists, const std::string& zvName) {
          return std::string(lists.RenameList(1, zvName) ? "yes" : "no");
        },
        "Another name, of some length", "no");
  }

  Operation RemoveList() {
    return OnLists([](PersonalLists& lists, const std::string&) {
      lists.RemoveList(1);
      return std::string();
    });
  }

  Operation RemoveListByName() {
    return OnLists(
        [](PersonalLists& lists, const std::string& zvName) {
          return std::string(lists.RemoveListByName(zvName) ? "yes" : "no");
        },
        "TOOLS", "no");
  }

  Operation LoadLists() {
    return OnLists(
        [](PersonalLists& lists, const std::string& zvName) {
          lists.LoadLists();
          lists.GetName(2);
          lists.ListExists(zvName);
          return lists.GetXML();
        },
        "A name that no list has at all");
  }

  Operation SaveAsXML() {
    return OnLists([](PersonalLists& lists, const std::string&) {
      lists.LoadLists();
      lists.SaveAsXML();
      return std::string();
    });
  }

  Operation AddItemToAListOfANewLine() { return AddItemToAList("new"); }

  Operation AddItemToAListOfAnExistingLine() { return AddItemToAList("4qx18"); }

  Operation LoadList() {
    FillLists();
    return {.Prepare = [this](Order&, std::string&) {
      if (!List) {
        List.emplace();
      }
      List->OrderItems(std::make_shared<OrderItems>());
      return [this] {
        List->LoadSummary(1);
        List->LoadItems();
      };
    }};
  }

  Operation LoadHistory() {
    FillHistory();
    return {.Prepare =
                [](Order&, std::string& zrAnswer) {
                  return [&zrAnswer, zNumber = std::string("A number that no order has at all")] {
                    qm_ordering::OrderHistory history;
                    history.LoadOrders();
                    history.ItemExists(zNumber);
                    history.Item(1)->LoadSummary();
                    zrAnswer = history.GetXML();
                  };
                },
            .Swallows = true};
  }

  Operation DeleteOrder() {
    FillHistory();
    return {
        .Prepare = [](Order&, std::string&) { return [] { qm_ordering::OrderHistory().DeleteOrder(1); }; }};
  }

  // It reads and writes seven lines, each like the other ones.
  Operation ApplyImports() {
    FillStore();
    return {.Prepare =
                [](Order&, std::string& zrAnswer) {
                  return [&zrAnswer, &zTables = test::SmallLegacyTables()] {
                    qm_ordering::OrderHistoryImporter importer;
                    zrAnswer = AnswerOf(importer.ApplyImports(zTables), importer.LogHeader());
                  };
                },
            .Swallows = true,
            .AnswerOfFailure = "0"};
  }

  void FailEach(const Operation& operation, std::int64_t lvWarmStride, std::int64_t lvColdStride) {
    // The signs of its amounts must be converted from the locale's characters.
    const test::EnvironmentScope path("LOCPATH", QM_ORDERING_LOCALES);
    const test::EnvironmentScope locale("LC_ALL", "de_DE.UTF-8");
    OperationFixture::FailEach(operation, lvWarmStride, lvColdStride);
  }

 private:
  // The answer is made by the call, of what the library gives it and of no memory.
  template <typename Call>
  static Operation OnLists(Call call, const std::string& zvName = {},
                           const std::string& zvAnswerOfFailure = {}) {
    FillLists();
    return {.Prepare =
                [call, zvName](Order&, std::string& zrAnswer) {
                  return [call, zvName, &zrAnswer] {
                    PersonalLists lists;
                    zrAnswer = call(lists, zvName);
                  };
                },
            .Swallows = true,
            .AnswerOfFailure = zvAnswerOfFailure};
  }

  static const char* AnswerOf(std::int32_t lvOrders, const std::string& zvLogHeader) {
    if (lvOrders == 0 && zvLogHeader == "Failed: Could not find Order History database") {
      return "0";
    }
    const bool bWhole =
        lvOrders == test::kSmallOrders && zvLogHeader.ends_with("Success:\t3 purchase orders imported.");
    return bWhole ? "3" : "unclear";
  }

  Operation AddItemToAList(const std::string& zvItemNumber) {
    FillLists();
    return {.Prepare = [this, zvItemNumber](Order&, std::string&) {
      if (!List) {
        List.emplace();
      }
      return [this, oItem = NewItem(zvItemNumber, 4)] { List->AddItem(oItem, 1); };
    }};
  }

  static void FillHistory() {
    FillStore();
    CurrentOrder().SaveToHistory();
    FillStore();
  }
};

const auto kOperations = testing::Values(
    NamedOperation{"Creation", &OutOfMemory::Creation},
    NamedOperation{"LoadSummary", &OutOfMemory::LoadSummary, 1},
    NamedOperation{"LoadItems", &OutOfMemory::LoadItems},
    NamedOperation{"AddItemOfANewLine", &OutOfMemory::AddItemOfANewLine},
    NamedOperation{"AddItemOfAnExistingLine", &OutOfMemory::AddItemOfAnExistingLine},
    NamedOperation{"SaveSummary", &OutOfMemory::SaveSummary},
    NamedOperation{"SavePONumber", &OutOfMemory::SavePONumber},
    NamedOperation{"SaveToHistory", &OutOfMemory::SaveToHistory},
    NamedOperation{"UpdateItems", &OutOfMemory::UpdateItems},
    NamedOperation{"RemoveItem", &OutOfMemory::RemoveItem},
    NamedOperation{"ClearItems", &OutOfMemory::ClearItems},
    NamedOperation{"ItemCount", &OutOfMemory::ItemCount},
    NamedOperation{"ItemExists", &OutOfMemory::ItemExists},
    NamedOperation{"ApplyRegistrationSettings", &OutOfMemory::ApplyRegistrationSettings},
    NamedOperation{"GetXML", &OutOfMemory::GetXML}, NamedOperation{"StartUp", &OutOfMemory::StartUp},
    NamedOperation{"CheckOrderStore", &OutOfMemory::CheckOrderStore},
    NamedOperation{"CreateObject", &OutOfMemory::CreateObject},
    NamedOperation{"CreateList", &OutOfMemory::CreateList},
    NamedOperation{"RenameList", &OutOfMemory::RenameList},
    NamedOperation{"RemoveList", &OutOfMemory::RemoveList},
    NamedOperation{"RemoveListByName", &OutOfMemory::RemoveListByName},
    NamedOperation{"LoadLists", &OutOfMemory::LoadLists},
    NamedOperation{"SaveAsXML", &OutOfMemory::SaveAsXML},
    NamedOperation{"AddItemToAListOfANewLine", &OutOfMemory::AddItemToAListOfANewLine},
    NamedOperation{"AddItemToAListOfAnExistingLine", &OutOfMemory::AddItemToAListOfAnExistingLine},
    NamedOperation{"LoadList", &OutOfMemory::LoadList},
    NamedOperation{"LoadHistory", &OutOfMemory::LoadHistory},
    NamedOperation{"DeleteOrder", &OutOfMemory::DeleteOrder},
    NamedOperation{"ApplyImports", &OutOfMemory::ApplyImports, 53, 11});

std::string NameOf(const testing::TestParamInfo<NamedOperation>& info) {
  return info.param.Name;
}

class OutOfMemoryFull : public OutOfMemory {};

TEST_P(OutOfMemory, OfSomeAllocationsIsToldAndHarmsNothing) {
  FailEach((this->*GetParam().Make)(), 29, 211);
}
INSTANTIATE_TEST_SUITE_P(Each, OutOfMemory, kOperations, NameOf);

TEST_P(OutOfMemoryFull, OfEachAllocationIsToldAndHarmsNothing) {
  FailEach((this->*GetParam().Make)(), GetParam().WarmStride, GetParam().ColdStride);
}
INSTANTIATE_TEST_SUITE_P(Each, OutOfMemoryFull, kOperations, NameOf);

// What a folder holds, below it too.
std::string NamesIn(const std::string& zvFolder) {
  std::string zNames;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(zvFolder)) {
    zNames += entry.path().lexically_relative(zvFolder).string() + " ";
  }
  return zNames;
}

void FailCreationOfStores(std::int64_t lvStride) {
  const std::string kWhole = "made made/here made/here/Orders.mdb ";
  std::int64_t lFailures = 0;
  for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
    bool bFailed = true;
    for (std::int64_t lPosition = 1; bFailed; lPosition += lvStride) {
      const test::TempFolder folder;
      const std::string zFolder = folder.File("made/here");
      std::int32_t lNumber = 0;
      {
        const FailingAllocation failing(lPosition, extent);
        lNumber = RaisedNumber([&] {
          qm_ordering::CreateOrderStore(zFolder);
          return true;
        });
        bFailed = failing.HasFailed();
      }
      if (lNumber != 0) {
        ASSERT_EQ(lNumber, qm_ordering::failure::kOutOfMemory) << lPosition;
        ASSERT_EQ(NamesIn(folder.Path()), "") << lPosition;
        qm_ordering::CreateOrderStore(zFolder);
      }
      ASSERT_EQ(NamesIn(folder.Path()), kWhole) << lPosition;
      ASSERT_EQ(
          test::StoreFile(zFolder + "/Orders.mdb")
              .Query("select (select count(*) from tblOrder), (select zValue is not null from sysFormat), "
                     "(select group_concat(integrity_check) from pragma_integrity_check)"),
          (test::Rows{{"0", "1", "ok"}}))
          << lPosition;
      lFailures += bFailed ? 1 : 0;
    }
  }
  EXPECT_GT(lFailures, 0);
  std::printf("injected failures: %lld\n", static_cast<long long>(lFailures));
}

TEST(OutOfMemoryCreateOrderStore, OfSomeAllocationsLeavesNothingBehind) {
  FailCreationOfStores(29);
}

TEST(OutOfMemoryCreateOrderStoreFull, OfEachAllocationLeavesNothingBehind) {
  FailCreationOfStores(1);
}

class OutOfMemoryOfValues : public testing::Test {
 protected:
  // What the call raises when there is no memory at all.
  template <typename Call>
  static std::int32_t RaisedWithoutMemory(Call call) {
    const FailingAllocation failing(1, Extent::FromThenOn);
    return RaisedNumber(call);
  }

  test::SettingsScope Settings;
};

TEST_F(OutOfMemoryOfValues, IsTheOneFailureOfWhatTheyDo) {
  const std::string zLong = "a text that is longer than what a string holds in itself";
  qm_ordering::OrderItem item;
  qm_ordering::OrderInformation information;
  qm_ordering::DeliveryInformation delivery;
  delivery.CallBranchNumber(zLong);
  qm_ordering::PaymentInformation payment;
  payment.MorvaneAccountNumber(zLong);
  qm_ordering::CreditCardDetails card;
  OrderItems items;
  const auto oMember = std::make_shared<qm_ordering::OrderItem>();
  items.Add(oMember, zLong);
  const qm_ordering::Variant vKey(zLong);
  const std::string zOther = zLong + "!";

  EXPECT_EQ(RaisedWithoutMemory([&] { return item.GetXML(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return information.GetXML(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return delivery.GetXML(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return delivery.Validate(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return payment.GetXML(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return payment.Validate(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return card.Validate(); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] { return items.Item(vKey); }), 7);
  EXPECT_EQ(RaisedWithoutMemory([&] {
              items.Add(oMember, zOther);
              return true;
            }),
            7);

  EXPECT_EQ(items.Item(vKey), oMember);
  EXPECT_EQ(items.Item(zOther), nullptr);
  EXPECT_EQ(item.GetXML().substr(0, 11), "<orderitem ");
}

// What only copies a text lets the exception of the standard library pass.
TEST_F(OutOfMemoryOfValues, EndsTheCopyOfAVariant) {
  const qm_ordering::Variant vText("a text that is longer than what a string holds in itself");
  bool bEnded = false;
  {
    const FailingAllocation failing(1, Extent::FromThenOn);
    try {
      const qm_ordering::Variant vCopy(vText);
    } catch (const std::bad_alloc&) {
      bEnded = true;
    }
  }
  EXPECT_TRUE(bEnded);
  EXPECT_EQ(qm_ordering::Variant(vText), vText);
}

}  // namespace
