#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/StoreFixture.h"

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::BackupOrderStore;
using qm_ordering::Failure;
using test::FailureOf;
using Texts = std::vector<std::string>;

unsigned Mode(const std::string& zvPath) {
  struct stat status {};
  EXPECT_EQ(0, stat(zvPath.c_str(), &status)) << zvPath;
  return status.st_mode & 0777U;
}

// A store with an order of two lines, and a folder for backups.
class BackupOrderStoreOf : public test::StoreFixture {
 protected:
  BackupOrderStoreOf() {
    Store.Run(
        "insert into tblOrder (zPurchaseOrderNumber, cTotalPrice) values ('PO-1', 35000);"
        "insert into tblOrderItem (lOrderID, zItemNumber, cExtendedPrice) values (1, 'a', 10000), (1, 'b', "
        "25000)");
  }

  // So large that it is copied in several steps.
  void MakeLarge() const {
    Store.Run(
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < 1500) "
        "insert into tblOrder (zDINotes) select printf('%.*c', 3500, 'n') from n");
  }

  std::string BackupPath() const { return Backups.File("backup"); }
  test::StoreFile Backup() const { return test::StoreFile(BackupPath()); }

  static Texts NamesIn(const std::string& zvFolder) {
    Texts zNames;
    for (const auto& oEntry : std::filesystem::directory_iterator(zvFolder)) {
      zNames.push_back(oEntry.path().filename().string());
    }
    std::ranges::sort(zNames);
    return zNames;
  }

  // The call fails with that number and those words, and in the folder of the backups nothing changes.
  void ExpectRefusal(const std::string& zvFile, std::int32_t lvNumber, const std::string& zvWords) const {
    const Texts zBefore = NamesIn(Backups.Path());
    const Failure refused = FailureOf([&] { BackupOrderStore(zvFile); });
    EXPECT_EQ(lvNumber, refused.Number()) << refused.Description();
    EXPECT_NE(std::string::npos, refused.Description().find(zvWords)) << refused.Description();
    EXPECT_EQ(zBefore, NamesIn(Backups.Path()));
  }

  // In a process of its own, as a user without privileges.
  std::string BackupUnprivileged() const {
    qm_ordering::ado::embedded::CloseIdleSessions();
    test::GiveToUnprivileged(Folder.Path());
    test::GiveToUnprivileged(Store.Path());
    return test::ChildProcess([&] {
             test::DropPrivileges();
             BackupOrderStore(BackupPath());
             return std::string("made");
           })
        .Outcome();
  }

  test::TempFolder Backups;
};

// Tests that take longer.
class BackupOrderStoreOfFull : public BackupOrderStoreOf {};

}  // namespace

TEST_F(BackupOrderStoreOf, AStoreIsOneWholeFileThatHoldsTheSame) {
  BackupOrderStore(BackupPath());
  EXPECT_EQ(Texts{"backup"}, NamesIn(Backups.Path()));
  EXPECT_EQ(Store.Everything(), Backup().Everything());
  EXPECT_EQ("delete", Backup().Value("pragma journal_mode"));
  EXPECT_EQ("ok", Backup().Value("pragma integrity_check"));
  EXPECT_EQ(Store.Value("pragma application_id"), Backup().Value("pragma application_id"));
  EXPECT_EQ(Store.Value("pragma user_version"), Backup().Value("pragma user_version"));
}

TEST_F(BackupOrderStoreOf, AnEmptyStoreIsAnEmptyStore) {
  Store.Run("delete from tblOrderItem; delete from tblOrder");
  BackupOrderStore(BackupPath());
  EXPECT_EQ((test::Rows{{"tblOrder"}, {"tblOrderItem"}, {"tblPersonalList"}, {"tblPersonalListItem"}}),
            Backup().Everything());
}

TEST_F(BackupOrderStoreOf, AStoreHoldsWhatIsStillInItsLog) {
  const test::OpenConnection connection;
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'logged'");
  ASSERT_LT(0U, std::filesystem::file_size(Store.Path() + "-wal"));
  BackupOrderStore(BackupPath());
  EXPECT_EQ("logged", Backup().Value("select zPurchaseOrderNumber from tblOrder"));
}

TEST_F(BackupOrderStoreOf, AStoreIsReadableByItsUserAlone) {
  test::WriteFile(BackupPath(), "");
  std::filesystem::permissions(BackupPath(), std::filesystem::perms(0644));
  EXPECT_EQ("made", test::ChildProcess([&] {
                      umask(0);
                      BackupOrderStore(BackupPath());
                      BackupOrderStore(Backups.File("new"));
                      return std::string("made");
                    }).Outcome());
  EXPECT_EQ(0600U, Mode(BackupPath()));
  EXPECT_EQ(0600U, Mode(Backups.File("new")));
}

TEST_F(BackupOrderStoreOf, AStoreReplacesAnEarlierBackup) {
  BackupOrderStore(BackupPath());
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'PO-2'");
  BackupOrderStore(BackupPath());
  EXPECT_EQ("PO-2", Backup().Value("select zPurchaseOrderNumber from tblOrder"));
  EXPECT_EQ(Texts{"backup"}, NamesIn(Backups.Path()));
}

TEST_F(BackupOrderStoreOf, AStoreReplacesADamagedBackup) {
  BackupOrderStore(BackupPath());
  std::filesystem::resize_file(BackupPath(), 5000);
  BackupOrderStore(BackupPath());
  EXPECT_EQ(Store.Everything(), Backup().Everything());
}

TEST_F(BackupOrderStoreOf, AStoreReplacesTheFileThatASymbolicLinkLeadsTo) {
  BackupOrderStore(Backups.File("real"));
  std::filesystem::create_symlink("real", BackupPath());
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'PO-2'");
  BackupOrderStore(BackupPath());
  EXPECT_TRUE(std::filesystem::is_symlink(BackupPath()));
  EXPECT_EQ("PO-2", test::StoreFile(Backups.File("real")).Value("select zPurchaseOrderNumber from tblOrder"));
}

TEST_F(BackupOrderStoreOf, AStoreTakesEveryName) {
  for (const char* zName :
       {"a b", "it's", "\"q\"", "\xC3\xA4\xE2\x82\xAC", "50%?mode=ro#x", "a;b", "{a}", "back\\slash",
        "file:name", "file:name?mode=memory", ":memory:", "-n", "new\nline"}) {
    BackupOrderStore(Backups.File(zName));
    EXPECT_EQ(Store.Everything(), test::StoreFile(Backups.File(zName)).Everything()) << zName;
    std::filesystem::remove(Backups.File(zName));
    EXPECT_EQ(Texts{}, NamesIn(Backups.Path())) << zName;
  }
}

TEST_F(BackupOrderStoreOf, AStoreTakesARelativeNameInTheCurrentFolder) {
  for (const char* zName : {"plain", "./a", "file:name", "file:/tmp/name", "file::memory:", ":memory:"}) {
    const std::string zOutcome = test::ChildProcess([&] {
                                   std::filesystem::create_directories(Backups.File("file:/tmp"));
                                   std::filesystem::current_path(Backups.Path());
                                   BackupOrderStore(zName);
                                   return std::string("made");
                                 }).Outcome();
    EXPECT_EQ("made", zOutcome) << zName;
    EXPECT_EQ(Store.Everything(), test::StoreFile(Backups.File(zName)).Everything()) << zName;
  }
}

TEST_F(BackupOrderStoreOfFull, AStoreInAFolderOfAnyNameIsMade) {
  for (const char* zName : {"it's", "\xC3\xA4", "50%?mode=ro#x", "file:name?mode=memory"}) {
    const std::string zOutcome = test::ChildProcess([&] {
                                   qm_ordering::ForgetStartUp();
                                   std::filesystem::current_path(Folder.Path());
                                   Settings->User["OrderingDatabasePath"] = zName;
                                   qm_ordering::StartUp();
                                   qm_ordering::CreateOrderStore(zName);
                                   test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
                                   BackupOrderStore(BackupPath());
                                   return std::string("made");
                                 }).Outcome();
    EXPECT_EQ("made", zOutcome) << zName;
    EXPECT_TRUE(std::filesystem::exists(Folder.File(zName) + "/Orders.mdb")) << zName;
    EXPECT_EQ("a", Backup().Value("select zPurchaseOrderNumber from tblOrder")) << zName;
  }
}

TEST_F(BackupOrderStoreOf, AStoreRefusesTheStoreItselfUnderEveryName) {
  std::filesystem::create_hard_link(Store.Path(), Backups.File("hard link"));
  std::filesystem::create_symlink(Store.Path(), Backups.File("link"));
  std::filesystem::create_directory_symlink(Folder.Path(), Backups.File("folder"));
  const auto before = Store.Everything();
  for (const std::string& zName : {Store.Path(), Folder.Path() + "/./Orders.mdb", Backups.File("hard link"),
                                   Backups.File("link"), Backups.File("folder/Orders.mdb")}) {
    ExpectRefusal(zName, failure::kFileAccess, "it is the order store itself");
  }
  for (const char* zSuffix : {"-wal", "-shm", "-journal"}) {
    ExpectRefusal(Store.Path() + zSuffix, failure::kFileAccess, "keeps its log under that name");
    ExpectRefusal(Backups.File("folder/Orders.mdb") + zSuffix, failure::kFileAccess,
                  "keeps its log under that name");
  }
  EXPECT_EQ(before, Store.Everything());
}

TEST_F(BackupOrderStoreOf, AStoreRefusesANameThatCannotBecomeAFile) {
  ExpectRefusal("", failure::kPathNotFound, "the name given is empty");
  ExpectRefusal(std::string("/tmp/a\0b", 8), failure::kPathNotFound, "zero byte");
  ExpectRefusal(Backups.File("none/backup"), failure::kPathNotFound, "The folder " + Backups.File("none"));
  ExpectRefusal(Backups.Path(), failure::kFileAccess, "it is a folder");
  ExpectRefusal(Backups.Path() + "/", failure::kFileAccess, "it is a folder");
  ASSERT_EQ(0, mkfifo(Backups.File("pipe").c_str(), 0600));
  ExpectRefusal(Backups.File("pipe"), failure::kFileAccess, "not an ordinary file");
  ExpectRefusal("/dev/null", failure::kFileAccess, "not an ordinary file");
  std::filesystem::create_symlink("nothing", Backups.File("link"));
  ExpectRefusal(Backups.File("link"), failure::kPathNotFound, "leads nowhere");
}

TEST_F(BackupOrderStoreOf, AStoreReplacesNoFileOfAnotherKind) {
  const std::string zText = "a letter\n" + std::string(5000, 'x');
  for (const std::string& zContent : {std::string("x"), zText}) {
    test::WriteFile(BackupPath(), zContent);
    ExpectRefusal(BackupPath(), failure::kFileAccess, "a file of another kind, and is not replaced");
    EXPECT_EQ(zContent, test::ReadFile(BackupPath()));
  }
  std::filesystem::remove(BackupPath());
  sqlite3* pOther = nullptr;
  ASSERT_EQ(SQLITE_OK, sqlite3_open(BackupPath().c_str(), &pOther));
  ASSERT_EQ(SQLITE_OK, sqlite3_exec(pOther, "create table t (a)", nullptr, nullptr, nullptr));
  ASSERT_EQ(SQLITE_OK, sqlite3_close(pOther));
  ExpectRefusal(BackupPath(), failure::kFileAccess, "a file of another kind, and is not replaced");
}

TEST_F(BackupOrderStoreOf, AStoreIsNotPutBesideALog) {
  for (const char* zLog : {"backup-wal", "backup-journal"}) {
    test::WriteFile(Backups.File(zLog), "what a program that was killed left");
    ExpectRefusal(BackupPath(), failure::kFileAccess, Backups.File(zLog) + ", the log of a store");
    std::filesystem::remove(Backups.File(zLog));
  }
}

TEST_F(BackupOrderStoreOfFull, AStoreReplacesNoStoreThatAProgramHasOpen) {
  qm_ordering::CreateOrderStore(Backups.Path());
  qm_ordering::ado::Connection other;
  other.Open(test::ConnectionStringOf(Backups.Path()));
  const auto before = test::StoreFile(Backups.File("Orders.mdb")).Everything();
  ExpectRefusal(Backups.File("Orders.mdb"), failure::kStoreUnavailable,
                "has the order store " + Backups.File("Orders.mdb") + " open");
  EXPECT_EQ(before, test::StoreFile(Backups.File("Orders.mdb")).Everything());
}

TEST_F(BackupOrderStoreOf, AStoreHoldsOneStateWhileOthersWrite) {
  MakeLarge();
  std::vector<std::pair<std::int64_t, std::int64_t>> steps;
  BackupOrderStore(BackupPath(), [&](std::int64_t lvDone, std::int64_t lvAll) {
    steps.emplace_back(lvDone, lvAll);
    // Nobody waits for the copy.
    Store.Run("pragma busy_timeout = 0; update tblOrder set zPurchaseOrderNumber = 'PO-" +
              std::to_string(steps.size() + 1) + "' where lOrderID in (1, 1500)");
  });
  ASSERT_LE(2U, steps.size());
  for (std::size_t i = 1; i < steps.size(); ++i) {
    EXPECT_LT(steps[i - 1].first, steps[i].first);
    EXPECT_EQ(steps[0].second, steps[i].second);
  }
  EXPECT_EQ(steps.back().first, steps.back().second);
  EXPECT_EQ((test::Rows{{"PO-1"}, {"NULL"}}),
            Backup().Query("select zPurchaseOrderNumber from tblOrder where lOrderID in (1, 1500)"));
  EXPECT_EQ("PO-" + std::to_string(steps.size() + 1),
            Store.Value("select zPurchaseOrderNumber from tblOrder where lOrderID = 1500"));
}

TEST_F(BackupOrderStoreOf, AStoreHasFittingTotalsWhileAnotherProgramAddsLines) {
  Store.Run("update tblOrder set bIsCurrent = -1");
  test::ChildProcess other([] {
    qm_ordering::CurrentOrder order;
    for (int i = 0;; ++i) {
      auto oItem = std::make_shared<qm_ordering::OrderItem>();
      oItem->ItemNumber("n" + std::to_string(i));
      oItem->Quantity(2);
      oItem->Price(qm_ordering::Currency::Parse("1.25"));
      order.AddItem(oItem);
      if (order.Error().Number != 0) {
        return order.Error().Description;
      }
    }
  });
  std::string zLines = "2";
  for (int i = 0; i < 15; ++i) {
    BackupOrderStore(BackupPath());
    EXPECT_EQ(Backup().Value("select sum(cExtendedPrice) from tblOrderItem"),
              Backup().Value("select cTotalPrice from tblOrder where lOrderID = 1"));
    EXPECT_EQ(Texts{}, qm_ordering::CheckOrderStore());
    zLines = Backup().Value("select count(*) from tblOrderItem");
  }
  // It really wrote.
  EXPECT_LT(2, std::stoi(zLines));
}

TEST_F(BackupOrderStoreOf, AStoreEndsWhereTheProgressThrows) {
  BackupOrderStore(BackupPath());
  const std::string zBefore = test::ReadFile(BackupPath());
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'PO-2'");
  EXPECT_THROW(
      BackupOrderStore(BackupPath(), [](std::int64_t, std::int64_t) { throw std::out_of_range("no"); }),
      std::out_of_range);
  EXPECT_EQ(Texts{"backup"}, NamesIn(Backups.Path()));
  EXPECT_TRUE(zBefore == test::ReadFile(BackupPath()));
  BackupOrderStore(BackupPath());
  EXPECT_EQ("PO-2", Backup().Value("select zPurchaseOrderNumber from tblOrder"));
}

// Every change of lines passes through such a state, and an order beyond the range of money stays in it.
TEST_F(BackupOrderStoreOf, AStoreWithTotalsThatDoNotFitIsMadeAndSaysThem) {
  Store.Run("update tblOrder set cTotalPrice = 0; insert into tblOrder (cTotalPrice) values (7)");
  EXPECT_EQ((Texts{"order 1: its total is 0, its lines add up to 3.5",
                   "order 2: its total is 0.0007, its lines add up to 0"}),
            BackupOrderStore(BackupPath()));
  EXPECT_EQ(Store.Everything(), Backup().Everything());
}

TEST_F(BackupOrderStoreOf, AStoreReplacesNoOtherStore) {
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  qm_ordering::CreateOrderStore(other.File("kept"));
  const std::string zKept = other.File("kept/Orders.mdb.replaced-20030704-150405");
  std::filesystem::rename(other.File("kept/Orders.mdb"), zKept);
  for (const std::string& zStore : {other.File("Orders.mdb"), zKept}) {
    const std::string zBefore = test::ReadFile(zStore);
    ExpectRefusal(zStore, failure::kFileAccess, "in use or was kept, not a backup");
    EXPECT_TRUE(zBefore == test::ReadFile(zStore));
  }
}

TEST_F(BackupOrderStoreOf, AStoreRemovesNoOtherBackup) {
  const std::string zOther = BackupPath() + ".new.monday";
  BackupOrderStore(zOther);
  BackupOrderStore(BackupPath());
  EXPECT_TRUE(std::filesystem::exists(zOther));
  ExpectRefusal(BackupPath() + ".unfinished-qm_ordering.abcdef", failure::kFileAccess,
                "removed as left behind");
}

TEST_F(BackupOrderStoreOf, ADamagedStoreIsRefusedWithTheRemedy) {
  MakeLarge();
  BackupOrderStore(BackupPath());
  const std::string zBefore = test::ReadFile(BackupPath());
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::string zBytes = test::ReadFile(Store.Path());
  std::fill_n(zBytes.begin() + 4096 * 100, 4096 * 3, '\xEE');
  test::WriteFile(Store.Path(), zBytes);
  ExpectRefusal(BackupPath(), failure::kStoreUnavailable,
                "Restore an earlier backup with `qm-ordering store restore`");
  EXPECT_TRUE(zBefore == test::ReadFile(BackupPath()));
}

TEST_F(BackupOrderStoreOf, AStoreWithAnotherSchemaIsRefused) {
  Store.Run("create table other (a)");
  ExpectRefusal(BackupPath(), failure::kStoreUnavailable, " is not whole: the schema: ");
}

TEST_F(BackupOrderStoreOf, AMissingStoreIsRefused) {
  std::filesystem::remove(Store.Path());
  ExpectRefusal(BackupPath(), failure::kStoreUnavailable,
                Store.Path() + " cannot be used: there is no such file");
}

TEST_F(BackupOrderStoreOfFull, AStoreOnAFullDiskLeavesTheEarlierBackup) {
  BackupOrderStore(BackupPath());
  const std::string zBefore = test::ReadFile(BackupPath());
  MakeLarge();
  for (const rlim_t lBytes : {rlim_t{100'000}, rlim_t{1'000'000}, rlim_t{5'000'000}}) {
    qm_ordering::ado::embedded::CloseIdleSessions();
    const std::string zOutcome = test::ChildProcess([&] {
                                   signal(SIGXFSZ, SIG_IGN);
                                   const rlimit limit{lBytes, lBytes};
                                   setrlimit(RLIMIT_FSIZE, &limit);
                                   BackupOrderStore(BackupPath());
                                   return std::string("made");
                                 }).Outcome();
    EXPECT_TRUE(zOutcome.starts_with(std::to_string(failure::kStoreUnavailable) + " ")) << zOutcome;
    EXPECT_TRUE(zOutcome.ends_with("The backup " + BackupPath() + " was not made.")) << zOutcome;
    EXPECT_EQ(Texts{"backup"}, NamesIn(Backups.Path()));
    EXPECT_TRUE(zBefore == test::ReadFile(BackupPath()));
  }
}

TEST_F(BackupOrderStoreOf, AStoreThatIsKilledLeavesTheEarlierBackup) {
  BackupOrderStore(BackupPath());
  const std::string zBefore = test::ReadFile(BackupPath());
  MakeLarge();
  qm_ordering::ado::embedded::CloseIdleSessions();
  EXPECT_TRUE(test::ChildProcess([&] {
                BackupOrderStore(BackupPath(), [](std::int64_t, std::int64_t) { raise(SIGKILL); });
                return std::string("made");
              })
                  .Outcome()
                  .starts_with("the process died"));
  EXPECT_TRUE(zBefore == test::ReadFile(BackupPath()));
  // What it left does not keep the next one from being made.
  BackupOrderStore(BackupPath());
  EXPECT_EQ("1501", Backup().Value("select count(*) from tblOrder"));
}

TEST_F(BackupOrderStoreOf, AStoreIntoAReadOnlyFolderRaises) {
  test::GiveToUnprivileged(Backups.Path());
  std::filesystem::permissions(Backups.Path(), std::filesystem::perms(0500));
  const std::string zOutcome = BackupUnprivileged();
  std::filesystem::permissions(Backups.Path(), std::filesystem::perms(0700));
  EXPECT_EQ("75 The backup " + BackupPath() + " was not made: no file can be made in the folder " +
                Backups.Path() + " (Permission denied).",
            zOutcome);
  EXPECT_EQ("made", BackupUnprivileged());
}

TEST_F(BackupOrderStoreOf, AStoreReplacesNoBackupThatIsReadOnly) {
  test::GiveToUnprivileged(Backups.Path());
  ASSERT_EQ("made", BackupUnprivileged());
  std::filesystem::permissions(BackupPath(), std::filesystem::perms(0400));
  const std::string zOutcome = BackupUnprivileged();
  EXPECT_TRUE(zOutcome.starts_with(std::to_string(failure::kStoreUnavailable))) << zOutcome;
  EXPECT_NE(std::string::npos, zOutcome.find("read-only for this user")) << zOutcome;
}
