#include <gtest/gtest.h>
#include <sqlite3.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/ado/StatementTrace.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/RaisedNumber.h"

namespace {

namespace ado = qm_ordering::ado;
namespace failure = qm_ordering::failure;
using qm_ordering::Variant;
using test::RaisedNumber;

class Session : public test::StoreFixture {
 protected:
  // How many descriptors of this process are open on the store's file, or on one beside it.
  std::ptrdiff_t OpenDescriptors(const std::string& zvSuffix = {}) const {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return std::count_if(begin(descriptors), end(descriptors), [&](const auto& oEntry) {
      std::error_code ignored;
      return std::filesystem::read_symlink(oEntry.path(), ignored) == Store.Path() + zvSuffix;
    });
  }

  // The bytes of the store's file and of the log and its index beside it. Read by another process: closing a
  // descriptor of theirs in this one would drop the engine's locks.
  std::string Bytes() const {
    return test::ChildProcess([&] {
             std::string zAll;
             for (const char* zSuffix : {"", "-wal", "-shm"}) {
               const std::string zPath = Store.Path() + zSuffix;
               zAll +=
                   zSuffix + (std::filesystem::exists(zPath) ? test::ReadFile(zPath) : std::string("absent"));
             }
             return zAll;
           })
        .Outcome();
  }

  static void AddOrder(const std::string& zvNumber) {
    test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('" + zvNumber + "')");
  }

  // A transaction too large for the engine's memory, so that a part of it stands in the log already.
  static void AddMuch(ado::Connection& connection, int lvOrders) {
    const std::string zNotes(10'000, 'n');
    for (int i = 0; i < lvOrders; ++i) {
      connection.Execute("insert into tblOrder (zDINotes) values ('" + zNotes + "')");
    }
  }
};

// The numbers of the orders of a store, by an engine session of another process, which ends at once.
std::string OrdersIn(const std::string& zvPath) {
  return test::ChildProcess([&] {
           std::string zAll;
           for (const auto& row : test::StoreFile(zvPath).Query(
                    "select zPurchaseOrderNumber from tblOrder order by lOrderID")) {
             zAll += row.front() + " ";
           }
           return zAll;
         })
      .Outcome();
}

// What a host may keep for a thread, and what ends only after all that the library keeps for it.
struct Keepsake {
  ado::Connection Connection;
  std::unique_ptr<ado::Recordset> Rows;
};

}  // namespace

TEST_F(Session, RestsWhileNoConnectionUsesIt) {
  AddOrder("a");
  EXPECT_EQ(1, OpenDescriptors());
}

TEST_F(Session, ServesOneConnectionAfterTheOther) {
  for (int i = 0; i < 1000; ++i) {
    const test::OpenConnection connection;
  }
  EXPECT_EQ(1, OpenDescriptors());
}

TEST_F(Session, RestsWithAFewOthersAtMost) {
  {
    std::vector<std::unique_ptr<test::OpenConnection>> connections;
    for (int i = 0; i < 30; ++i) {
      connections.push_back(std::make_unique<test::OpenConnection>());
    }
    EXPECT_EQ(30, OpenDescriptors());
  }
  // The engine keeps descriptors of the file itself for later use; each session has one of the log.
  EXPECT_LE(OpenDescriptors("-wal"), 8);
  EXPECT_GE(OpenDescriptors("-wal"), 1);
}

TEST_F(Session, IsNotServedToTwoConnectionsAtATime) {
  test::OpenConnection first;
  test::OpenConnection second;
  first.BeginTransaction();
  first.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  EXPECT_EQ(Variant(0), second.Execute("select count(*) from tblOrder")->Fields(0).Value());
  EXPECT_EQ(Variant(1), first.Execute("select count(*) from tblOrder")->Fields(0).Value());
}

TEST_F(Session, RollsBackWhatItsConnectionLeavesOpen) {
  {
    test::OpenConnection connection;
    connection.BeginTransaction();
    connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  }
  EXPECT_EQ("0", test::Value("select count(*) from tblOrder"));
  Store.Run("begin immediate; insert into tblOrder (zPurchaseOrderNumber) values ('b'); commit");
  EXPECT_EQ("b", test::Value("select zPurchaseOrderNumber from tblOrder"));
}

TEST_F(Session, EndsTheReadsThatItsConnectionLeavesOpen) {
  AddOrder("a");
  AddOrder("b");
  std::unique_ptr<ado::Recordset> rows;
  {
    test::OpenConnection connection;
    rows = connection.Execute("select zPurchaseOrderNumber from tblOrder");
  }
  // A reader would keep the log from being emptied: the first value would be 1.
  EXPECT_EQ("0", Store.Query("pragma wal_checkpoint(truncate)").front().front());
}

TEST_F(Session, EndsAReadAtItsLastRow) {
  AddOrder("a");
  test::OpenConnection connection;
  const auto rows = connection.Execute("select zPurchaseOrderNumber from tblOrder");
  rows->MoveNext();
  EXPECT_EQ("0", Store.Query("pragma wal_checkpoint(truncate)").front().front());
}

TEST_F(Session, BringsALongLogIntoTheFileWhenItRests) {
  const auto lBefore = std::filesystem::file_size(Store.Path());
  {
    test::OpenConnection connection;
    AddMuch(connection, 200);
    ASSERT_EQ(lBefore, std::filesystem::file_size(Store.Path()));
  }
  EXPECT_GT(std::filesystem::file_size(Store.Path()), lBefore + 1'000'000);
}

TEST_F(Session, LosesNoTransactionAtItsCommit) {
  {
    test::OpenConnection connection;
    ado::Transaction transaction(connection);
    connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
    transaction.Commit();
  }
  EXPECT_EQ("a ", OrdersIn(Store.Path()));
}

TEST_F(Session, RollsATransactionBackAtTheEndOfItsScope) {
  test::OpenConnection connection;
  {
    const ado::Transaction transaction(connection);
    connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  }
  connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('b')");
  EXPECT_EQ("b ", OrdersIn(Store.Path()));
}

TEST_F(Session, SeesOneStateInAReadTransaction) {
  AddOrder("a");
  test::OpenConnection connection;
  const ado::Transaction oneState(connection, ado::TransactionKind::Read);
  EXPECT_EQ(Variant(1), connection.Execute("select count(*) from tblOrder")->Fields(0).Value());
  AddOrder("b");
  EXPECT_EQ(Variant(1), connection.Execute("select count(*) from tblOrder")->Fields(0).Value());
}

TEST_F(Session, RefusesATransactionWithinATransaction) {
  test::OpenConnection connection;
  connection.BeginTransaction();
  EXPECT_EQ(failure::kStoreCommand, RaisedNumber([&] {
              connection.BeginTransaction();
              return 0;
            }));
}

TEST_F(Session, RefusesACommitWithoutATransaction) {
  test::OpenConnection connection;
  EXPECT_EQ(failure::kStoreCommand, RaisedNumber([&] {
              connection.CommitTransaction();
              return 0;
            }));
}

TEST_F(Session, GoesOnAfterAStatementThatFailed) {
  test::OpenConnection connection;
  for (const char* zSQL :
       {"select nothing from tblOrder", "insert into tblOrder (lOrderID) values (1, 2)",
        "update tblOrder set where lOrderID = 1", "select zPurchaseOrderNumber from tblOrder limit",
        "insert into tblOrderItem (lOrderID, zItemNumber) values (77, 'a')",
        "insert into tblOrderItem (lOrderID) values (1)"}) {
    EXPECT_EQ(failure::kStoreCommand, RaisedNumber([&] { return connection.Execute(zSQL); })) << zSQL;
  }
  EXPECT_EQ(failure::kStoreNoTable,
            RaisedNumber([&] { return connection.Execute("select * from tblNone"); }));
  connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  EXPECT_EQ(Variant("a"), connection.Execute("select zPurchaseOrderNumber from tblOrder")->Fields(0).Value());
}

TEST_F(Session, RunsMoreTextsThanItKeepsPrepared) {
  AddOrder("a");
  test::OpenConnection connection;
  const auto held = connection.Execute("select zPurchaseOrderNumber from tblOrder where lOrderID >= 0");
  for (int lRound = 0; lRound < 2; ++lRound) {
    for (int i = 0; i < 150; ++i) {
      const std::string zName = "n" + std::to_string(i);
      const auto rows = connection.Execute("select zPurchaseOrderNumber as " + zName + " from tblOrder");
      ASSERT_EQ(Variant("a"), rows->Fields(zName).Value());
    }
  }
  EXPECT_EQ(Variant("a"), held->Fields(0).Value());
}

TEST_F(Session, TakesAListOfManyValues) {
  AddOrder("a");
  std::string zList = "'a'";
  for (int i = 0; i < 20'000; ++i) {
    zList += ", 'b" + std::to_string(i) + "'";
  }
  EXPECT_EQ("1", test::Value("select count(*) from tblOrder where zPurchaseOrderNumber in (" + zList + ")"));
}

TEST_F(Session, IsNotUsedAgainAfterDamage) {
  {
    test::OpenConnection connection;
    AddMuch(connection, 100);
  }
  ado::embedded::CloseIdleSessions();
  std::string zBytes = test::ReadFile(Store.Path());
  std::fill(zBytes.begin() + 100'000, zBytes.end(), '\xEE');
  test::WriteFile(Store.Path(), zBytes);
  test::OpenConnection connection;
  const auto rows = connection.Execute("select zDINotes from tblOrder");
  const auto readAll = [&] {
    for (; !rows->AtEnd(); rows->MoveNext()) {
    }
    return 0;
  };
  EXPECT_EQ(failure::kStoreUnavailable, RaisedNumber(readAll));
  // It does not begin anew behind the failure.
  EXPECT_EQ(failure::kClosedObject, RaisedNumber(readAll));
  connection.Close();
  EXPECT_EQ(0, OpenDescriptors());
}

TEST_F(Session, IsNotUsedForAnotherFileUnderItsName) {
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  test::RunOn(test::ConnectionStringOf(other.Path()),
              "insert into tblOrder (zPurchaseOrderNumber) values ('other')");
  ado::embedded::CloseIdleSessions();
  AddOrder("a");
  std::filesystem::rename(other.File("Orders.mdb"), Store.Path());
  EXPECT_EQ("other", test::Value("select zPurchaseOrderNumber from tblOrder"));
  AddOrder("b");
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("other b ", OrdersIn(Store.Path()));
  EXPECT_EQ(std::vector<std::string>{}, qm_ordering::CheckOrderStore());
}

TEST_F(Session, IsRefusedForAnotherFileUnderTheNameOfOneThatIsInUse) {
  // The engine would read the log of the one into the other.
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  test::RunOn(test::ConnectionStringOf(other.Path()),
              "insert into tblOrder (zPurchaseOrderNumber) values ('other')");
  ado::embedded::CloseIdleSessions();
  AddOrder("a");
  {
    test::OpenConnection connection;
    std::filesystem::rename(Store.Path(), Folder.File("Moved.mdb"));
    std::filesystem::rename(other.File("Orders.mdb"), Store.Path());
    const auto refused = test::FailureOf([] { test::Value("select zPurchaseOrderNumber from tblOrder"); });
    EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
    EXPECT_NE(std::string::npos,
              refused.Description().find(Store.Path() + " cannot be used: the file was replaced"))
        << refused.Description();
    connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('b')");
  }
  EXPECT_EQ("other", test::Value("select zPurchaseOrderNumber from tblOrder"));
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("other ", OrdersIn(Store.Path()));
  EXPECT_EQ("a b ", OrdersIn(Folder.File("Moved.mdb")));
}

TEST_F(Session, LeavesNoLogBesideAnotherFileUnderItsName) {
  // The engine would read it into that file.
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  test::RunOn(test::ConnectionStringOf(other.Path()),
              "insert into tblOrder (zPurchaseOrderNumber) values ('other')");
  ado::embedded::CloseIdleSessions();
  AddOrder("a");
  std::filesystem::rename(other.File("Orders.mdb"), Store.Path());
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("other ", OrdersIn(Store.Path()));
}

TEST_F(Session, CompletesItsFileThatWasMovedAway) {
  AddOrder("a");
  std::filesystem::rename(Store.Path(), Folder.File("Moved.mdb"));
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("a ", OrdersIn(Folder.File("Moved.mdb")));
}

TEST_F(Session, LeavesTheLogOfItsFileBehindASymbolicLinkThatLeadsElsewhereByNow) {
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  const std::string zLink = Folder.File("link/Orders.mdb");
  std::filesystem::create_directory(Folder.File("link"));
  std::filesystem::create_symlink(Store.Path(), zLink);
  test::RunOn(test::ConnectionStringOf(Folder.File("link")),
              "insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  std::filesystem::remove(zLink);
  std::filesystem::create_symlink(other.File("Orders.mdb"), zLink);
  // Another user of the store needs the log.
  test::OpenConnection connection;
  EXPECT_EQ("0",
            test::ValueOn(test::ConnectionStringOf(Folder.File("link")), "select count(*) from tblOrder"));
  connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('b')");
  EXPECT_EQ("a b ", OrdersIn(Store.Path()));
}

TEST_F(Session, LeavesTheLogOfAnotherStoreUnderItsName) {
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  AddOrder("a");
  // Another program replaced the store with all that belongs to it, and has it open.
  std::filesystem::remove(Store.Path() + "-wal");
  std::filesystem::remove(Store.Path() + "-shm");
  std::filesystem::rename(other.File("Orders.mdb"), Store.Path());
  test::WriteFile(Store.Path() + "-wal", "its log");
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("its log", test::ReadFile(Store.Path() + "-wal"));
}

TEST_F(Session, RaisesAClearFailureWhenItsFileIsGone) {
  AddOrder("a");
  std::filesystem::remove(Store.Path());
  const auto refused = test::FailureOf([&] { AddOrder("b"); });
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
  EXPECT_NE(std::string::npos,
            refused.Description().find(Store.Path() + " cannot be used: there is no such file"))
      << refused.Description();
  EXPECT_EQ(0, OpenDescriptors());
}

TEST_F(Session, BringsNothingOfADeletedStoreIntoANewOne) {
  AddOrder("a");
  std::filesystem::remove(Store.Path());
  EXPECT_EQ(failure::kStoreUnavailable, RaisedNumber([&] { return test::Value("select 1 from tblOrder"); }));
  qm_ordering::CreateOrderStore(Folder.Path());
  EXPECT_EQ("no row", test::Value("select zPurchaseOrderNumber from tblOrder"));
}

TEST_F(Session, MayEndAfterItsThreadsPool) {
  const std::string zConnectionString = qm_ordering::ConnectionString();
  AddOrder("a");
  ado::embedded::CloseIdleSessions();
  std::thread([&] {
    thread_local Keepsake keepsake;
    keepsake.Connection.Open(zConnectionString);
    keepsake.Connection.BeginTransaction();
    keepsake.Connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('lost')");
    keepsake.Rows = keepsake.Connection.Execute("select zPurchaseOrderNumber from tblOrder");
  }).join();
  EXPECT_EQ(0, OpenDescriptors());
  EXPECT_EQ("a ", OrdersIn(Store.Path()));
}

TEST_F(Session, MayOutliveItsRecordsetsEndInAnotherThread) {
  auto connection = std::make_unique<test::OpenConnection>();
  auto rows = connection->Execute("select zPurchaseOrderNumber from tblOrder");
  std::thread([&] {
    connection.reset();
    rows.reset();
  }).join();
  EXPECT_EQ(0, OpenDescriptors());
  AddOrder("a");
  EXPECT_EQ("a ", OrdersIn(Store.Path()));
}

TEST_F(Session, MayRunAStatementWhileItsThreadEnds) {
  // A trace that was there must not be called when it is gone, whatever ends first.
  struct LastWord {
    ~LastWord() { Connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('last')"); }
    ado::Connection Connection;
  };
  const std::string zConnectionString = qm_ordering::ConnectionString();
  std::thread([&] {
    thread_local LastWord lastWord;
    lastWord.Connection.Open(zConnectionString);
    qm_ordering::SetStatementTrace([zKept = std::string(100, 'k')](const std::string& zvSQL) {
      EXPECT_EQ('k', zKept[zvSQL.size() % 100]);
    });
    lastWord.Connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('first')");
  }).join();
  EXPECT_EQ("first last ", OrdersIn(Store.Path()));
}

TEST_F(Session, OfAStaticObjectMayEndWithTheProcess) {
  ado::embedded::CloseIdleSessions();
  EXPECT_EXIT(
      {
        static Keepsake keepsake;
        keepsake.Connection.Open(qm_ordering::ConnectionString());
        keepsake.Connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
        keepsake.Rows = keepsake.Connection.Execute("select zPurchaseOrderNumber from tblOrder");
        exit(keepsake.Rows->AtEnd() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
  EXPECT_EQ("a ", OrdersIn(Store.Path()));
}

TEST_F(Session, BelongsToOneThread) {
  const std::string zConnectionString = qm_ordering::ConnectionString();
  constexpr int kOrders = 50;
  const auto addOrders = [&] {
    for (int i = 0; i < kOrders; ++i) {
      test::RunOn(zConnectionString,
                  "insert into tblOrder (lDIShippingMethod) values (" + std::to_string(i) + ")");
    }
  };
  std::thread first(addOrders);
  std::thread second(addOrders);
  first.join();
  second.join();
  EXPECT_EQ(std::to_string(2 * kOrders), test::Value("select count(*) from tblOrder"));
  EXPECT_EQ("2450", test::Value("select sum(lDIShippingMethod) from tblOrder"));
}

TEST_F(Session, IsNotOpenedInAForkedProcess) {
  AddOrder("a");
  const std::string zOutcome =
      test::ChildProcess([&] { return test::Value("select count(*) from tblOrder"); }).Outcome();
  EXPECT_TRUE(zOutcome.starts_with(std::to_string(failure::kStoreUnavailable))) << zOutcome;
  for (const std::string& zPart : {Store.Path(), std::string("forked"), std::string("exec")}) {
    EXPECT_NE(std::string::npos, zOutcome.find(zPart)) << zOutcome;
  }
  AddOrder("b");
  EXPECT_EQ("a b ", OrdersIn(Store.Path()));
}

TEST_F(Session, IsNeitherUsedNorEndedInAProcessThatWasMadeWithoutTheHandlersOfFork) {
  AddOrder("a");
  const std::string zBefore = Bytes();
  const pid_t lChild = _Fork();
  ASSERT_GE(lChild, 0);
  if (lChild == 0) {
    const std::int32_t lNumber =
        test::RaisedNumber([] { return test::Value("select count(*) from tblOrder"); });
    _exit(lNumber == failure::kStoreUnavailable ? 0 : 1);
  }
  int lStatus = 0;
  ASSERT_EQ(lChild, waitpid(lChild, &lStatus, 0));
  EXPECT_EQ(0, lStatus);
  EXPECT_EQ(zBefore, Bytes());
  AddOrder("b");
  EXPECT_EQ("a b ", OrdersIn(Store.Path()));
}

TEST_F(Session, WhoseFileIsMovedWhileItIsOpenTakesItsLogAlongWhenItIsGivenBack) {
  test::OpenConnection connection;
  connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('in the log')");
  const std::string zMoved = Store.Path() + ".moved";
  std::filesystem::rename(Store.Path(), zMoved);
  ASSERT_TRUE(std::filesystem::exists(Store.Path() + "-wal"));
  connection.Close();
  EXPECT_FALSE(std::filesystem::exists(Store.Path() + "-wal"));
  EXPECT_EQ("in the log ", OrdersIn(zMoved));
}

TEST_F(Session, IsNotOpenedInAForkedProcessThroughAnObjectThatIsOpen) {
  AddOrder("a");
  AddOrder("b");
  test::OpenConnection connection;
  const auto rows = connection.Execute("select zPurchaseOrderNumber from tblOrder");
  ado::BatchRecordset batch = connection.OpenBatch("select zPurchaseOrderNumber from tblOrder");
  batch.Value(batch.Column("zPurchaseOrderNumber"), "from the child");
  const std::string zBefore = Bytes();
  const auto refused = [&](const std::function<void()>& use) {
    const std::string zOutcome = test::ChildProcess([&] {
                                   use();
                                   return std::string("it worked");
                                 }).Outcome();
    EXPECT_TRUE(zOutcome.starts_with(std::to_string(failure::kStoreUnavailable))) << zOutcome;
  };
  refused([&] { connection.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('c')"); });
  refused([&] { connection.OpenDetached("select count(*) from tblOrder"); });
  refused([&] { connection.OpenBatch("select zPurchaseOrderNumber from tblOrder"); });
  refused([&] { connection.BeginTransaction(); });
  refused([&] { connection.CheckIntegrity(); });
  refused([&] { rows->MoveNext(); });
  refused([&] { batch.UpdateBatch(); });
  EXPECT_EQ(zBefore, Bytes());
  EXPECT_EQ(Variant("a"), rows->Fields(0).Value());
  rows->MoveNext();
  EXPECT_EQ(Variant("b"), rows->Fields(0).Value());
}

TEST_F(Session, OfAnotherProcessIsLeftAloneAtItsEnd) {
  test::OpenConnection connection;
  AddMuch(connection, 100);
  AddOrder("by a session that rests");
  auto rows = connection.Execute("select lOrderID from tblOrder where lOrderID in (1, 2)");
  const std::string zBefore = Bytes();
  const std::string zOutcome = test::ChildProcess([&] {
                                 rows.reset();
                                 connection.Close();
                                 ado::embedded::CloseIdleSessions();
                                 return std::string("ended");
                               }).Outcome();
  EXPECT_EQ("ended", zOutcome);
  EXPECT_EQ(zBefore, Bytes());
  EXPECT_EQ(Variant(1), rows->Fields(0).Value());
  connection.Execute("update tblOrder set zPurchaseOrderNumber = 'x'");
  EXPECT_EQ("101", test::Value("select count(*) from tblOrder where zPurchaseOrderNumber = 'x'"));
}

TEST_F(Session, OfAnotherProcessIsNotBroughtToRest) {
  test::OpenConnection connection;
  // A long log, which would be brought into the file.
  AddMuch(connection, 200);
  const std::string zBefore = Bytes();
  const std::string zOutcome = test::ChildProcess([&] {
                                 connection.Close();
                                 return std::string("ended");
                               }).Outcome();
  EXPECT_EQ("ended", zOutcome);
  EXPECT_EQ(zBefore, Bytes());
}

TEST_F(Session, KeepsItsTransactionWhenAForkedProcessEndsIt) {
  test::OpenConnection connection;
  AddMuch(connection, 1);
  {
    ado::Transaction transaction(connection);
    AddMuch(connection, 599);
    const std::string zBefore = Bytes();
    EXPECT_EQ("ended", test::ChildProcess([&] {
                         connection.RollbackTransaction();
                         connection.Close();
                         return std::string("ended");
                       }).Outcome());
    EXPECT_EQ(zBefore, Bytes());
    transaction.Commit();
  }
  EXPECT_EQ(Variant(600), connection.Execute("select count(*) from tblOrder")->Fields(0).Value());
  connection.Close();
  EXPECT_EQ(std::vector<std::string>{}, qm_ordering::CheckOrderStore());
}

TEST_F(Session, IsOpenedInAForkedProcessWhenNoneWasOpenBefore) {
  AddOrder("a");
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("1", test::ChildProcess([&] { return test::Value("select count(*) from tblOrder"); }).Outcome());
}

// What another program still reads cannot be brought into the file.
TEST_F(Session, KeepsTheLogOfAMovedFileThatItCannotBringIn) {
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  sqlite3* pOther = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(Store.Path().c_str(), &pOther));
  const ado::embedded::DatabaseHandle other(pOther);
  ASSERT_EQ(SQLITE_OK,
            sqlite3_exec(pOther, "begin; select lOrderID from tblOrder", nullptr, nullptr, nullptr));
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('b')");
  std::filesystem::rename(Store.Path(), Folder.File("moved"));
  ado::embedded::CloseIdleSessions();
  EXPECT_FALSE(std::filesystem::exists(Store.Path() + "-wal"));
  ASSERT_TRUE(std::filesystem::exists(Store.Path() + "-wal.kept"));
  EXPECT_LT(0U, std::filesystem::file_size(Store.Path() + "-wal.kept"));
}
