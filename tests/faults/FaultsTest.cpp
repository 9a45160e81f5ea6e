#include <gtest/gtest.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/ado/StatementTrace.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/faults/SystemCalls.h"
#include "tests/faults/WorkingStore.h"
#include "tests/support/StoreFixture.h"

namespace {

using qm_ordering::ado::embedded::CloseIdleSessions;
using test::Outcome;
using test::StoreCall;
using test::SystemCall;
using test::SystemRequest;

// How a fault shows.
struct Fault {
  const char* Name;
  int Error;
  bool ForGood;    // every later request of those kinds fails, too
  bool SpaceOnly;  // only the requests that need room on the disk
};

constexpr Fault kFaults[] = {
    {"an I/O error", EIO, false, false},  {"I/O errors from then on", EIO, true, false},
    {"a full disk", ENOSPC, true, true},  {"no permission", EACCES, false, false},
    {"interrupted", EINTR, false, false},
};

bool NeedsSpace(const SystemRequest& request) {
  switch (request.Kind) {
    case SystemCall::Open:
      return request.Creates && !request.WasThere;
    case SystemCall::Write:
    case SystemCall::Rename:
    case SystemCall::MakeFolder:
    case SystemCall::Truncate:
      return true;
    default:
      return false;
  }
}

// Fails the request of that number, counted from 0, and counts them all.
class Injector : public test::SystemObserver {
 public:
  Injector(const Fault& fault, std::size_t lvAt) : m_oFault(fault), m_lAt(lvAt) {}

  int Before(const SystemRequest& request) override {
    if ((m_oFault.SpaceOnly && !NeedsSpace(request)) || IsNeverDenied(request)) {
      return 0;
    }
    const std::size_t lNumber = Count++;
    if (lNumber < m_lAt || (lNumber > m_lAt && !m_oFault.ForGood)) {
      return 0;
    }
    Failed.push_back(request.Kind);
    if (What.empty()) {
      What = std::string(test::NameOf(request.Kind)) + " of " + request.Path;
    }
    return m_oFault.Error;
  }
  // What no system fails: a lock that is given back. And a log that may not be written for want of permission
  // makes a session of the engine that reads, and says so at its first write: it is that call which fails,
  // and the next one works.
  bool IsNeverDenied(const SystemRequest& request) const {
    return request.Unlocks || (m_oFault.Error == EACCES && request.Kind == SystemCall::Open &&
                               request.WasThere && request.Path.ends_with("-wal"));
  }
  // A lock that is refused would be asked for again for seconds.
  bool Sleeps() override { return false; }

  std::size_t Count = 0;
  std::vector<SystemCall> Failed;
  std::string What;

 private:
  const Fault& m_oFault;
  std::size_t m_lAt;
};

// Fails the first opening of a log.
class OneLogRefused : public test::SystemObserver {
 public:
  int Before(const SystemRequest& request) override {
    if (Done || request.Kind != SystemCall::Open || !request.Path.ends_with("-wal")) {
      return 0;
    }
    Done = true;
    return EIO;
  }

  bool Done = false;
};

// Fails every request for the status of what is under the store's name.
class NoStatus : public test::SystemObserver {
 public:
  int Before(const SystemRequest& request) override {
    return request.Kind == SystemCall::Status && request.Descriptor < 0 &&
                   request.Path.ends_with("/Orders.mdb")
               ? EIO
               : 0;
  }
};

// Does every read and write by halves.
class Halving : public test::SystemObserver {
 public:
  int Before(const SystemRequest&) override { return 0; }
  std::size_t Shortened(const SystemRequest& request) override { return (request.Size + 1) / 2; }
};

std::size_t OpenFiles() {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

class Faults : public testing::Test {
 protected:
  // What the call comes to without a fault, and the states that it passes through.
  struct Course {
    std::string Before;
    std::string After;
    std::set<std::string> Between;
    std::string Values;
    // Of the store check.
    std::vector<std::string> FindingsBefore;
    std::vector<std::string> FindingsAfter;
  };

  std::function<Outcome()> Prepare(const StoreCall& call, bool bvWarm) const {
    m_oStore.SetBack();
    auto run = call.Prepare();
    if (!bvWarm) {
      CloseIdleSessions();
    }
    return run;
  }

  Course CourseOf(const StoreCall& call) const {
    Course course;
    Prepare(call, true);
    course.FindingsBefore = qm_ordering::CheckOrderStore();
    const auto run = Prepare(call, true);
    course.Before = m_oStore.State();
    std::vector<std::string> states;
    qm_ordering::SetStatementTrace([&](const std::string&) { states.push_back(m_oStore.State()); });
    const Outcome outcome = test::OutcomeOf(run);
    qm_ordering::SetStatementTrace(nullptr);
    EXPECT_EQ("", outcome.Failure) << call.Name;
    course.After = m_oStore.State();
    course.Values = outcome.Values;
    course.FindingsAfter = qm_ordering::CheckOrderStore();
    course.Between.insert(states.begin(), states.end());
    if (call.Name == std::string("SaveSummary")) {
      // The defaults are kept after the last statement.
      course.Between.insert(StoredWithoutDefaults(course));
    }
    course.Between.erase(course.Before);
    course.Between.erase(course.After);
    EXPECT_EQ(call.HalfWay.size(), course.Between.size()) << call.Name;
    return course;
  }

  // The store of the state after, the settings of the one before.
  static std::string StoredWithoutDefaults(const Course& course) {
    const auto lSplit = [](const std::string& zvState) { return zvState.find("OrderingDatabasePath"); };
    return course.After.substr(0, lSplit(course.After)) + course.Before.substr(lSplit(course.Before));
  }

  std::size_t CountOf(const StoreCall& call, bool bvWarm, const Fault& fault) const {
    const auto run = Prepare(call, bvWarm);
    Injector counter(fault, SIZE_MAX);
    {
      const test::SystemWatch watch(counter, m_oStore.Folder());
      test::OutcomeOf(run);
    }
    return counter.Count;
  }

  void ExpectSound(const StoreCall& call, const Course& course, const Outcome& outcome,
                   const Injector& injector) const {
    const std::string zState = m_oStore.State();
    if (outcome.Failure.empty()) {
      EXPECT_EQ(course.After, zState) << "nothing was reported, and something is missing";
      EXPECT_EQ(course.Values, outcome.Values);
    } else {
      EXPECT_TRUE(zState == course.Before || zState == course.After || course.Between.contains(zState))
          << outcome.Failure << "\n"
          << zState;
      EXPECT_TRUE(call.Name == std::string("CheckOrderStore") ||
                  outcome.Failure.find(m_oStore.Folder()) != std::string::npos)
          << outcome.Failure;
    }

    if (!m_oStore.KeptFile().empty()) {
      // Under its other name, which is said, and with all that it held.
      EXPECT_NE(std::string::npos, outcome.Failure.find(m_oStore.KeptFile())) << outcome.Failure;
      EXPECT_EQ(course.Before, zState);
      return;
    }

    // The next call works, and the store is whole but for a total that is behind.
    const auto findings = qm_ordering::CheckOrderStore();
    if (!course.Between.contains(zState)) {
      EXPECT_EQ(zState == course.After ? course.FindingsAfter : course.FindingsBefore, findings);
    }
    for (const std::string& zFinding : findings) {
      EXPECT_NE(std::string::npos, zFinding.find("its total is")) << zFinding;
    }
    qm_ordering::CurrentOrder order;
    EXPECT_EQ(0, order.OrderDetails()->Error().Number) << order.OrderDetails()->Error().Description;
    order.LoadItems(0);
    order.OrderDetails()->PurchaseOrderNumber("the next call");
    order.SaveSummary();
    EXPECT_EQ(0, order.Error().Number) << order.Error().Description;
    EXPECT_EQ(
        "the next call",
        test::StoreFile(m_oStore.File()).Value("select zPurchaseOrderNumber from tblOrder where bIsCurrent"));
    if (call.Name == std::string("CreateOrderStore") && !outcome.Failure.empty()) {
      qm_ordering::CreateOrderStore(m_oStore.NewFolder());
    }

    // Nothing is left behind, unless removing it was what failed.
    CloseIdleSessions();
    if (std::ranges::find(injector.Failed, SystemCall::Delete) == injector.Failed.end()) {
      std::vector<std::string> files = m_oStore.Files();
      std::erase_if(files, [](const std::string& zvFile) {
        return zvFile.starts_with("new") || zvFile.starts_with("legacy") ||
               zvFile.starts_with("Orders.mdb.replaced-") || zvFile == "Orders.mdb.schema1" ||
               zvFile == "Order_History_Import_Log.txt" || zvFile == "Order_History_Import_Log.txt.lock";
      });
      EXPECT_EQ((std::vector<std::string>{"Orders.mdb", "PersonalLists.xml", "PersonalLists.xml.lock",
                                          "backup.mdb", "settings.ini", "settings.ini.lock"}),
                files);
    }
  }

  // Fails every lvStride-th request of every call; answers how many failures there were.
  std::size_t InjectAll(std::size_t lvStride) const {
    std::size_t lInjected = 0;
    std::size_t lReported = 0;
    std::map<std::string, std::size_t> kinds;
    std::size_t lNext = 0;
    for (const StoreCall& call : m_oStore.Calls()) {
      const Course course = CourseOf(call);
      for (const bool bWarm : {true, false}) {
        for (const Fault& fault : kFaults) {
          const std::size_t lCount = CountOf(call, bWarm, fault);
          for (std::size_t lAt = lNext % lvStride; lAt < lCount; lAt += lvStride) {
            ++lNext;
            const auto run = Prepare(call, bWarm);
            const std::size_t lOpen = OpenFiles();
            Injector injector(fault, lAt);
            Outcome outcome;
            {
              const test::SystemWatch watch(injector, m_oStore.Folder());
              outcome = test::OutcomeOf(run);
            }
            SCOPED_TRACE(std::string(call.Name) + (bWarm ? ", warm" : ", cold") + ": " + fault.Name +
                         ", request " + std::to_string(lAt) + ", " + injector.What +
                         "; outcome: " + outcome.Failure);
            ++lInjected;
            lReported += outcome.Failure.empty() ? 0U : 1U;
            for (const SystemCall kind : injector.Failed) {
              ++kinds[test::NameOf(kind)];
            }
            ExpectSound(call, course, outcome, injector);
            EXPECT_GE(lOpen, OpenFiles());
            if (HasFailure()) {
              return lInjected;
            }
          }
        }
      }
    }
    std::cout << "injected failures: " << lInjected << ", reported: " << lReported
              << "; requests that failed:";
    for (const auto& [zKind, lNumber] : kinds) {
      std::cout << " " << zKind << " " << lNumber;
    }
    std::cout << "\n";
    return lInjected;
  }

  test::WorkingStore m_oStore;
};

class FaultsFull : public Faults {};

}  // namespace

TEST_F(Faults, AFewOfAllRequestsThatFailLeaveTheStoreSound) {
  EXPECT_LT(100U, InjectAll(61));
}

TEST_F(FaultsFull, EveryRequestThatFailsLeavesTheStoreSound) {
  EXPECT_LE(2000U, InjectAll(1));
}

TEST_F(Faults, OfTheTablesOfAnImportFailItWithNothingChangedAndNoWordElsewhere) {
  const std::vector<StoreCall> calls = m_oStore.Calls();
  const auto call = std::ranges::find_if(
      calls, [](const StoreCall& other) { return other.Name == std::string("ApplyImports"); });
  ASSERT_NE(calls.end(), call);
  const Course course = CourseOf(*call);
  std::set<SystemCall> reported;
  for (const Fault& fault : kFaults) {
    bool bReached = true;
    for (std::size_t lAt = 0; bReached && !HasFailure(); ++lAt) {
      const auto run = Prepare(*call, true);
      const std::size_t lOpen = OpenFiles();
      Injector injector(fault, lAt);
      testing::internal::CaptureStderr();
      Outcome outcome;
      {
        const test::SystemWatch watch(injector, m_oStore.LegacyFolder());
        outcome = test::OutcomeOf(run);
      }
      SCOPED_TRACE(std::string(fault.Name) + ", request " + std::to_string(lAt) + ", " + injector.What +
                   "; outcome: " + outcome.Failure);
      EXPECT_EQ("", testing::internal::GetCapturedStderr());
      EXPECT_GE(lOpen, OpenFiles());
      bReached = !injector.Failed.empty();
      if (outcome.Failure.empty()) {
        EXPECT_EQ(course.Values, outcome.Values);
        EXPECT_EQ(course.After, m_oStore.State());
        continue;
      }
      reported.insert(injector.Failed.front());
      EXPECT_NE(std::string::npos, outcome.Failure.find(m_oStore.LegacyFolder())) << outcome.Failure;
      EXPECT_EQ(course.Before, m_oStore.State());
      const Outcome again = test::OutcomeOf(run);
      EXPECT_EQ("", again.Failure);
      EXPECT_EQ(course.After, m_oStore.State());
    }
  }
  for (const SystemCall kind : {SystemCall::Open, SystemCall::Read, SystemCall::Status}) {
    EXPECT_TRUE(reported.contains(kind)) << test::NameOf(kind);
  }
}

TEST_F(Faults, ReadsAndWritesThatAreDoneByHalvesChangeNothing) {
  for (const StoreCall& call : m_oStore.Calls()) {
    SCOPED_TRACE(call.Name);
    const Course course = CourseOf(call);
    for (const bool bWarm : {true, false}) {
      const auto run = Prepare(call, bWarm);
      Halving halving;
      Outcome outcome;
      {
        const test::SystemWatch watch(halving, m_oStore.Folder());
        outcome = test::OutcomeOf(run);
      }
      EXPECT_EQ("", outcome.Failure);
      EXPECT_EQ(course.Values, outcome.Values);
      EXPECT_EQ(course.After, m_oStore.State());
    }
  }
}

TEST_F(Faults, ALogThatCouldNotBeOpenedForWritingOnceIsOpenedAnewByTheNextCall) {
  // A second program that has the store open, so that there is a log, which the engine then reads only.
  sqlite3* pDatabase = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(m_oStore.File().c_str(), &pDatabase));
  const qm_ordering::ado::embedded::DatabaseHandle other(pDatabase);
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(pDatabase, "select * from tblOrder", nullptr, nullptr, nullptr));
  CloseIdleSessions();

  OneLogRefused refusal;
  std::unique_ptr<qm_ordering::CurrentOrder> oOrder;
  {
    const test::SystemWatch watch(refusal, m_oStore.Folder());
    oOrder = std::make_unique<qm_ordering::CurrentOrder>();
  }
  ASSERT_TRUE(refusal.Done);
  EXPECT_EQ(0, oOrder->OrderDetails()->Error().Number) << oOrder->OrderDetails()->Error().Description;
  oOrder->OrderDetails()->PurchaseOrderNumber("the next call");
  oOrder->SavePONumber();
  EXPECT_EQ(0, oOrder->Error().Number) << oOrder->Error().Description;
}

TEST_F(Faults, AStoreWhoseStatusCannotBeReadKeepsItsLog) {
  // A second program that has the store open.
  sqlite3* pDatabase = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(m_oStore.File().c_str(), &pDatabase));
  const qm_ordering::ado::embedded::DatabaseHandle other(pDatabase);
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(pDatabase, "select * from tblOrder", nullptr, nullptr, nullptr));

  qm_ordering::CurrentOrder order;
  order.OrderDetails()->PurchaseOrderNumber("in the log");
  order.SavePONumber();
  {
    NoStatus noStatus;
    const test::SystemWatch watch(noStatus, m_oStore.Folder());
    CloseIdleSessions();
  }
  EXPECT_TRUE(std::filesystem::exists(m_oStore.File() + "-wal"));
  EXPECT_EQ(
      "in the log",
      test::StoreFile(m_oStore.File()).Value("select zPurchaseOrderNumber from tblOrder where bIsCurrent"));
}
