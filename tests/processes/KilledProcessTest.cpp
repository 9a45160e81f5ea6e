#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "qm_ordering/store/OrderStore.h"
#include "tests/processes/EngineChanges.h"
#include "tests/processes/SharedStore.h"
#include "tests/processes/Sleep.h"
#include "tests/processes/StoreModel.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/HostProgram.h"
#include "tests/support/Pipe.h"

namespace {

using qm_ordering::CurrentOrder;
using test::Call;
using test::CallSequence;
using test::SharedStore;
using test::StoreModel;
using test::Texts;

constexpr char kBegins = 'b';
constexpr char kDone = 'd';
constexpr int kRoundsPerStore = 20;
constexpr const char* kMemoryFolder = "/dev/shm";

// What is beside the store when the process is dead.
struct Log {
  explicit Log(const std::string& zvPath) {
    std::ifstream file(zvPath, std::ios::binary);
    unsigned char header[16] = {};
    if (file.read(reinterpret_cast<char*>(header), sizeof header)) {
      Size = std::filesystem::file_size(zvPath);
      // The engine counts here how often it began the log anew after a checkpoint.
      Restarted = (header[12] | header[13] | header[14] | header[15]) != 0;
    }
  }

  std::uintmax_t Size = 0;
  bool Restarted = false;
};

struct Counts {
  int Kills = 0;
  int InACall = 0;
  int HalfWay = 0;
  int Logs = 0;
  int LogsOfAMebibyte = 0;
  int LogsAfterACheckpoint = 0;
  int ChecksByTheHost = 0;
  int Calls = 0;
  int InAnExport = 0;
  int Temporaries = 0;

  void Print(unsigned lvSeed) const {
    std::printf(
        "seed: %u\nkills: %d\nkills in a call: %d\nkills that left a half-way state: %d\nkills that left a "
        "log: %d\n  of a mebibyte: %d\n  begun anew after a checkpoint: %d\nacknowledged calls: %d\nchecks "
        "by the host program: %d\nkills in an export of the lists: %d\nkills that left its temporary file: "
        "%d\n",
        lvSeed, Kills, InACall, HalfWay, Logs, LogsOfAMebibyte, LogsAfterACheckpoint, Calls, ChecksByTheHost,
        InAnExport, Temporaries);
  }
};

// Processes that are killed while they work on a store, beside a model of what the store must hold.
class KilledProcess : public testing::Test {
 protected:
  // Lets a process make the calls until it is dead, and looks at what it left. Before the calls it runs
  // prepare; the parent waits in await, then kills it.
  void KillOne(const CallSequence& calls, const std::function<void()>& prepare,
               const std::function<void(const test::Pipe&)>& await) {
    SharedStore::Rest();
    test::Pipe reports;
    test::ChildProcess process([&] {
      reports.KeepWriting();
      prepare();
      return Work(calls, reports);
    });
    reports.KeepReading();
    m_lBegun = 0;
    m_lDone = 0;
    await(reports);
    EXPECT_EQ(test::ChildProcess::kKilled, process.Kill());
    while (Hear(reports)) {
    }
    ++Count.Kills;
    Count.Calls += m_lDone;
    Examine(calls);
  }

  // Takes in one report of the process; false when it is dead.
  bool Hear(const test::Pipe& reports) {
    const std::optional<char> cReport = reports.Read();
    m_lBegun += cReport == kBegins;
    m_lDone += cReport == kDone;
    return cReport.has_value();
  }

  void WaitForCalls(const test::Pipe& reports, int lvCalls) {
    while (m_lDone < lvCalls && Hear(reports)) {
    }
  }

  // On the disk, or in a folder of the machine's memory, where nothing waits for a disk and far more calls
  // are made in the same time.
  void BeginStore(bool bvInMemory) {
    Shared.reset();
    const bool bThere = std::filesystem::is_directory(kMemoryFolder);
    const char* zUsual = std::getenv("TMPDIR");
    const test::EnvironmentScope folder("TMPDIR", bvInMemory && bThere ? kMemoryFolder : zUsual);
    Shared = std::make_unique<SharedStore>();
    m_oModel = StoreModel();
  }

  // As many processes, each killed at a moment that chance picks.
  void KillMany(int lvKills) {
    const unsigned lSeed = test::Seed();
    std::mt19937 random(lSeed);
    for (int lRound = 0; lRound < lvKills && !HasFailure(); ++lRound) {
      SCOPED_TRACE("seed " + std::to_string(lSeed) + ", round " + std::to_string(lRound));
      if (lRound % kRoundsPerStore == 0) {
        BeginStore(lRound / kRoundsPerStore % 5 != 0);
      }
      const bool bLong = lRound % 5 == 4;
      const auto lCalls = static_cast<int>(random() % (bLong ? 60 : 20));
      const auto lDelay = static_cast<long>(random() % (lRound % 2 == 0 ? 4000 : 40000));
      CheckByHost = lRound % 50 == 13;
      KillOne(
          CallSequence(static_cast<unsigned>(random()), bLong), [] {},
          [&](const test::Pipe& reports) {
            // By the time alone, so that the opening of the store is met too, or by the work done.
            if (lRound % 2 == 0) {
              WaitForCalls(reports, lCalls);
            }
            test::Sleep(lDelay);
          });
    }
    Count.Print(lSeed);
  }

  // Lets a process after the other make the same call on the same lines and die in the first, second, third
  // ... change that the engine makes of a file, until one gets through. Answers how many died.
  int KillInEveryChange(Call::Kind kind, unsigned lvSeed) {
    const int lBefore = Count.Kills;
    for (int lNth = 1; !HasFailure(); ++lNth) {
      SCOPED_TRACE("seed " + std::to_string(lvSeed) + ", change " + std::to_string(lNth));
      CallSequence values(lvSeed, false);
      Change(values.Make(Call::Kind::Load));
      Change(values.Make(Call::Kind::Clear));
      // Five lines; a call on stored lines is on these, and an update removes one and changes the others.
      Call call = values.Make(kind);
      // The list of the call has the lines, too; the list that it may be renamed to is not there.
      const bool bOnList = kind >= Call::Kind::CreateList;
      if (bOnList) {
        call.NewName = call.NewName.empty() ? "" : "New";
        Change({.What = Call::Kind::RemoveListByName, .Text = "New"});
        Change({.What = Call::Kind::CreateList, .Text = call.Text});
      }
      Call lines;
      for (int i = 0; i < 5; ++i) {
        Call add = values.Make(Call::Kind::Add);
        add.Items.front().Number = "A" + std::to_string(2 * i);
        Change(add);
        if (bOnList) {
          Change({.What = Call::Kind::AddToList, .Items = add.Items, .Text = call.Text});
        }
        lines.Items.push_back(add.Items.front());
        lines.Items.back().Quantity = i;
      }
      if (kind == Call::Kind::Update) {
        call.Items = lines.Items;
      } else if (kind == Call::Kind::Remove) {
        call.Items.front().Number = lines.Items.front().Number;
      } else if (kind == Call::Kind::DeleteOrder) {
        Change(values.Make(Call::Kind::Submit));
        call.OrderID = m_oModel.LastSubmitted();
      }
      if (DiesInChange(call, lNth)) {
        ++Count.Kills;
        ++Count.InACall;
      } else {
        break;
      }
    }
    return Count.Kills - lBefore;
  }

  std::unique_ptr<SharedStore> Shared;
  Counts Count;
  bool CheckByHost = false;

 private:
  // Lets a process make the call and die in that change; false when it gets through.
  bool DiesInChange(const Call& call, int lvNth) {
    SharedStore::Rest();
    test::Pipe reports;
    test::ChildProcess process([&] {
      reports.KeepWriting();
      CurrentOrder order;
      test::DieInChange(lvNth, static_cast<double>(lvNth % 3) / 2);
      reports.Write({&kBegins, 1});
      Make(order, call);
      reports.Write({&kDone, 1});
      return std::string("done");
    });
    reports.KeepReading();
    m_lBegun = 0;
    m_lDone = 0;
    while (Hear(reports)) {
    }
    const std::string zOutcome = process.Outcome();
    EXPECT_EQ(m_lDone == 1 ? "done" : test::ChildProcess::kKilled, zOutcome);
    EXPECT_EQ(1, m_lBegun);
    Compare(m_lDone == 0 ? m_oModel.Passes(call) : std::vector{m_oModel.After(call)}, call.Describe());
    return m_lDone == 0;
  }

  static std::string Work(CallSequence calls, const test::Pipe& reports) {
    std::unique_ptr<CurrentOrder> oOrder;
    while (true) {
      const Call call = calls.Next();
      reports.Write({&kBegins, 1});
      if (oOrder == nullptr) {
        oOrder = std::make_unique<CurrentOrder>();
      }
      Make(*oOrder, call);
      reports.Write({&kDone, 1});
      oOrder->LoadItems(0);
    }
  }

  void Examine(CallSequence calls) {
    for (int i = 0; i < m_lDone; ++i) {
      m_oModel = m_oModel.After(calls.Next());
    }
    const Log log(Shared->LogPath());
    Count.Logs += log.Size > 0;
    Count.LogsOfAMebibyte += log.Size > (1U << 20);
    Count.LogsAfterACheckpoint += log.Restarted;
    if (m_lBegun > m_lDone) {
      ++Count.InACall;
      const Call call = calls.Next();
      Count.InAnExport += call.What == Call::Kind::ExportLists;
      Compare(m_oModel.Passes(call), call.Describe());
    } else {
      Compare({m_oModel}, "no call");
    }
  }

  // The store must be in one of these states, which the model then takes over.
  void Compare(const std::vector<StoreModel>& states, const std::string& zvInFlight) {
    const Texts zFindings = Check();
    const Texts zStored = StoreModel::DescribeStored(*Shared);
    const auto state = std::ranges::find(states, zStored, &StoreModel::Describe);
    if (state == states.end()) {
      ADD_FAILURE() << "after " << m_lDone << " acknowledged calls, in flight: " << zvInFlight
                    << "\nthe store holds\n"
                    << testing::PrintToString(zStored) << "\nwhich is none of";
      for (const StoreModel& expected : states) {
        ADD_FAILURE() << testing::PrintToString(expected.Describe());
      }
      return;
    }
    m_oModel = *state;
    EXPECT_EQ(m_oModel.Findings(), zFindings) << zvInFlight;
    if (const std::string zTemporary = Shared->ListsPath() + ".tmp.";
        !test::PathsBeginningWith(zTemporary).empty()) {
      ++Count.Temporaries;
      Change({.What = Call::Kind::ExportLists});
      EXPECT_EQ(Texts(), test::PathsBeginningWith(zTemporary));
      EXPECT_EQ(m_oModel.Describe(), StoreModel::DescribeStored(*Shared));
    }
    if (m_oModel.Findings().empty()) {
      return;
    }
    // The next change of the order brings its total up to date.
    ++Count.HalfWay;
    CallSequence values(static_cast<unsigned>(Count.Kills), false);
    Change(values.Make(Count.Kills % 2 == 0 ? Call::Kind::Add : Call::Kind::Remove));
    EXPECT_EQ(Texts(), qm_ordering::CheckOrderStore());
    EXPECT_EQ(m_oModel.Describe(), StoreModel::DescribeStored(*Shared));
  }

  // What the first process to open the store after the kill finds.
  Texts Check() {
    if (!CheckByHost) {
      return qm_ordering::CheckOrderStore();
    }
    ++Count.ChecksByTheHost;
    const test::HostRun run =
        test::RunHost({"--settings", Shared->SettingsPath(), "--json", "store", "check"});
    EXPECT_EQ(run.Data()["whole"].get<bool>() ? 0 : 1, run.ExitCode) << run.Err;
    return run.Data()["findings"].get<Texts>();
  }

  // A call by this process.
  void Change(const Call& call) {
    CurrentOrder order;
    Make(order, call);
    m_oModel = m_oModel.After(call);
  }

  StoreModel m_oModel;
  int m_lBegun = 0;
  int m_lDone = 0;
};

using KilledProcessFull = KilledProcess;

}  // namespace

TEST_F(KilledProcess, LosesAndDoublesNothing) {
  KillMany(25);
  EXPECT_EQ(25, Count.Kills);
  EXPECT_EQ(1, Count.ChecksByTheHost);
}

TEST_F(KilledProcessFull, LosesAndDoublesNothing) {
  KillMany(1000);
  EXPECT_EQ(1000, Count.Kills);
  EXPECT_LT(0, Count.InACall);
  EXPECT_LT(0, Count.HalfWay);
  EXPECT_LT(0, Count.LogsOfAMebibyte);
  EXPECT_LT(0, Count.LogsAfterACheckpoint);
  EXPECT_LT(0, Count.InAnExport);
  EXPECT_EQ(20, Count.ChecksByTheHost);
}

TEST_F(KilledProcess, InAnyChangeOfAFileLeavesACallDoneNotOrHalfWay) {
  BeginStore(true);
  for (const auto kind : {Call::Kind::Add, Call::Kind::RemoveList}) {
    const int lKills = KillInEveryChange(kind, test::Seed());
    std::printf("kills: %d\n", lKills);
    EXPECT_LT(2, lKills);
  }
  EXPECT_LT(0, Count.HalfWay);
}

TEST_F(KilledProcessFull, InAnyChangeOfAFileLeavesACallDoneNotOrHalfWay) {
  BeginStore(true);
  for (const auto kind :
       {Call::Kind::Add, Call::Kind::Update, Call::Kind::Remove, Call::Kind::Clear, Call::Kind::SaveSummary,
        Call::Kind::SavePONumber, Call::Kind::Submit, Call::Kind::DeleteOrder, Call::Kind::CreateList,
        Call::Kind::RenameList, Call::Kind::RemoveList, Call::Kind::AddToList}) {
    Call named;
    named.What = kind;
    SCOPED_TRACE(named.Describe());
    for (unsigned lSeed = test::Seed(); lSeed < test::Seed() + 2; ++lSeed) {
      const int lKills = KillInEveryChange(kind, lSeed);
      std::printf("%s, seed %u: kills in %d changes of a file\n", named.Describe().c_str(), lSeed, lKills);
      EXPECT_LT(2, lKills);
    }
  }
  EXPECT_LT(0, Count.HalfWay);
  std::printf("kills: %d\nkills that left a half-way state: %d\n", Count.Kills, Count.HalfWay);
}
