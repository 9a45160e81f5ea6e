#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/lists/PersonalLists.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/processes/SharedStore.h"
#include "tests/processes/WorkingProgram.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Pipe.h"
#include "tests/support/StrictXml.h"
#include "tests/support/TempFolder.h"

namespace {

namespace keys = qm_ordering::UserSettingConstants;
using test::Texts;
using test::WorkingProgram;
using test::WorkReport;

constexpr std::int64_t kBusyTimeout = 5'000'000;

// Runs the work in so many processes, which begin when all are there. Answers their outcomes.
Texts RunTogether(int lvProcesses, const std::function<std::string(int)>& work) {
  test::SharedStore::Rest();
  test::Pipe begin;
  std::vector<std::unique_ptr<test::ChildProcess>> processes;
  for (int i = 0; i < lvProcesses; ++i) {
    processes.push_back(std::make_unique<test::ChildProcess>([&, i] {
      begin.KeepReading();
      begin.Read();
      return work(i);
    }));
  }
  begin.Write(std::string(static_cast<std::size_t>(lvProcesses), 'b'));
  Texts zOutcomes;
  for (const auto& process : processes) {
    zOutcomes.push_back(process->Outcome());
  }
  return zOutcomes;
}

// Processes that work on one store at once.
class SeveralProcesses : public testing::Test {
 protected:
  void Work(int lvProcesses, int lvRounds, int lvCalls) {
    for (int lRound = 0; lRound < lvRounds && !HasFailure(); ++lRound) {
      m_lSeed = test::Seed() + static_cast<unsigned>(lRound) * 100;
      SCOPED_TRACE("seed " + std::to_string(test::Seed()) + ", round " + std::to_string(lRound));
      const test::SharedStore shared;
      AddToLines(shared, lvProcesses, lvCalls);
      SaveSummaries(shared, lvProcesses, lvCalls);
      Submit(shared, lvProcesses, lvCalls);
      KeepLists(shared, lvProcesses, lvCalls);
      DeleteOrders(shared, lvProcesses);
    }
    std::printf(
        "seed: %u\nprocesses: %d\ncalls: %d\ncalls that another program held up for too long: %d\nlines that "
        "another program added first: %d\norders that another program submitted first: %d\nwaits of more "
        "than a second: %d\nlongest wait in milliseconds: %lld\n",
        test::Seed(), lvProcesses, m_oAll.Calls, m_oAll.Held, m_oAll.Refused, m_oAll.NotCurrent,
        m_oAll.LongWaits, static_cast<long long>(m_oAll.LongestWait / 1000));
  }

 private:
  using Job = void (WorkingProgram::*)(int);

  std::vector<WorkReport> Run(const test::SharedStore& shared, int lvProcesses, Job job, int lvCalls) {
    std::vector<WorkReport> reports;
    for (const std::string& zOutcome : RunTogether(lvProcesses, [&](int lvNumber) {
           WorkingProgram program(shared.Store().Path(), lvNumber, m_lSeed + static_cast<unsigned>(lvNumber));
           (program.*job)(lvCalls);
           return program.Report().ToText();
         })) {
      reports.push_back(WorkReport::FromText(zOutcome));
      const WorkReport& report = reports.back();
      EXPECT_GE(kBusyTimeout, report.LongestWait);
      m_oAll.Calls += report.Calls;
      m_oAll.Held += report.Held;
      m_oAll.Refused += report.Refused;
      m_oAll.NotCurrent += report.NotCurrent;
      m_oAll.LongWaits += report.LongWaits;
      m_oAll.LongestWait = std::max(m_oAll.LongestWait, report.LongestWait);
      for (const auto& [zItem, lQuantity] : report.Merged) {
        m_oAll.Merged[zItem] += lQuantity;
      }
      m_oAll.Unsure.insert(report.Unsure.begin(), report.Unsure.end());
    }
    return reports;
  }

  // What the shared lines must hold by now, and what else is said to be in the order, or in the lists.
  void ExpectLines(const test::SharedStore& shared, const std::string& zvTable,
                   const std::map<std::string, std::int64_t>& own) const {
    std::map<std::string, std::int64_t> expected = own;
    expected.insert(m_oAll.Merged.begin(), m_oAll.Merged.end());
    std::map<std::string, std::int64_t> stored;
    for (const test::Row& row : shared.Store().Query("select zItemNumber, lQuantity from " + zvTable)) {
      stored[row[0]] = std::stoll(row[1]);
    }
    for (const std::string& zItem : m_oAll.Unsure) {
      expected.erase(zItem);
      stored.erase(zItem);
    }
    EXPECT_EQ(expected, stored);
  }

  void AddToLines(const test::SharedStore& shared, int lvProcesses, int lvCalls) {
    m_oAll.Merged.clear();
    m_oAll.Unsure.clear();
    m_oOwn.clear();
    for (const WorkReport& report : Run(shared, lvProcesses, &WorkingProgram::WorkOnLines, lvCalls)) {
      m_oOwn.insert(report.Own.begin(), report.Own.end());
    }
    ExpectLines(shared, "tblOrderItem", m_oOwn);
    if (m_oAll.Held == 0) {
      EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    }
  }

  void SaveSummaries(const test::SharedStore& shared, int lvProcesses, int lvCalls) {
    Texts zLast;
    for (const WorkReport& report : Run(shared, lvProcesses, &WorkingProgram::WorkOnHeader, lvCalls)) {
      zLast.push_back(report.LastSummary);
    }
    ExpectLines(shared, "tblOrderItem", m_oOwn);
    // All values of one program, in the store and, perhaps of another, in the defaults.
    const test::Row row =
        shared.Store()
            .Query("select zPurchaseOrderNumber, zOIAttention, zDICity, zDINotes from tblOrder")
            .front();
    EXPECT_EQ(1, std::ranges::count(zLast, row[0])) << row[0];
    EXPECT_EQ(test::Row(4, row[0]), row);
    const std::string zDefault = shared.Default(keys::DEFAULT_OI_PO_NUM);
    EXPECT_EQ(1, std::ranges::count(zLast, zDefault)) << zDefault;
    EXPECT_EQ(zDefault, shared.Default(keys::DEFAULT_DI_CITY));
    EXPECT_EQ(zDefault, shared.Default(keys::DEFAULT_DI_NOTES));
    // A summary is saved with the total that its object held, which may be older than another program's
    // lines; the next change brings it up to date.
    {
      qm_ordering::CurrentOrder order;
      order.RemoveItem("none");
    }
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
  }

  void Submit(const test::SharedStore& shared, int lvProcesses, int lvCalls) {
    {
      qm_ordering::CurrentOrder order;
      order.ClearItems();
    }
    test::Rows lines;
    std::vector<std::string> submitted;
    for (const WorkReport& report : Run(shared, lvProcesses, &WorkingProgram::WorkOnHistory, lvCalls)) {
      for (const auto& [lOrderID, zItem] : report.Lines) {
        lines.push_back({std::to_string(lOrderID), zItem, "1"});
      }
      for (const int lOrderID : report.Submitted) {
        submitted.push_back(std::to_string(lOrderID));
      }
    }
    std::ranges::sort(lines);
    test::Rows stored = shared.Store().Query("select lOrderID, zItemNumber, lQuantity from tblOrderItem");
    std::ranges::sort(stored);
    std::erase_if(stored, [&](const test::Row& row) { return m_oAll.Unsure.contains(row[1]); });
    EXPECT_EQ(lines, stored);
    // Each order was submitted by one program, and there is one current order.
    std::ranges::sort(submitted);
    Texts zHistory;
    for (const test::Row& row : shared.Store().Query(
             "select lOrderID from tblOrder where bIsCurrent = 0 order by cast(lOrderID as text)")) {
      zHistory.push_back(row.front());
    }
    EXPECT_EQ(submitted, zHistory);
    EXPECT_EQ("1", shared.Store().Value("select count(*) from tblOrder where bIsCurrent = -1"));
    if (m_oAll.Held == 0) {
      EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    }
  }

  void KeepLists(const test::SharedStore& shared, int lvProcesses, int lvCalls) {
    ASSERT_EQ(1, qm_ordering::PersonalLists().CreateList("Shared"));
    m_oAll.Merged.clear();
    m_oAll.Unsure.clear();
    m_oOwn.clear();
    for (const WorkReport& report : Run(shared, lvProcesses, &WorkingProgram::WorkOnLists, lvCalls)) {
      m_oOwn.insert(report.Own.begin(), report.Own.end());
    }
    ExpectLines(shared, "tblPersonalListItem", m_oOwn);
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    EXPECT_GE(1,
              std::stoi(shared.Store().Value("select count(*) from tblPersonalList where zName = 'Common'")));
    // The file is one program's, whole, and nothing of another one's is left beside it.
    EXPECT_EQ("personallists", test::ReadStrictly(test::ReadFile(shared.ListsPath())).Name);
    EXPECT_EQ(Texts(), test::PathsBeginningWith(shared.ListsPath() + ".tmp."));
  }

  void DeleteOrders(const test::SharedStore& shared, int lvProcesses) {
    const std::string zCurrent =
        "select count(*) from tblOrderItem where lOrderID = (select lOrderID from tblOrder where bIsCurrent)";
    const std::string zLines = shared.Store().Value(zCurrent);
    Run(shared, lvProcesses, &WorkingProgram::DeleteHistory, 3);
    EXPECT_EQ(zLines, shared.Store().Value(zCurrent));
    if (m_oAll.Held == 0) {
      EXPECT_EQ("1", shared.Store().Value("select count(*) from tblOrder"));
      EXPECT_EQ(zLines, shared.Store().Value("select count(*) from tblOrderItem"));
    }
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
  }

  unsigned m_lSeed = 0;
  WorkReport m_oAll;
  std::map<std::string, std::int64_t> m_oOwn;
};

using SeveralProcessesFull = SeveralProcesses;

// Each process has a key of its own and writes two shared ones with one value.
void SaveSettingsTogether(int lvProcesses, int lvSaves) {
  const test::TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  for (const std::string& zOutcome : RunTogether(lvProcesses, [&](int lvNumber) {
         for (int i = 1; i <= lvSaves; ++i) {
           const auto oSettings = qm_ordering::CreateFileSettings(zFile)->CreateOrderDefaults();
           oSettings->Set("OWN_" + std::to_string(lvNumber), std::to_string(i));
           for (const char* zShared : {"LEFT", "RIGHT"}) {
             oSettings->Set(zShared, std::to_string(lvNumber) + " " + std::to_string(i));
           }
           oSettings->Save();
         }
         return std::string("saved");
       })) {
    EXPECT_EQ("saved", zOutcome);
  }
  const auto oSettings = qm_ordering::CreateFileSettings(zFile)->CreateOrderDefaults();
  for (int i = 0; i < lvProcesses; ++i) {
    EXPECT_EQ(std::to_string(lvSaves), oSettings->Get("OWN_" + std::to_string(i)));
  }
  EXPECT_EQ(oSettings->Get("LEFT"), oSettings->Get("RIGHT"));
  EXPECT_TRUE(oSettings->Get("LEFT").ends_with(" " + std::to_string(lvSaves))) << oSettings->Get("LEFT");
  EXPECT_EQ((Texts{"settings.ini", "settings.ini.lock"}), test::NamesIn(folder.Path()));
}

void CreateTogether(int lvProcesses, int lvRounds) {
  for (int lRound = 0; lRound < lvRounds; ++lRound) {
    const test::TempFolder folder;
    Texts zOutcomes = RunTogether(lvProcesses, [&](int) {
      try {
        qm_ordering::CreateOrderStore(folder.Path());
        return std::string("made");
      } catch (const qm_ordering::Failure& failure) {
        const bool bExists = failure.Number() == qm_ordering::failure::kFileAccess &&
                             failure.Description().find("a file of that name exists") != std::string::npos;
        return bExists ? std::string("exists") : failure.Description();
      }
    });
    std::ranges::sort(zOutcomes);
    Texts zExpected(static_cast<std::size_t>(lvProcesses), "exists");
    zExpected.back() = "made";
    EXPECT_EQ(zExpected, zOutcomes);
    EXPECT_EQ(Texts{"Orders.mdb"}, test::NamesIn(folder.Path()));
  }
}

}  // namespace

TEST_F(SeveralProcesses, WorkOnOneStoreAndLoseNothing) {
  Work(2, 1, 25);
}

TEST_F(SeveralProcessesFull, TwoWorkOnOneStoreAndLoseNothing) {
  Work(2, 8, 40);
}

TEST_F(SeveralProcessesFull, FiveWorkOnOneStoreAndLoseNothing) {
  Work(5, 8, 40);
}

TEST_F(SeveralProcesses, SaveSettingsOfTheirOwnAndLoseNone) {
  SaveSettingsTogether(2, 10);
}

TEST_F(SeveralProcessesFull, SaveSettingsOfTheirOwnAndLoseNone) {
  SaveSettingsTogether(5, 100);
}

TEST_F(SeveralProcesses, MakeOneStoreBetweenThem) {
  CreateTogether(3, 2);
}

TEST_F(SeveralProcessesFull, MakeOneStoreBetweenThem) {
  CreateTogether(5, 50);
}
