#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/processes/EngineChanges.h"
#include "tests/processes/EngineSleep.h"
#include "tests/processes/SharedStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/Pipe.h"

namespace {

using qm_ordering::ImportProgress;
using qm_ordering::LastFailure;
using qm_ordering::OrderHistoryImporter;
using test::Rows;
using test::SharedStore;
using test::Texts;

constexpr const char* kSuccess = "Success:\t3 purchase orders imported.";

// Imports in one process while it dies, while the disk is full, or while another one waits for the store.
class ImportingProcess : public testing::Test {
 protected:
  // A store with a line in the current order, and what it holds before and after an import.
  void BeginStore() {
    Shared.reset();
    Shared = std::make_unique<SharedStore>();
    qm_ordering::CurrentOrder().AddItem(test::NewItem("OLD-1", 1, 10000));
    SharedStore::Rest();
    Before = Shared->Store().Everything();
  }

  void LearnWhatIsRight() {
    BeginStore();
    Import();
    After = Shared->Store().Everything();
    EXPECT_NE(Before, After);
  }

  // An import by this process.
  void Import() {
    OrderHistoryImporter importer;
    EXPECT_EQ(test::kSmallOrders, importer.ApplyImports(m_zTables)) << LastFailure().Description;
    EXPECT_TRUE(importer.LogHeader().ends_with(kSuccess)) << importer.LogHeader();
    SharedStore::Rest();
  }

  // After the death of an importing process the orders are there whole or not at all; answers which. The next
  // import works.
  bool IsThere() {
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    const Rows rows = Shared->Store().Everything();
    EXPECT_TRUE(rows == Before || rows == After) << testing::PrintToString(rows);
    const std::string zBefore = Shared->Store().Value("select count(*) from tblOrder");
    Import();
    EXPECT_EQ(std::to_string(std::stoi(zBefore) + test::kSmallOrders),
              Shared->Store().Value("select count(*) from tblOrder"));
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    if (rows == Before) {
      EXPECT_EQ(After, Shared->Store().Everything());
    }
    return rows == After;
  }

  // Lets processes import, each on a store of its own, of which the first dies in the first change that the
  // engine makes of a file, the second in the second, until one gets through. Answers how many died.
  int KillInEveryChange(int lvStride) {
    LearnWhatIsRight();
    int lKills = 0;
    int lThere = 0;
    for (int lNth = 1; !HasFailure(); lNth += lvStride) {
      SCOPED_TRACE("change " + std::to_string(lNth));
      BeginStore();
      test::ChildProcess process([&] {
        test::DieInChange(lNth, static_cast<double>(lNth % 3) / 2);
        const std::int32_t lOrders = OrderHistoryImporter().ApplyImports(m_zTables);
        // Brings the log into the store.
        SharedStore::Rest();
        return std::to_string(lOrders);
      });
      const std::string zOutcome = process.Outcome();
      if (zOutcome != test::ChildProcess::kKilled) {
        EXPECT_EQ(std::to_string(test::kSmallOrders), zOutcome);
        break;
      }
      ++lKills;
      lThere += IsThere() ? 1 : 0;
    }
    std::printf("kills: %d\nkills that left the import whole: %d\n", lKills, lThere);
    EXPECT_LT(0, lThere);
    EXPECT_GT(lKills, lThere);
    return lKills;
  }

  const std::string& Tables() const { return m_zTables; }

  std::unique_ptr<SharedStore> Shared;
  Rows Before;
  Rows After;

 private:
  const std::string& m_zTables = test::SmallLegacyTables();
};

using ImportingProcessFull = ImportingProcess;

}  // namespace

TEST_F(ImportingProcess, KilledInAChangeOfAFileLeavesAllOrdersOrNone) {
  EXPECT_LT(2, KillInEveryChange(5));
}

TEST_F(ImportingProcessFull, KilledInAChangeOfAFileLeavesAllOrdersOrNone) {
  EXPECT_LT(2, KillInEveryChange(1));
}

TEST_F(ImportingProcess, KilledAtAnyLineLeavesNone) {
  LearnWhatIsRight();
  for (int lLine = 0; lLine <= test::kSmallLines; ++lLine) {
    SCOPED_TRACE(lLine);
    BeginStore();
    test::ChildProcess process([&] {
      OrderHistoryImporter importer;
      importer.OnProgress([&](const ImportProgress& progress) {
        return progress.Lines < lLine || kill(getpid(), SIGKILL) == 0;
      });
      return std::to_string(importer.ApplyImports(Tables()));
    });
    EXPECT_EQ(test::ChildProcess::kKilled, process.Outcome());
    EXPECT_FALSE(IsThere());
  }
}

TEST_F(ImportingProcess, ChangesNothingOnAFullDiskAndSaysSo) {
  test::LegacyTables tables;
  tables.AddOrder("1");
  for (int lLine = 0; lLine < 400; ++lLine) {
    tables.AddLine("1", "A-" + std::to_string(lLine), {{"DESC", std::string(60, 'd')}});
  }
  const std::string zTables = tables.Make();
  // Without room for the engine's shared memory, and with room for that and a part of the log.
  for (const rlim_t lBytes : {rlim_t{0}, rlim_t{33'000}, rlim_t{60'000}}) {
    SCOPED_TRACE(lBytes);
    BeginStore();
    test::ChildProcess process([&] {
      signal(SIGXFSZ, SIG_IGN);
      const rlimit limit{lBytes, lBytes};
      setrlimit(RLIMIT_FSIZE, &limit);
      OrderHistoryImporter importer;
      const std::int32_t lOrders = importer.ApplyImports(zTables);
      return std::to_string(lOrders) + " " + importer.LogHeader() + "; " + LastFailure().Description;
    });
    const std::string zOutcome = process.Outcome();
    EXPECT_TRUE(zOutcome.starts_with("0 Failed: Could not find Order History database; ")) << zOutcome;
    EXPECT_NE(std::string::npos, zOutcome.find(Shared->Store().Path())) << zOutcome;
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    EXPECT_EQ(Before, Shared->Store().Everything());
    EXPECT_EQ(1, OrderHistoryImporter().ApplyImports(zTables));
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
  }
}

TEST_F(ImportingProcess, ThatCancelsLetsAProgramGoOnThatWaitsForTheStore) {
  BeginStore();
  test::Pipe toOther;
  test::Pipe fromOther;
  test::ChildProcess other([&] {
    toOther.KeepReading();
    fromOther.KeepWriting();
    toOther.Read();
    bool bTold = false;
    test::EngineSleep::Instead = [&](std::int64_t) {
      // It waits, and the store is free when the other process says so.
      if (!bTold) {
        bTold = true;
        fromOther.Write("w");
        toOther.Read();
      }
    };
    qm_ordering::CurrentOrder order;
    order.AddItem(test::NewItem("OLD-1", 2, 10000));
    return std::to_string(order.Error().Number) + order.Error().Description;
  });
  toOther.KeepWriting();
  fromOther.KeepReading();
  OrderHistoryImporter importer;
  importer.OnProgress([&](const ImportProgress& progress) {
    if (progress.Lines < 4) {
      return true;
    }
    toOther.Write("b");
    EXPECT_EQ('w', fromOther.Read());
    return false;
  });
  EXPECT_EQ(0, importer.ApplyImports(Tables()));
  EXPECT_EQ(qm_ordering::failure::kInvalidCall, LastFailure().Number) << LastFailure().Description;
  EXPECT_EQ(Before, Shared->Store().Everything());
  toOther.Write("e");
  EXPECT_EQ("0", other.Outcome());
  EXPECT_EQ("30000", Shared->Store().Value("select cTotalPrice from tblOrder"));
  Import();
  EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
}
