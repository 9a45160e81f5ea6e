#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/processes/EngineChanges.h"
#include "tests/processes/SharedStore.h"
#include "tests/processes/Sleep.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/Pipe.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::CreateOrderStore;
using test::Texts;

// Processes that are killed while they make a store.
class KilledCreation : public testing::Test {
 protected:
  void KillMany(int lvKills) {
    std::mt19937 random(test::Seed());
    const long lUsual = UsualMicroseconds();
    for (int lRound = 0; lRound < lvKills && !HasFailure(); ++lRound) {
      SCOPED_TRACE("seed " + std::to_string(test::Seed()) + ", round " + std::to_string(lRound));
      const auto lDelay = static_cast<long>(random()) % (lUsual + lUsual / 4);
      Create([] {},
             [&](test::ChildProcess& process) {
               test::Sleep(lDelay);
               return process.Kill();
             });
    }
    Print();
  }

  // Each process dies in a later change that the engine makes of a file, until one gets through.
  void KillInEveryChange(int lvStep) {
    std::mt19937 random(test::Seed());
    std::string zOutcome;
    for (int lNth = 1; zOutcome != "made" && !HasFailure(); lNth += lvStep) {
      SCOPED_TRACE("change " + std::to_string(lNth));
      const auto lPlace = static_cast<double>(random() % 3) / 2;
      zOutcome = Create([&] { test::DieInChange(lNth, lPlace); },
                        [](test::ChildProcess& process) { return process.Outcome(); });
    }
    Print();
  }

  int Kills = 0;
  int Whole = 0;
  int Leftovers = 0;

 private:
  static long UsualMicroseconds() {
    const test::TempFolder folder;
    const auto begin = std::chrono::steady_clock::now();
    CreateOrderStore(folder.Path());
    return static_cast<long>(
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin)
            .count());
  }

  // Lets a process make a store; await ends it and answers its outcome, which this answers too.
  std::string Create(const std::function<void()>& prepare,
                     const std::function<std::string(test::ChildProcess&)>& await) {
    const test::TempFolder folder;
    test::Pipe reports;
    test::ChildProcess process([&] {
      reports.KeepWriting();
      prepare();
      reports.Write("b");
      CreateOrderStore(folder.Path());
      return std::string("made");
    });
    reports.KeepReading();
    reports.Read();
    const std::string zOutcome = await(process);
    if (zOutcome == test::ChildProcess::kKilled) {
      ++Kills;
    } else {
      EXPECT_EQ("made", zOutcome);
    }
    Examine(folder, zOutcome == "made");
    return zOutcome;
  }

  // The store is there and whole or not there at all, and what else the process left goes with the next
  // creation.
  void Examine(const test::TempFolder& folder, bool bvMade) {
    const bool bThere = std::filesystem::exists(folder.File("Orders.mdb"));
    Leftovers += test::NamesIn(folder.Path()).size() > (bThere ? 1 : 0);
    const qm_ordering::Failure refused = test::FailureOf([&] { CreateOrderStore(folder.Path()); });
    if (bThere) {
      ++Whole;
      EXPECT_EQ(qm_ordering::failure::kFileAccess, refused.Number()) << refused.Description();
    } else {
      EXPECT_FALSE(bvMade);
      EXPECT_EQ(0, refused.Number()) << refused.Description();
    }
    {
      const test::SettingsScope settings;
      settings->User["OrderingDatabasePath"] = folder.Path();
      EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
      test::SharedStore::Rest();
    }
    EXPECT_EQ(Texts{"Orders.mdb"}, test::NamesIn(folder.Path()));
  }

  void Print() const {
    std::printf("seed: %u\nkills: %d\nstores that were there, and whole: %d\nkills that left files: %d\n",
                test::Seed(), Kills, Whole, Leftovers);
  }
};

using KilledCreationFull = KilledCreation;

}  // namespace

TEST_F(KilledCreation, LeavesAWholeStoreOrNoneAndNothingForGood) {
  KillMany(5);
}

TEST_F(KilledCreation, InAnyChangeOfAFileLeavesNoStoreAndNothingForGood) {
  KillInEveryChange(9);
  EXPECT_LT(0, Kills);
  EXPECT_LT(0, Leftovers);
}

TEST_F(KilledCreationFull, LeavesAWholeStoreOrNoneAndNothingForGood) {
  KillMany(200);
  EXPECT_LT(0, Kills);
  EXPECT_LT(0, Leftovers);
}

TEST_F(KilledCreationFull, InAnyChangeOfAFileLeavesNoStoreAndNothingForGood) {
  KillInEveryChange(1);
  EXPECT_LT(0, Kills);
  EXPECT_LT(0, Leftovers);
}
