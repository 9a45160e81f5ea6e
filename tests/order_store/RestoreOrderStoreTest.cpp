#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/ado/embedded/ExclusiveUse.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/StoreFixture.h"

namespace {

// What happens to the renaming calls of this process: the one of that number, from 1, kills the process or
// fails. 0 for none.
struct RenameFault {
  int At = 0;
  bool Kills = false;
  int Calls = 0;
};
RenameFault g_oRenameFault;

}  // namespace

// In the place of the system's own, which it calls.
extern "C" int renameat2(int lvOldFolder, const char* zvOldName, int lvNewFolder, const char* zvNewName,
                         unsigned lvFlags) noexcept {
  if (++g_oRenameFault.Calls == g_oRenameFault.At) {
    if (g_oRenameFault.Kills) {
      kill(getpid(), SIGKILL);
    }
    errno = EACCES;
    return -1;
  }
  return static_cast<int>(syscall(SYS_renameat2, lvOldFolder, zvOldName, lvNewFolder, zvNewName, lvFlags));
}

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::BackupOrderStore;
using qm_ordering::Failure;
using qm_ordering::RestoreOrderStore;
using test::FailureOf;
using Texts = std::vector<std::string>;

// A store with the order "now", and in another folder a backup with the order "then".
class RestoreOrderStoreFrom : public test::StoreFixture {
 protected:
  RestoreOrderStoreFrom() {
    Store.Run(
        "insert into tblOrder (zPurchaseOrderNumber, cTotalPrice) values ('then', 10000);"
        "insert into tblOrderItem (lOrderID, zItemNumber, cExtendedPrice) values (1, 'a', 10000)");
    BackupOrderStore(BackupPath());
    test::Run("update tblOrder set zPurchaseOrderNumber = 'now'");
    qm_ordering::ado::embedded::CloseIdleSessions();
  }
  ~RestoreOrderStoreFrom() override { g_oRenameFault = {}; }

  std::string BackupPath() const { return Backups.File("backup"); }
  std::string KeptPath() const { return Store.Path() + ".replaced-20030704-150405"; }

  static std::string OrderIn(const std::string& zvPath) {
    return test::StoreFile(zvPath).Value("select zPurchaseOrderNumber from tblOrder");
  }

  static Texts NamesIn(const std::string& zvFolder) {
    Texts zNames;
    for (const auto& oEntry : std::filesystem::directory_iterator(zvFolder)) {
      zNames.push_back(oEntry.path().filename().string());
    }
    std::ranges::sort(zNames);
    return zNames;
  }

  void ExpectRestored() const {
    EXPECT_EQ("then", test::Value("select zPurchaseOrderNumber from tblOrder"));
    EXPECT_EQ(Texts{}, qm_ordering::CheckOrderStore());
  }

  // The call fails with that number and those words, and the store's folder is as it was.
  void ExpectRefusal(const std::string& zvFile, std::int32_t lvNumber, const std::string& zvWords) const {
    const Texts zBefore = NamesIn(Folder.Path());
    const Failure refused = FailureOf([&] { RestoreOrderStore(zvFile); });
    EXPECT_EQ(lvNumber, refused.Number()) << refused.Description();
    EXPECT_NE(std::string::npos, refused.Description().find(zvWords)) << refused.Description();
    EXPECT_EQ(zBefore, NamesIn(Folder.Path()));
    if (std::filesystem::is_regular_file(Store.Path())) {
      EXPECT_EQ("now", OrderIn(Store.Path()));
    }
  }

  // Ends a process with the store open, so that its last order stays in the log alone.
  void LeaveLogWith(const std::string& zvOrder) const {
    test::ChildProcess([&] {
      test::Run("update tblOrder set zPurchaseOrderNumber = '" + zvOrder + "'");
      _exit(0);
      return std::string();
    }).Outcome();
    ASSERT_LT(0U, std::filesystem::file_size(Store.Path() + "-wal"));
  }

  void DamageStore() const {
    std::string zBytes = test::ReadFile(Store.Path());
    std::fill_n(zBytes.begin() + 4096, 4096, '\xEE');
    std::fill_n(zBytes.begin() + 100, 3996, '\xEE');
    test::WriteFile(Store.Path(), zBytes);
  }

  std::string RestoreUnprivileged() const {
    test::GiveToUnprivileged(Folder.Path());
    test::GiveToUnprivileged(Store.Path());
    test::GiveToUnprivileged(Backups.Path());
    test::GiveToUnprivileged(BackupPath());
    return test::ChildProcess([&] {
             test::DropPrivileges();
             return "kept " + RestoreOrderStore(BackupPath());
           })
        .Outcome();
  }

  test::TempFolder Backups;
};

// Tests that wait as long as a program waits for another.
class RestoreOrderStoreFromFull : public RestoreOrderStoreFrom {};

}  // namespace

TEST_F(RestoreOrderStoreFrom, ABackupReplacesTheStoreAndKeepsIt) {
  EXPECT_EQ(KeptPath(), RestoreOrderStore(BackupPath()));
  EXPECT_EQ((Texts{"Orders.mdb", "Orders.mdb.replaced-20030704-150405"}), NamesIn(Folder.Path()));
  EXPECT_EQ("then", OrderIn(Store.Path()));
  EXPECT_EQ("now", OrderIn(KeptPath()));
  EXPECT_EQ(Texts{}, qm_ordering::CheckOrderStore());
  test::Run("update tblOrder set zPurchaseOrderNumber = 'later'");
  EXPECT_EQ("later", test::Value("select zPurchaseOrderNumber from tblOrder"));
  EXPECT_EQ("now", OrderIn(KeptPath()));
}

TEST_F(RestoreOrderStoreFrom, ABackupLeavesIt) {
  const std::string zBefore = test::ReadFile(BackupPath());
  RestoreOrderStore(BackupPath());
  EXPECT_TRUE(zBefore == test::ReadFile(BackupPath()));
  EXPECT_EQ(Texts{"backup"}, NamesIn(Backups.Path()));
}

TEST_F(RestoreOrderStoreFrom, ABackupEndsTheSessionsThatRestOnTheThread) {
  test::Run("update tblOrder set zDINotes = 'a'");
  RestoreOrderStore(BackupPath());
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupKeepsEveryReplacedStore) {
  std::filesystem::create_directory(KeptPath() + "-2");
  test::WriteFile(KeptPath() + "-3-wal", "a log");
  EXPECT_EQ(KeptPath(), RestoreOrderStore(BackupPath()));
  EXPECT_EQ(KeptPath() + "-4", RestoreOrderStore(BackupPath()));
  EXPECT_EQ("now", OrderIn(KeptPath()));
  EXPECT_EQ("then", OrderIn(KeptPath() + "-4"));
  EXPECT_EQ("then", OrderIn(Store.Path()));
}

TEST_F(RestoreOrderStoreFrom, ABackupLetsTheUserAloneReadTheStore) {
  std::filesystem::permissions(BackupPath(), std::filesystem::perms(0644));
  EXPECT_EQ(KeptPath(), test::ChildProcess([&] {
                          umask(0);
                          return RestoreOrderStore(BackupPath());
                        }).Outcome());
  struct stat status {};
  ASSERT_EQ(0, stat(Store.Path().c_str(), &status));
  EXPECT_EQ(0600U, status.st_mode & 0777U);
}

TEST_F(RestoreOrderStoreFrom, ABackupShowsItsProgress) {
  std::vector<std::int64_t> steps;
  RestoreOrderStore(BackupPath(), [&](std::int64_t lvDone, std::int64_t lvAll) {
    EXPECT_LE(lvDone, lvAll);
    steps.push_back(lvAll - lvDone);
  });
  ASSERT_FALSE(steps.empty());
  EXPECT_EQ(0, steps.back());
}

TEST_F(RestoreOrderStoreFrom, ABackupWithARelativeNameFindsItInTheCurrentFolder) {
  std::filesystem::rename(BackupPath(), Backups.File("file:b?mode=memory"));
  EXPECT_EQ(KeptPath(), test::ChildProcess([&] {
                          std::filesystem::current_path(Backups.Path());
                          return RestoreOrderStore("file:b?mode=memory");
                        }).Outcome());
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ACopyOfAStoreReplacesTheStore) {
  std::filesystem::copy_file(Store.Path(), Backups.File("copy"));
  const std::string zBefore = test::ReadFile(Backups.File("copy"));
  Store.Run("update tblOrder set zPurchaseOrderNumber = 'later'");
  RestoreOrderStore(Backups.File("copy"));
  EXPECT_EQ("now", OrderIn(Store.Path()));
  EXPECT_TRUE(zBefore == test::ReadFile(Backups.File("copy")));
  EXPECT_EQ((Texts{"backup", "copy"}), NamesIn(Backups.Path()));
}

TEST_F(RestoreOrderStoreFrom, AStoreWithALogBesideItTakesWhatIsInTheLog) {
  LeaveLogWith("logged");
  for (const char* zSuffix : {"", "-wal"}) {
    std::filesystem::copy_file(Store.Path() + zSuffix, Backups.File("copy") + zSuffix);
  }
  const std::string zBefore = test::ReadFile(Backups.File("copy"));
  const std::string zLog = test::ReadFile(Backups.File("copy-wal"));
  test::Run("update tblOrder set zPurchaseOrderNumber = 'later'");
  RestoreOrderStore(Backups.File("copy"));
  EXPECT_EQ("logged", OrderIn(Store.Path()));
  EXPECT_TRUE(zBefore == test::ReadFile(Backups.File("copy")));
  EXPECT_TRUE(zLog == test::ReadFile(Backups.File("copy-wal")));
}

TEST_F(RestoreOrderStoreFrom, AStoreThatIsInUseTakesOneState) {
  qm_ordering::CreateOrderStore(Backups.Path());
  qm_ordering::ado::Connection other;
  other.Open(test::ConnectionStringOf(Backups.Path()));
  other.Execute("insert into tblOrder (zPurchaseOrderNumber) values ('other')");
  const test::StoreFile live(Backups.File("Orders.mdb"));
  live.Run(
      "with recursive n(i) as (select 1 union all select i + 1 from n where i < 1500) "
      "insert into tblOrder (zDINotes) select printf('%.*c', 3500, 'n') from n");
  std::vector<std::int64_t> steps;
  RestoreOrderStore(live.Path(), [&](std::int64_t lvDone, std::int64_t) {
    steps.push_back(lvDone);
    live.Run("update tblOrder set zPurchaseOrderNumber = 'later'");
  });
  EXPECT_EQ("other", Store.Value("select group_concat(zPurchaseOrderNumber) from tblOrder"));
  EXPECT_LE(2U, steps.size());
  // It does not begin anew after a write.
  EXPECT_TRUE(std::ranges::is_sorted(steps));
}

TEST_F(RestoreOrderStoreFrom, ABackupKeepsWhatWasInALogOnly) {
  LeaveLogWith("logged");
  EXPECT_EQ(KeptPath(), RestoreOrderStore(BackupPath()));
  EXPECT_EQ((Texts{"Orders.mdb", "Orders.mdb.replaced-20030704-150405"}), NamesIn(Folder.Path()));
  EXPECT_EQ("logged", OrderIn(KeptPath()));
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupReplacesADamagedStoreAndKeepsItWithItsLog) {
  LeaveLogWith("logged");
  DamageStore();
  const std::string zStore = test::ReadFile(Store.Path());
  // Such as the engine does not read, and so does not bring in either.
  test::WriteFile(Store.Path() + "-wal", "the log");
  EXPECT_EQ(KeptPath(), RestoreOrderStore(BackupPath()));
  EXPECT_TRUE(zStore == test::ReadFile(KeptPath()));
  EXPECT_FALSE(std::filesystem::exists(Store.Path() + "-wal"));
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupReplacesWhateverFileIsInTheStoresPlace) {
  const std::string zBytes = test::ReadFile(Store.Path());
  for (const std::string& zContent :
       {std::string(), std::string("x"), std::string(10'000, 't'), zBytes.substr(0, 50),
        zBytes.substr(0, 5000), std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(5000, 'j')}) {
    test::WriteFile(Store.Path(), zContent);
    test::WriteFile(Store.Path() + "-wal", "its log");
    test::WriteFile(Store.Path() + "-journal", "its other log");
    const std::string zKept = RestoreOrderStore(BackupPath());
    EXPECT_TRUE(zContent == test::ReadFile(zKept)) << zContent.size();
    // The engine itself throws away what is no log of a file of its own.
    if (zContent.size() != 5000) {
      EXPECT_EQ("its log", test::ReadFile(zKept + "-wal")) << zContent.size();
      EXPECT_EQ("its other log", test::ReadFile(zKept + "-journal")) << zContent.size();
    }
    EXPECT_FALSE(std::filesystem::exists(Store.Path() + "-wal"));
    EXPECT_FALSE(std::filesystem::exists(Store.Path() + "-journal"));
    ExpectRestored();
    qm_ordering::ado::embedded::CloseIdleSessions();
  }
}

TEST_F(RestoreOrderStoreFrom, ABackupMakesAMissingStore) {
  std::filesystem::remove(Store.Path());
  EXPECT_EQ("", RestoreOrderStore(BackupPath()));
  EXPECT_EQ(Texts{"Orders.mdb"}, NamesIn(Folder.Path()));
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupKeepsTheLogOfAMissingStore) {
  LeaveLogWith("logged");
  std::filesystem::rename(Store.Path(), Backups.File("moved"));
  const std::string zLog = test::ReadFile(Store.Path() + "-wal");
  EXPECT_EQ(KeptPath() + "-wal", RestoreOrderStore(BackupPath()));
  EXPECT_TRUE(zLog == test::ReadFile(KeptPath() + "-wal"));
  EXPECT_EQ("then", OrderIn(Store.Path()));
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupReplacesTheFileThatASymbolicLinkLeadsTo) {
  std::filesystem::create_directory(Folder.File("real"));
  std::filesystem::rename(Store.Path(), Folder.File("real/store"));
  std::filesystem::create_symlink("real/store", Store.Path());
  EXPECT_EQ(Folder.File("real/store.replaced-20030704-150405"), RestoreOrderStore(BackupPath()));
  EXPECT_EQ(Texts{"Orders.mdb"}, [&] {
    Texts zNames = NamesIn(Folder.Path());
    std::erase(zNames, "real");
    return zNames;
  }());
  EXPECT_TRUE(std::filesystem::is_symlink(Store.Path()));
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, AnythingButAWholeBackupIsRefused) {
  const std::string zBytes = test::ReadFile(BackupPath());
  ExpectRefusal("", failure::kPathNotFound, "the name given is empty");
  ExpectRefusal(Backups.File("none"), failure::kFileAccess,
                "The backup " + Backups.File("none") + " was not restored: there is no such file.");
  ExpectRefusal(Backups.File("none/backup"), failure::kFileAccess, "there is no folder");
  ExpectRefusal(Backups.Path(), failure::kFileAccess, "it is a folder");
  ASSERT_EQ(0, mkfifo(Backups.File("pipe").c_str(), 0600));
  ExpectRefusal(Backups.File("pipe"), failure::kFileAccess, "it is not an ordinary file");
  const auto bPut = [&](const std::string& zvContent) {
    test::WriteFile(BackupPath(), zvContent);
    return BackupPath();
  };
  ExpectRefusal(bPut(""), failure::kFileAccess, "it is empty");
  ExpectRefusal(bPut("x"), failure::kFileAccess, "it is a file of another kind");
  ExpectRefusal(bPut(std::string(10'000, 't')), failure::kFileAccess, "it is a file of another kind");
  ExpectRefusal(bPut(zBytes.substr(0, 5000)), failure::kFileAccess, "it is truncated");
  std::string zDamaged = zBytes;
  std::fill_n(zDamaged.begin() + 4096 * 2, 4096, '\xEE');
  ExpectRefusal(bPut(zDamaged), failure::kFileAccess, "since it is not whole: the file: ");
  std::fill_n(zDamaged.begin() + 100, 3996, '\xEE');
  ExpectRefusal(bPut(zDamaged), failure::kStoreUnavailable, "is as it was");
  EXPECT_TRUE(zDamaged == test::ReadFile(BackupPath()));
}

TEST_F(RestoreOrderStoreFrom, ADamagedBackupIsRefusedWithItsFindings) {
  test::StoreFile(BackupPath()).Run("create table other (a)");
  ExpectRefusal(BackupPath(), failure::kFileAccess,
                "The backup " + BackupPath() + " was not restored, since it is not whole: the schema: ");
}

TEST_F(RestoreOrderStoreFrom, ABackupWithATotalThatDoesNotFitReplacesTheStore) {
  test::StoreFile(BackupPath()).Run("update tblOrder set cTotalPrice = 1");
  RestoreOrderStore(BackupPath());
  EXPECT_EQ(1U, qm_ordering::CheckOrderStore().size());
  EXPECT_EQ(1U, qm_ordering::RepairOrderStore().size());
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupInTheStoresFolderIsNotTakenForALeftover) {
  const std::string zBackup = Store.Path() + ".new.backup";
  std::filesystem::rename(BackupPath(), zBackup);
  RestoreOrderStore(zBackup);
  ExpectRestored();
  EXPECT_TRUE(std::filesystem::exists(zBackup));
}

TEST_F(RestoreOrderStoreFrom, ABackupTakesOverOwnerAndPermissionsOfTheStore) {
  test::GiveToUnprivileged(Store.Path());
  std::filesystem::permissions(Store.Path(), std::filesystem::perms(0640));
  struct stat before {};
  struct stat after {};
  ASSERT_EQ(0, stat(Store.Path().c_str(), &before));
  RestoreOrderStore(BackupPath());
  ASSERT_EQ(0, stat(Store.Path().c_str(), &after));
  EXPECT_EQ(before.st_uid, after.st_uid);
  EXPECT_EQ(before.st_mode, after.st_mode);
}

// A program that was killed between the two renamings of a damaged store with a log leaves no store.
TEST_F(RestoreOrderStoreFrom, AMissingStoreIsToldOfTheKeptOne) {
  RestoreOrderStore(BackupPath());
  qm_ordering::ado::embedded::CloseIdleSessions();
  std::filesystem::remove(Store.Path());
  const Failure refused = FailureOf([] { test::Value("select count(*) from tblOrder"); });
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
  for (const std::string& zWords : {KeptPath(), std::string("qm-ordering store restore")}) {
    EXPECT_NE(std::string::npos, refused.Description().find(zWords)) << refused.Description();
  }
  RestoreOrderStore(KeptPath());
  EXPECT_EQ("now", test::Value("select zPurchaseOrderNumber from tblOrder"));
}

TEST_F(RestoreOrderStoreFrom, ABackupOfANewerVersionIsRefused) {
  test::StoreFile(BackupPath()).Run("pragma user_version = 99");
  ExpectRefusal(BackupPath(), failure::kFileAccess, "newer version of this library (schema 99");
  // Also while no more than the log says so.
  test::StoreFile(BackupPath()).Run("pragma user_version = 1; pragma journal_mode = wal");
  test::ChildProcess([&] {
    sqlite3* pDatabase = nullptr;
    sqlite3_open(BackupPath().c_str(), &pDatabase);
    sqlite3_exec(pDatabase, "pragma user_version = 99", nullptr, nullptr, nullptr);
    _exit(0);
    return std::string();
  }).Outcome();
  ASSERT_LT(0U, std::filesystem::file_size(BackupPath() + "-wal"));
  ExpectRefusal(BackupPath(), failure::kStoreUnavailable, "newer version of this library (schema 99");
}

TEST_F(RestoreOrderStoreFrom, TheStoreItselfIsRefusedUnderEveryName) {
  std::filesystem::create_hard_link(Store.Path(), Backups.File("hard link"));
  std::filesystem::create_symlink(Store.Path(), Backups.File("link"));
  for (const std::string& zName :
       {Store.Path(), Folder.Path() + "/./Orders.mdb", Backups.File("hard link"), Backups.File("link")}) {
    ExpectRefusal(zName, failure::kFileAccess, "it is the order store itself");
  }
}

TEST_F(RestoreOrderStoreFrom, ABackupReplacesNoFolder) {
  std::filesystem::remove(Store.Path());
  std::filesystem::create_directory(Store.Path());
  ExpectRefusal(BackupPath(), failure::kFileAccess, "is a folder");
  std::filesystem::remove(Store.Path());
  ASSERT_EQ(0, mkfifo(Store.Path().c_str(), 0600));
  ExpectRefusal(BackupPath(), failure::kFileAccess, "something else that is no file");
}

TEST_F(RestoreOrderStoreFrom, ABackupIntoAMissingFolderIsRefused) {
  std::filesystem::remove_all(Folder.Path());
  const Failure refused = FailureOf([&] { RestoreOrderStore(BackupPath()); });
  EXPECT_EQ(failure::kPathNotFound, refused.Number());
  EXPECT_NE(std::string::npos, refused.Description().find("The folder " + Folder.Path()));
}

TEST_F(RestoreOrderStoreFromFull, ABackupIsRefusedWhileAnotherProgramHasTheStoreOpen) {
  {
    int lEnds[2] = {};
    ASSERT_EQ(0, pipe(lEnds));
    test::ChildProcess other([&] {
      // It does nothing now, but its session rests.
      test::Run("update tblOrder set zDINotes = 'other'");
      const bool bTold = write(lEnds[1], "x", 1) == 1;
      pause();
      return std::string(bTold ? "told" : "");
    });
    char cNothing = 0;
    ASSERT_EQ(1, read(lEnds[0], &cNothing, 1));
    close(lEnds[0]);
    close(lEnds[1]);
    ExpectRefusal(BackupPath(), failure::kStoreUnavailable,
                  "has the order store " + Store.Path() + " open; end it and try again");
  }
  RestoreOrderStore(BackupPath());
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFromFull, ABackupIsRefusedWhileAnObjectOfThisProgramHasTheStoreOpen) {
  test::OpenConnection connection;
  connection.Execute("update tblOrder set zDINotes = 'open'");
  ExpectRefusal(BackupPath(), failure::kStoreUnavailable, "an object of this one");
  EXPECT_EQ("open", connection.Execute("select zDINotes from tblOrder")->Fields(0).Value().ToString());
  connection.Close();
  RestoreOrderStore(BackupPath());
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupWaitsForAProgramThatIsAboutToEnd) {
  test::ChildProcess other([&] {
    const test::OpenConnection connection;
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    return std::string();
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  RestoreOrderStore(BackupPath());
  ExpectRestored();
}

// A program that waits for the store while another is put in its place must not write into the log of the new
// one what belongs to the old one.
TEST_F(RestoreOrderStoreFrom, ABackupIsNotMixedWithAStoreThatIsBeingOpened) {
  const auto lDescriptors = [&] {
    const std::filesystem::directory_iterator all("/proc/self/fd");
    return std::count_if(begin(all), end(all), [&](const auto& oEntry) {
      std::error_code ignored;
      return std::filesystem::read_symlink(oEntry.path(), ignored) == Store.Path();
    });
  };
  Failure refused(0, "");
  std::thread other;
  const std::string zConnectionString = qm_ordering::ConnectionString();
  {
    const qm_ordering::ado::embedded::ExclusiveUse held(Store.Path());
    other = std::thread([&] {
      refused = FailureOf(
          [&] { test::RunOn(zConnectionString, "update tblOrder set zPurchaseOrderNumber = 'mixed'"); });
    });
    while (lDescriptors() < 2) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    // Long enough that it waits for the lock; otherwise it finds the new store, and there is nothing to see.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::filesystem::rename(Store.Path(), KeptPath());
    std::filesystem::copy_file(BackupPath(), Store.Path());
  }
  other.join();
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number()) << refused.Description();
  EXPECT_NE(std::string::npos, refused.Description().find("was replaced while it was being opened"));
  EXPECT_EQ("now", OrderIn(KeptPath()));
  ExpectRestored();
}

TEST_F(RestoreOrderStoreFrom, ABackupThatIsKilledLeavesTheStore) {
  EXPECT_TRUE(test::ChildProcess([&] {
                return RestoreOrderStore(BackupPath(), [](std::int64_t, std::int64_t) { raise(SIGKILL); });
              })
                  .Outcome()
                  .starts_with("the process died"));
  EXPECT_EQ("now", OrderIn(Store.Path()));
  RestoreOrderStore(BackupPath());
  ExpectRestored();
}

// The store, its log, and the new store: three files get other names.
TEST_F(RestoreOrderStoreFrom, ABackupThatIsKilledBetweenTwoStepsLosesAndMixesNothing) {
  for (const int lAt : {1, 2, 3}) {
    std::filesystem::remove_all(Store.Path());
    test::WriteFile(Store.Path(), "the old store");
    test::WriteFile(Store.Path() + "-wal", "its log");
    EXPECT_TRUE(test::ChildProcess([&] {
                  g_oRenameFault = {lAt, true, 0};
                  return RestoreOrderStore(BackupPath());
                })
                    .Outcome()
                    .starts_with("the process died"));
    Texts zContents;
    for (const std::string& zName : NamesIn(Folder.Path())) {
      if (!zName.starts_with("Orders.mdb.unfinished-qm_ordering.")) {
        zContents.push_back(zName + "=" + test::ReadFile(Folder.File(zName)));
      }
    }
    const std::string zKept = "Orders.mdb.replaced-20030704-150405";
    EXPECT_EQ((lAt == 1   ? Texts{"Orders.mdb-wal=its log", "Orders.mdb=the old store"}
               : lAt == 2 ? Texts{"Orders.mdb-wal=its log", zKept + "=the old store"}
                          : Texts{zKept + "-wal=its log", zKept + "=the old store"}),
              [&] {
                std::ranges::sort(zContents);
                return zContents;
              }());
    RestoreOrderStore(BackupPath());
    ExpectRestored();
    EXPECT_FALSE(std::filesystem::exists(Folder.File("Orders.mdb-journal")));
    qm_ordering::ado::embedded::CloseIdleSessions();
    for (const std::string& zName : NamesIn(Folder.Path())) {
      std::filesystem::remove(Folder.File(zName));
    }
  }
}

TEST_F(RestoreOrderStoreFrom, ABackupThatFailsAtAnyStepLeavesAllAsItWas) {
  test::WriteFile(Store.Path(), "the old store");
  test::WriteFile(Store.Path() + "-wal", "its log");
  for (const int lAt : {1, 2, 3}) {
    g_oRenameFault = {lAt, false, 0};
    const Failure refused = FailureOf([&] { RestoreOrderStore(BackupPath()); });
    EXPECT_EQ(failure::kFileAccess, refused.Number());
    EXPECT_NE(std::string::npos, refused.Description().find("Permission denied")) << refused.Description();
    EXPECT_EQ((Texts{"Orders.mdb", "Orders.mdb-wal"}), NamesIn(Folder.Path()));
    EXPECT_EQ("the old store", test::ReadFile(Store.Path()));
    EXPECT_EQ("its log", test::ReadFile(Store.Path() + "-wal"));
  }
}

TEST_F(RestoreOrderStoreFrom, ABackupOnAFullDiskLeavesTheStore) {
  const std::string zOutcome = test::ChildProcess([&] {
                                 signal(SIGXFSZ, SIG_IGN);
                                 const rlimit limit{20'000, 20'000};
                                 setrlimit(RLIMIT_FSIZE, &limit);
                                 return RestoreOrderStore(BackupPath());
                               }).Outcome();
  EXPECT_TRUE(zOutcome.starts_with(std::to_string(failure::kStoreUnavailable) + " ")) << zOutcome;
  EXPECT_TRUE(zOutcome.ends_with(" The order store " + Store.Path() + " is as it was.")) << zOutcome;
  EXPECT_EQ(Texts{"Orders.mdb"}, NamesIn(Folder.Path()));
  EXPECT_EQ("now", OrderIn(Store.Path()));
}

TEST_F(RestoreOrderStoreFrom, ABackupByAUserWithoutPermissionLeavesTheStore) {
  std::filesystem::permissions(Store.Path(), std::filesystem::perms(0400));
  std::string zOutcome = RestoreUnprivileged();
  EXPECT_NE(std::string::npos, zOutcome.find("read-only for this user")) << zOutcome;
  std::filesystem::permissions(Store.Path(), std::filesystem::perms(0600));
  std::filesystem::permissions(Folder.Path(), std::filesystem::perms(0500));
  zOutcome = RestoreUnprivileged();
  EXPECT_TRUE(zOutcome.starts_with("75 ")) << zOutcome;
  EXPECT_NE(std::string::npos, zOutcome.find("Permission denied")) << zOutcome;
  std::filesystem::permissions(Folder.Path(), std::filesystem::perms(0700));
  EXPECT_EQ("now", OrderIn(Store.Path()));
  EXPECT_EQ("kept " + KeptPath(), RestoreUnprivileged());
}

TEST_F(RestoreOrderStoreFrom, AStoreWithAChangeLeftHalfWayIsTakenWithoutIt) {
  test::ChildProcess([&] {
    sqlite3* pDatabase = nullptr;
    sqlite3_open(BackupPath().c_str(), &pDatabase);
    qm_ordering::ado::embedded::AddTextCollation(pDatabase, BackupPath());
    sqlite3_exec(pDatabase,
                 "pragma cache_size = 1; pragma cache_spill = 1; begin; update tblOrder set zDINotes = "
                 "printf('%.*c', 500000, 'n')",
                 nullptr, nullptr, nullptr);
    _exit(0);
    return std::string();
  }).Outcome();
  ASSERT_LT(0U, std::filesystem::file_size(BackupPath() + "-journal"));
  RestoreOrderStore(BackupPath());
  ExpectRestored();
  EXPECT_EQ("NULL", test::Value("select zDINotes from tblOrder"));
  EXPECT_EQ(Texts{"backup"}, NamesIn(Backups.Path()));
}

TEST_F(RestoreOrderStoreFrom, AReadOnlyBackupInAReadOnlyFolderWorks) {
  std::filesystem::permissions(BackupPath(), std::filesystem::perms(0400));
  std::filesystem::permissions(Backups.Path(), std::filesystem::perms(0500));
  EXPECT_EQ("kept " + KeptPath(), RestoreUnprivileged());
  std::filesystem::permissions(Backups.Path(), std::filesystem::perms(0700));
}
