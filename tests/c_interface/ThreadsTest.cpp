#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/c_interface/CHost.h"
#include "tests/support/HostProgram.h"
#include "tests/support/StoreFixture.h"

namespace {

using namespace test;

constexpr std::int32_t kWrongThread = -2147417842;

class CInterfaceThreads : public StoreFixture {};

void OnAnotherThread(const std::function<void()>& work) {
  std::thread(work).join();
}

}  // namespace

TEST_F(CInterfaceThreads, AnObjectOfAnotherThreadIsRefusedByEveryFunction) {
  const CObject items("OrderItems");
  const CObject importer("OrderHistoryImporter");
  const qm_ordering_object other = items;
  const qm_ordering_object otherImporter = importer;
  OnAnotherThread([=] {
    CValue value;
    qm_ordering_object object = 1;
    const char* zName = "";
    EXPECT_EQ(kWrongThread, qm_ordering_get(other, "Count", nullptr, 0, &value));
    EXPECT_EQ("The object belongs to another thread. Use it on the thread that made it, or make one here.",
              FailureText());
    EXPECT_EQ(kWrongThread, qm_ordering_call(other, "Count", nullptr, 0, &value));
    EXPECT_EQ(kWrongThread, NumberOfPut(other, "Count", IntegerValue(1)));
    EXPECT_EQ(kWrongThread, qm_ordering_enumerate(other, &object));
    EXPECT_EQ(0u, object);
    EXPECT_EQ(kWrongThread, qm_ordering_next(other, &value));
    EXPECT_EQ(kWrongThread, qm_ordering_retain(other));
    EXPECT_EQ(kWrongThread, qm_ordering_class_name(other, &zName));
    EXPECT_EQ(kWrongThread, qm_ordering_on_import_progress(otherImporter, nullptr, nullptr));
    // As an argument, too.
    const CObject previous("PreviousOrder");
    EXPECT_EQ(kWrongThread, NumberOfPut(previous, "OrderDetails", ObjectValue(other)));
  });
  EXPECT_EQ(0, Get(items, "Count")->as.integer);
}

TEST_F(CInterfaceThreads, AReferenceReleasedByAnotherThreadGoesAtTheOwnersNextCall) {
  qm_ordering_object once = CObject("OrderItem").Give();
  qm_ordering_object twice = CObject("OrderItem").Give();
  ASSERT_EQ(0, qm_ordering_retain(twice));
  OnAnotherThread([=] {
    EXPECT_EQ(0, qm_ordering_release(once));
    qm_ordering_value value = ObjectValue(twice);
    EXPECT_EQ(0, qm_ordering_clear(&value));
    // It is this thread's no more than before.
    EXPECT_EQ(kWrongThread, qm_ordering_retain(twice));
  });
  EXPECT_EQ(91, qm_ordering_retain(once));
  EXPECT_EQ(0, Get(twice, "Quantity")->as.integer);
  EXPECT_EQ(0, qm_ordering_release(twice));
  EXPECT_EQ(91, qm_ordering_release(twice));
}

TEST_F(CInterfaceThreads, AReleaseTooManyByAnotherThreadIsLost) {
  CObject item("OrderItem");
  const qm_ordering_object number = item;
  OnAnotherThread([=] {
    EXPECT_EQ(0, qm_ordering_release(number));
    EXPECT_EQ(0, qm_ordering_release(number));
  });
  EXPECT_EQ(91, qm_ordering_release(item.Give()));
  EXPECT_EQ(0, NumberOfCall(CObject("OrderItem"), "GetXML"));
}

TEST_F(CInterfaceThreads, WhatAThreadHoldsEndsWithIt) {
  qm_ordering_object left = 0;
  OnAnotherThread([&] {
    left = CObject("OrderItems").Give();
    const CObject item("OrderItem");
    Call(left, "Add", {ObjectValue(item), TextValue("4QX17")});
    qm_ordering_object walk = 0;
    ASSERT_EQ(0, qm_ordering_enumerate(left, &walk));
    ASSERT_EQ(0, qm_ordering_retain(left));
  });
  // Nobody's any more; the leak checker looks whether it is.
  EXPECT_EQ(kWrongThread, qm_ordering_retain(left));
  EXPECT_EQ(0, qm_ordering_release(left));
}

TEST_F(CInterfaceThreads, EachHasItsOwnObjectsAtTheSameTime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  std::atomic<qm_ordering_object> shared[kThreads] = {};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      for (int j = 0; j < kRounds; ++j) {
        const CObject item("OrderItem");
        Put(item, "Quantity", IntegerValue(i * kRounds + j));
        EXPECT_EQ(0, qm_ordering_retain(item));
        // One reference is for the next thread to release, whether this one has ended by then or not.
        const qm_ordering_object other = shared[(i + 1) % kThreads].exchange(0);
        if (const qm_ordering_object mine = shared[i].exchange(item); mine != 0) {
          EXPECT_EQ(0, qm_ordering_release(mine));
        }
        EXPECT_EQ(0, qm_ordering_release(other));
        EXPECT_EQ(i * kRounds + j, Get(item, "Quantity")->as.integer);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  for (const auto& object : shared) {
    EXPECT_EQ(0, qm_ordering_release(object));
  }
}

// The program does it in processes of its own: what they leave is theirs.
TEST(CInterfaceFork, AChildIsRefusedWithAClearFailureAndEndsCleanly) {
  const TempFolder folder;
  const HostRun run = RunHost({folder.File("store")}, {.Program = QM_ORDERING_C_FORK});
  EXPECT_EQ("", run.Err);
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("child\nparent\n", run.Out);
}
