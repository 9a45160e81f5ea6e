#include "qm_ordering/platform/ado/StatementTrace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/FailureOf.h"

using namespace std::string_view_literals;

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::Failure;
using Texts = std::vector<std::string>;

class StatementTrace : public test::StoreFixture {
 protected:
  ~StatementTrace() override { qm_ordering::SetStatementTrace(nullptr); }

  static constexpr const char* kInsert = "insert into tblOrder (zPurchaseOrderNumber) values ('a')";
};

}  // namespace

TEST_F(StatementTrace, ShowsEveryTextAsItWasBuilt) {
  const auto zZero = "select  zDINotes from tblOrder where zDINotes='a\0''b' ;"sv;
  test::TraceRecorder trace;
  test::OpenConnection connection;
  connection.Execute(kInsert);
  connection.OpenDetached(std::string(zZero));
  connection.OpenBatch("select zDINotes from tblOrder where lOrderID = 12and bIsCurrent = True");
  EXPECT_EQ((Texts{kInsert, std::string(zZero),
                   "select zDINotes from tblOrder where lOrderID = 12and bIsCurrent = True"}),
            trace.Statements());
}

TEST_F(StatementTrace, ShowsATextBeforeItRuns) {
  std::string zCount;
  test::TraceRecorder trace;
  trace.Before = [&](const std::string&) { zCount = Store.Value("select count(*) from tblOrder"); };
  test::Run(kInsert);
  EXPECT_EQ("0", zCount);
  EXPECT_EQ("1", Store.Value("select count(*) from tblOrder"));
}

TEST_F(StatementTrace, ShowsTextsThatFail) {
  test::TraceRecorder trace;
  EXPECT_EQ(failure::kStoreCommand, test::FailureOf([] { test::Run("no statement"); }).Number());
  EXPECT_EQ(Texts{"no statement"}, trace.Statements());
}

TEST_F(StatementTrace, ShowsATextThatIsRefusedBeforeItRuns) {
  test::TraceRecorder trace;
  test::OpenConnection connection;
  const Failure refused = test::FailureOf([&] { connection.Refuse(kInsert, "a raw text holds a quote"); });
  EXPECT_EQ(failure::kStoreCommand, refused.Number());
  EXPECT_EQ("a raw text holds a quote", refused.Description());
  EXPECT_EQ(Texts{kInsert}, trace.Statements());
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
}

TEST_F(StatementTrace, ShowsNothingOfTheProvidersOwn) {
  test::TraceRecorder trace;
  test::OpenConnection connection;
  qm_ordering::ado::Transaction transaction(connection);
  connection.Execute(kInsert);
  transaction.Commit();
  EXPECT_EQ(Texts{kInsert}, trace.Statements());
}

TEST_F(StatementTrace, ShowsNothingOfAClosedConnection) {
  test::TraceRecorder trace;
  qm_ordering::ado::Connection connection;
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { connection.Execute(kInsert); }).Number());
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { connection.OpenDetached(kInsert); }).Number());
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { connection.OpenBatch(kInsert); }).Number());
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { connection.BeginTransaction(); }).Number());
  EXPECT_EQ(failure::kClosedObject, test::FailureOf([&] { connection.CommitTransaction(); }).Number());
  EXPECT_EQ(Texts{}, trace.Statements());
}

TEST_F(StatementTrace, ThatRaisesStopsTheStatementWithItsFailure) {
  test::TraceRecorder trace;
  trace.Before = [](const std::string&) { throw Failure(1234, "not now"); };
  test::OpenConnection connection;
  const Failure stopped = test::FailureOf([&] { connection.Execute(kInsert); });
  EXPECT_EQ(1234, stopped.Number());
  EXPECT_EQ("not now", stopped.Description());
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
}

TEST_F(StatementTrace, ThatThrowsAnythingElseStopsTheStatementWithAFailure) {
  test::TraceRecorder trace;
  trace.Before = [](const std::string&) { throw std::runtime_error("the disk of the host is full"); };
  test::OpenConnection connection;
  const Failure stopped = test::FailureOf([&] { connection.Execute(kInsert); });
  EXPECT_EQ(failure::kInvalidCall, stopped.Number());
  EXPECT_NE(std::string::npos, stopped.Description().find("the disk of the host is full"));
  trace.Before = [](const std::string&) { throw 7; };
  EXPECT_EQ(failure::kInvalidCall, test::FailureOf([&] { connection.OpenDetached(kInsert); }).Number());
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
}

TEST_F(StatementTrace, ThatRunsOutOfMemorySaysSo) {
  test::TraceRecorder trace;
  trace.Before = [](const std::string&) { throw std::bad_alloc(); };
  test::OpenConnection connection;
  EXPECT_EQ(failure::kOutOfMemory, test::FailureOf([&] { connection.Execute(kInsert); }).Number());
  EXPECT_EQ("0", Store.Value("select count(*) from tblOrder"));
}

TEST_F(StatementTrace, LeavesTheConnectionGoodAfterItStoppedAStatement) {
  test::OpenConnection connection;
  {
    test::TraceRecorder trace;
    trace.Before = [](const std::string&) { throw Failure(1234, "not now"); };
    EXPECT_EQ(1234, test::FailureOf([&] { connection.Execute(kInsert); }).Number());
  }
  connection.Execute(kInsert);
  EXPECT_EQ("1", Store.Value("select count(*) from tblOrder"));
}

TEST_F(StatementTrace, MayBeReplacedByItself) {
  Texts shown;
  qm_ordering::SetStatementTrace([&shown, zKept = std::string(100, 'k')](const std::string&) {
    qm_ordering::SetStatementTrace([&shown](const std::string& zvSQL) { shown.push_back(zvSQL); });
    shown.push_back(zKept);
  });
  test::Run(kInsert);
  test::Run(kInsert);
  EXPECT_EQ((Texts{std::string(100, 'k'), kInsert}), shown);
}

TEST_F(StatementTrace, MayRunStatementsOfItsOwn) {
  int lDepth = 0;
  test::TraceRecorder trace;
  trace.Before = [&](const std::string&) {
    if (++lDepth == 1) {
      test::Run("update tblOrder set zDINotes = 'traced'");
    }
  };
  test::Run(kInsert);
  EXPECT_EQ((Texts{kInsert, "update tblOrder set zDINotes = 'traced'"}), trace.Statements());
}

TEST_F(StatementTrace, BelongsToItsThread) {
  const std::string zConnectionString = qm_ordering::ConnectionString();
  test::TraceRecorder trace;
  Texts other;
  std::thread([&] {
    test::RunOn(zConnectionString, kInsert);
    qm_ordering::SetStatementTrace([&](const std::string& zvSQL) { other.push_back(zvSQL); });
    test::RunOn(zConnectionString, "delete from tblOrder");
  }).join();
  EXPECT_EQ(Texts{}, trace.Statements());
  EXPECT_EQ(Texts{"delete from tblOrder"}, other);
}

TEST_F(StatementTrace, GoesToTheErrorStreamWhenTheEnvironmentSaysSo) {
  // The environment is read once: each program below is a new one, with a store of its own.
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string zSQL("insert into tblOrder (zDINotes) values ('a\0b')"sv);
  const auto end = [&] {
    test::Run(zSQL);
    qm_ordering::ado::embedded::CloseIdleSessions();
    std::filesystem::remove_all(Folder.Path());
    std::exit(0);
  };
  const auto exited = testing::ExitedWithCode(0);
  {
    const test::EnvironmentScope environment("QM_ORDERING_TRACE", "1");
    EXPECT_EXIT(end(), exited, testing::Eq(zSQL + "\n"));
  }
  {
    const test::EnvironmentScope environment("QM_ORDERING_TRACE", "0");
    EXPECT_EXIT(end(), exited, testing::Eq(""));
  }
}
