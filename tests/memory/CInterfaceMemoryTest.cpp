#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "qm_ordering/qm_ordering_c.h"
#include "tests/c_interface/CHost.h"
#include "tests/memory/FailingAllocation.h"
#include "tests/memory/OperationFixture.h"

namespace {

using namespace test;

// Longer than what a string holds in itself.
const std::string kLong = "A text that is longer than what a string holds in itself";

// A call through the C interface, with all that it takes prepared.
struct Step {
  const char* Name;
  std::function<std::int32_t()> Call;
  // How often an allocation fails, where most of them are the engine's.
  std::int64_t Stride = 1;
};

std::int32_t KeepDefault(const char*, qm_ordering_reply*, void*) {
  return 0;
}

// Runs out of memory where the reply is copied, and does not look.
std::int32_t AnswerWithoutMemory(const char*, qm_ordering_reply* reply, void*) {
  const FailingAllocation failing(1, Extent::Once);
  const std::int32_t lNumber = qm_ordering_answer(reply, kLong.data(), kLong.size());
  EXPECT_EQ(7, lNumber);
  return 0;
}

class CInterfaceMemory : public OperationFixture {
 protected:
  CInterfaceMemory() {
    FillStore();
    m_oOrder = CObject("CurrentOrder");
    m_oItem = CObject("OrderItem");
    Put(m_oItem, "ItemNumber", TextValue("4QX17"));
    Put(m_oItem, "Price", CurrencyValue(125000));
    EXPECT_EQ(0, NumberOfCall(m_oOrder, "LoadItems", {IntegerValue(0)}));
    m_oItems = Get(Get(m_oOrder, "OrderDetails").Object(), "OrderItems").Object();
  }

  // What a call gives is cleared behind it.
  static std::int32_t CallAndClear(qm_ordering_object object, const char* zvMember,
                                   const qm_ordering_value* pArgument = nullptr) {
    qm_ordering_value result{};
    const std::int32_t lNumber =
        qm_ordering_call(object, zvMember, pArgument, pArgument == nullptr ? 0 : 1, &result);
    EXPECT_TRUE(lNumber == 0 || result.kind == QM_ORDERING_MISSING) << zvMember;
    EXPECT_EQ(0, qm_ordering_clear(&result));
    return lNumber;
  }

  static std::int32_t CreateAndRelease(const char* zvClass) {
    qm_ordering_object object = 1;
    const std::int32_t lNumber = qm_ordering_create(zvClass, &object);
    EXPECT_EQ(lNumber == 0, object != 0);
    EXPECT_EQ(0, qm_ordering_release(object));
    return lNumber;
  }

  std::int32_t Walk() const {
    qm_ordering_object walk = 1;
    const std::int32_t lNumber = qm_ordering_enumerate(m_oItems, &walk);
    EXPECT_EQ(lNumber == 0, walk != 0);
    std::int32_t lNext = 0;
    if (lNumber == 0) {
      qm_ordering_value member{};
      lNext = qm_ordering_next(walk, &member);
      EXPECT_EQ(lNext == 0, member.kind == QM_ORDERING_OBJECT);
      EXPECT_EQ(0, qm_ordering_clear(&member));
    }
    EXPECT_EQ(0, qm_ordering_release(walk));
    return lNumber != 0 ? lNumber : lNext;
  }

  std::vector<Step> Steps(std::int64_t lvStride) {
    m_oText = TextValue(kLong);
    m_oNumber = ObjectValue(m_oItem);
    m_oSort = IntegerValue(3);
    return {{"create", [] { return CreateAndRelease("QM_Ordering.OrderItem"); }},
            {"create with a store", [] { return CreateAndRelease("CurrentOrder"); }, lvStride},
            {"describe",
             [] {
               const qm_ordering_class* pClass = nullptr;
               return qm_ordering_describe("OrderItem", &pClass);
             },
             lvStride},
            {"put", [&] { return qm_ordering_put(m_oItem, "Description", &m_oText); }},
            {"get a text", [&] { return CallAndClear(m_oItem, "Description"); }},
            {"get an object", [&] { return CallAndClear(m_oOrder, "OrderDetails"); }},
            {"get a record", [&] { return CallAndClear(m_oOrder, "Error"); }},
            {"find", [&] { return CallAndClear(m_oItems, "", &kKey); }},
            {"walk", [&] { return Walk(); }},
            {"document", [&] { return CallAndClear(m_oItem, "GetXML"); }},
            {"load", [&] { return CallAndClear(m_oOrder, "LoadItems", &m_oSort); }, lvStride},
            {"add", [&] { return CallAndClear(m_oOrder, "AddItem", &m_oNumber); }, lvStride},
            {"save", [&] { return CallAndClear(m_oOrder, "SaveSummary"); }, lvStride},
            {"trace", [] { return qm_ordering_set_statement_trace(nullptr, nullptr); }},
            {"path",
             [] {
               qm_ordering_value path{};
               const std::int32_t lNumber = qm_ordering_order_store_path(&path);
               EXPECT_EQ(lNumber == 0, path.kind == QM_ORDERING_TEXT);
               EXPECT_EQ(0, qm_ordering_clear(&path));
               return lNumber;
             }},
            {"check",
             [] {
               qm_ordering_object findings = 0;
               const std::int32_t lNumber = qm_ordering_check_order_store(&findings);
               EXPECT_EQ(lNumber == 0, findings != 0);
               EXPECT_EQ(0, qm_ordering_release(findings));
               return lNumber;
             },
             lvStride}};
  }

  // Fails the step's allocations one after the other. Each failure is the number 7, or the one in the order's
  // record; the step works when it is repeated.
  void FailStep(const Step& step, std::int64_t& lrFailures) const {
    EXPECT_EQ(0, step.Call()) << step.Name;
    for (const Extent extent : {Extent::Once, Extent::FromThenOn}) {
      bool bFailed = true;
      for (std::int64_t lPosition = 1; bFailed && !HasFailure(); lPosition += step.Stride) {
        std::int32_t lNumber = 0;
        {
          const FailingAllocation failing(lPosition, extent);
          lNumber = step.Call();
          bFailed = failing.HasFailed();
        }
        EXPECT_TRUE(lNumber == 0 || lNumber == 7)
            << step.Name << ", allocation " << lPosition << ": " << lNumber;
        if (lNumber == 7) {
          qm_ordering_failure failure{};
          EXPECT_EQ(0, qm_ordering_get_failure(&failure));
          EXPECT_EQ(7, failure.number);
          EXPECT_NE(0u, failure.description.length);
        }
        const std::int32_t lRecord = test::RecordOf(m_oOrder);
        EXPECT_TRUE(lRecord == 0 || (bFailed && (lRecord == 5 || lRecord == 4)))
            << step.Name << ", allocation " << lPosition << ": " << lRecord;
        EXPECT_EQ(0, step.Call()) << step.Name << " after allocation " << lPosition << ": " << FailureText();
        EXPECT_EQ(0, test::RecordOf(m_oOrder)) << step.Name << " after allocation " << lPosition;
        lrFailures += bFailed ? 1 : 0;
      }
    }
  }

  void FailAll(std::int64_t lvStride) {
    std::int64_t lFailures = 0;
    for (const Step& step : Steps(lvStride)) {
      FailStep(step, lFailures);
      ASSERT_FALSE(HasFailure()) << step.Name;
    }
    EXPECT_GT(lFailures, 100);
    std::printf("injected failures: %lld\n", static_cast<long long>(lFailures));
  }

  const qm_ordering_value kKey = TextValue("4qx18");
  CObject m_oOrder;
  CObject m_oItem;
  CObject m_oItems;
  qm_ordering_value m_oText{};
  qm_ordering_value m_oNumber{};
  qm_ordering_value m_oSort{};
};

class CInterfaceMemoryFull : public CInterfaceMemory {};

}  // namespace

TEST_F(CInterfaceMemory, EachCallAnswersSevenOrRecordsItAndWorksTheNextTime) {
  FailAll(61);
}

TEST_F(CInterfaceMemoryFull, EachCallAnswersSevenOrRecordsItAndWorksTheNextTime) {
  FailAll(3);
}

TEST_F(CInterfaceMemory, AReplyThatCannotBeCopiedIsTheCallbacksFailure) {
  std::thread([] {
    const qm_ordering_settings settings = {
        AnswerWithoutMemory, KeepDefault, nullptr, nullptr, nullptr, nullptr};
    ASSERT_EQ(0, qm_ordering_install_settings(&settings, nullptr));
    qm_ordering_object object = 1;
    EXPECT_EQ(7, qm_ordering_create("OrderItem", &object));
    EXPECT_EQ(0u, object);
  }).join();
}

TEST_F(CInterfaceMemory, SettingsThatCannotBeInstalledStayTheHosts) {
  int lDisposed = 0;
  std::thread([&] {
    const qm_ordering_settings settings = {KeepDefault, nullptr,
                                           nullptr,     nullptr,
                                           nullptr,     [](void* payload) { ++*static_cast<int*>(payload); }};
    for (std::int64_t lPosition = 1;; ++lPosition) {
      std::int32_t lNumber = 0;
      {
        const FailingAllocation failing(lPosition, Extent::FromThenOn);
        lNumber = qm_ordering_install_settings(&settings, &lDisposed);
      }
      EXPECT_EQ(0, lDisposed);
      if (lNumber == 0) {
        EXPECT_GT(lPosition, 1);
        break;
      }
      ASSERT_EQ(7, lNumber);
    }
  }).join();
  EXPECT_EQ(1, lDisposed);
}
