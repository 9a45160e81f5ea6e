#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"
#include "tests/order_store/FirstSchema.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/StoreFixture.h"

namespace {

namespace failure = qm_ordering::failure;
namespace engine = qm_ordering::ado::embedded;
using qm_ordering::Failure;
using test::FailureOf;
using Texts = std::vector<std::string>;

// What happens to the step that makes the index of the second schema, and to the commit behind it.
struct StepFault {
  enum { None, StepFails, StepKills, CommitFails } Kind = None;
};
StepFault g_oStepFault;

int RefuseCommit(void*) {
  return 1;
}

int WatchStep(void* pDatabase, int lvAction, const char* zvName, const char*, const char*, const char*) {
  if (lvAction != SQLITE_CREATE_INDEX || std::string_view(zvName) != "idxOrderItemTotal") {
    return SQLITE_OK;
  }
  if (g_oStepFault.Kind == StepFault::StepKills) {
    kill(getpid(), SIGKILL);
  }
  if (g_oStepFault.Kind == StepFault::CommitFails) {
    sqlite3_commit_hook(static_cast<sqlite3*>(pDatabase), RefuseCommit, nullptr);
  }
  return g_oStepFault.Kind == StepFault::StepFails ? SQLITE_DENY : SQLITE_OK;
}

int AddFault(sqlite3* db, char**, const sqlite3_api_routines*) {
  return sqlite3_set_authorizer(db, WatchStep, db);
}

// In each session that the engine opens from now on, for the length of a scope.
class StepFaultScope {
 public:
  explicit StepFaultScope(decltype(StepFault::Kind) kind) {
    g_oStepFault.Kind = kind;
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(AddFault));
  }
  ~StepFaultScope() {
    sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(AddFault));
    g_oStepFault.Kind = StepFault::None;
  }
  StepFaultScope(const StepFaultScope&) = delete;
  StepFaultScope& operator=(const StepFaultScope&) = delete;
};

// In place of the store one of the first schema, with orders and lists.
class StoreOfTheFirstSchema : public test::StoreFixture {
 protected:
  StoreOfTheFirstSchema() {
    std::filesystem::remove(Store.Path());
    Make(Store.Path());
    Before = Store.Everything();
  }

  static void Make(const std::string& zvPath) {
    sqlite3* pDatabase = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(zvPath.c_str(), &pDatabase));
    const engine::DatabaseHandle db(pDatabase);
    engine::AddTextCollation(pDatabase, zvPath);
    engine::RunScript(
        pDatabase,
        "pragma application_id = 1364021074; pragma user_version = 1;"
        "create table sysFormat (zName TEXT PRIMARY KEY NOT NULL, zValue TEXT NOT NULL) WITHOUT ROWID;\n"
        "insert into sysFormat values ('folding', '" +
            std::string(qm_ordering::text::FoldingVersion()) + "');\n" + std::string(test::kFirstSchema) +
            "pragma journal_mode = wal;"
            "insert into tblOrder (bIsCurrent, zPurchaseOrderNumber, cTotalPrice, zDINotes) values "
            "(0, 'PO-1', 35000, 'line\nline'), (-1, '\xC3\x84-2', 922337203685477580, null);"
            "delete from tblOrder where lOrderID = 2;"
            "insert into tblOrder (bIsCurrent, cTotalPrice) values (-1, 9223372036854775807);"
            "insert into tblOrderItem (lOrderID, zItemNumber, lQuantity, cExtendedPrice, bIsTaxable) values "
            "(1, 'a', 3, 10000, -1), (1, 'B', -2147483648, 25000, 0), (3, 'a', 1, 9223372036854775807, 0);"
            "insert into tblPersonalList (zName) values ('l');"
            "insert into tblPersonalListItem (lListID, zItemNumber) values (1, 'a')",
        zvPath);
  }

  std::string BackupPath() const { return Store.Path() + ".schema1"; }

  Texts Names() const {
    Texts zNames;
    for (const auto& oEntry : std::filesystem::directory_iterator(Folder.Path())) {
      zNames.push_back(oEntry.path().filename().string());
    }
    std::ranges::sort(zNames);
    return zNames;
  }

  static std::string SchemaOf(const test::StoreFile& store) {
    std::string zAll;
    for (const auto& row :
         store.Query("select type || name || coalesce(sql, '') from sqlite_schema order by type, name")) {
      zAll += row.front() + "\n";
    }
    return zAll;
  }

  static void Open() { const test::OpenConnection connection; }

  void ExpectUpdated() const {
    EXPECT_EQ("2", Store.Value("pragma user_version"));
    EXPECT_EQ(Before, Store.Everything());
    EXPECT_EQ(Texts{}, qm_ordering::CheckOrderStore());
    const test::TempFolder other;
    qm_ordering::CreateOrderStore(other.Path());
    EXPECT_EQ(SchemaOf(test::StoreFile(other.File("Orders.mdb"))), SchemaOf(Store));
  }

  void ExpectIsFirst(const std::string& zvPath) const {
    const test::StoreFile store(zvPath);
    EXPECT_EQ("1", store.Value("pragma user_version"));
    EXPECT_EQ(Before, store.Everything());
    EXPECT_EQ("ok", store.Value("pragma integrity_check"));
    EXPECT_EQ("0", store.Value("select count(*) from sqlite_schema where name = 'idxOrderItemTotal'"));
  }

  // Opening fails with those words, and store and folder are as they were.
  void ExpectRefusal(const std::string& zvWords) const {
    const Texts zBefore = Names();
    const auto before = Store.Everything();
    const std::string zSchema = SchemaOf(Store);
    const Failure refused = FailureOf(Open);
    EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
    EXPECT_NE(std::string::npos,
              refused.Description().find("The order store " + Store.Path() +
                                         " is of an older version (schema 1, this library's is 2)"))
        << refused.Description();
    EXPECT_NE(std::string::npos, refused.Description().find(zvWords)) << refused.Description();
    engine::CloseIdleSessions();
    EXPECT_EQ(zBefore, Names());
    EXPECT_EQ(before, Store.Everything());
    EXPECT_EQ(zSchema, SchemaOf(Store));
    EXPECT_EQ("1", Store.Value("pragma user_version"));
  }

  std::string OpenUnprivileged() const {
    return test::ChildProcess([&] {
             test::DropPrivileges();
             Open();
             return std::string("opened");
           })
        .Outcome();
  }

  test::Rows Before;
};

class StoreOfTheFirstSchemaFull : public StoreOfTheFirstSchema {};

}  // namespace

TEST_F(StoreOfTheFirstSchema, IsBroughtUpToDateWhenItIsOpened) {
  Open();
  ExpectUpdated();
  engine::CloseIdleSessions();
  EXPECT_EQ((Texts{"Orders.mdb", "Orders.mdb.schema1"}), Names());
}

TEST_F(StoreOfTheFirstSchema, IsKeptBesideIt) {
  Open();
  ExpectIsFirst(BackupPath());
  EXPECT_EQ("delete", test::StoreFile(BackupPath()).Value("pragma journal_mode"));
  struct stat status {};
  ASSERT_EQ(0, stat(BackupPath().c_str(), &status));
  EXPECT_EQ(0600U, status.st_mode & 0777U);
}

TEST_F(StoreOfTheFirstSchema, IsKeptUnderANameOfItsOwn) {
  test::WriteFile(BackupPath(), "another");
  test::WriteFile(BackupPath() + "-2-wal", "a log");
  Open();
  EXPECT_EQ("another", test::ReadFile(BackupPath()));
  ExpectIsFirst(BackupPath() + "-3");
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, IsBroughtUpToDateOnce) {
  Open();
  engine::CloseIdleSessions();
  Open();
  EXPECT_FALSE(std::filesystem::exists(BackupPath() + "-2"));
}

TEST_F(StoreOfTheFirstSchema, GivesNoNumberTwiceAfterwards) {
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('next')");
  EXPECT_EQ("4", Store.Value("select max(lOrderID) from tblOrder"));
}

TEST_F(StoreOfTheFirstSchema, IsBroughtUpToDateWithWhatIsInItsLog) {
  test::ChildProcess([&] {
    sqlite3* pDatabase = nullptr;
    sqlite3_open(Store.Path().c_str(), &pDatabase);
    engine::AddTextCollation(pDatabase, Store.Path());
    engine::RunScript(pDatabase, "update tblOrder set zDINotes = 'logged'", Store.Path());
    _exit(0);
    return std::string();
  }).Outcome();
  ASSERT_LT(0U, std::filesystem::file_size(Store.Path() + "-wal"));
  Open();
  EXPECT_EQ("2",
            test::StoreFile(BackupPath()).Value("select count(*) from tblOrder where zDINotes = 'logged'"));
  EXPECT_EQ("2", Store.Value("select count(*) from tblOrder where zDINotes = 'logged'"));
}

TEST_F(StoreOfTheFirstSchema, IsKeptBesideTheFileThatASymbolicLinkLeadsTo) {
  std::filesystem::create_directory(Folder.File("real"));
  std::filesystem::rename(Store.Path(), Folder.File("real/store"));
  std::filesystem::create_symlink("real/store", Store.Path());
  Open();
  ExpectUpdated();
  ExpectIsFirst(Folder.File("real/store.schema1"));
}

TEST_F(StoreOfTheFirstSchemaFull, IsBroughtUpToDateByOneOfTheProcessesThatOpenItAtOnce) {
  for (int lRound = 0; lRound < 5; ++lRound) {
    for (const std::string& zName : Names()) {
      std::filesystem::remove(Folder.File(zName));
    }
    Make(Store.Path());
    std::array<int, 2> ends{};
    ASSERT_EQ(0, pipe(ends.data()));
    std::vector<std::unique_ptr<test::ChildProcess>> processes;
    for (int i = 0; i < 3; ++i) {
      processes.push_back(std::make_unique<test::ChildProcess>([&] {
        close(ends[1]);
        char cNothing = 0;
        if (read(ends[0], &cNothing, 1) != 0) {
          return std::string("no start");
        }
        return test::Value("select count(*) from tblOrder");
      }));
    }
    close(ends[0]);
    close(ends[1]);
    for (const auto& oProcess : processes) {
      EXPECT_EQ("2", oProcess->Outcome());
    }
    Texts zNames = Names();
    // The processes ended with the store open.
    std::erase_if(zNames, [](const std::string& zName) { return zName.starts_with("Orders.mdb-"); });
    EXPECT_EQ((Texts{"Orders.mdb", "Orders.mdb.schema1"}), zNames);
    ExpectUpdated();
    ExpectIsFirst(BackupPath());
    engine::CloseIdleSessions();
  }
}

TEST_F(StoreOfTheFirstSchema, WithAWrongTotalIsBroughtUpToDateAndCanBeRepaired) {
  Store.Run("update tblOrder set cTotalPrice = 1 where lOrderID = 1");
  Before = Store.Everything();
  EXPECT_EQ(1U, qm_ordering::RepairOrderStore().size());
  ExpectIsFirst(BackupPath());
  EXPECT_EQ(Texts{}, qm_ordering::CheckOrderStore());
}

TEST_F(StoreOfTheFirstSchema, IsCheckedAndBackedUpAsItIs) {
  const test::TempFolder backups;
  EXPECT_EQ(Texts{}, qm_ordering::CheckOrderStore());
  qm_ordering::BackupOrderStore(backups.File("backup"));
  ExpectIsFirst(Store.Path());
  ExpectIsFirst(backups.File("backup"));
  EXPECT_EQ(Texts{"Orders.mdb"}, Names());
  Open();
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, ThatIsDamagedIsRefused) {
  const std::string zRoot =
      Store.Value("select rootpage from sqlite_schema where name = 'idxOrderItemNumber'");
  std::string zBytes = test::ReadFile(Store.Path());
  std::fill_n(zBytes.begin() + (std::stol(zRoot) - 1) * 4096, 4096, '\xEE');
  test::WriteFile(Store.Path(), zBytes);
  ExpectRefusal("it is unchanged. It is damaged: the file: ");
  ExpectRefusal("Restore a backup with `qm-ordering store restore`");
}

TEST_F(StoreOfTheFirstSchema, WithALineWithoutItsOrderIsRefused) {
  Store.Run("pragma foreign_keys = off; insert into tblOrderItem (lOrderID, zItemNumber) values (77, 'a')");
  ExpectRefusal("belongs to no row of tblOrder");
}

TEST_F(StoreOfTheFirstSchema, WithATableInTheWayIsRefused) {
  Store.Run("create table idxOrderItemTotal (a)");
  ExpectRefusal("It is damaged: the schema: ");
}

TEST_F(StoreOfTheFirstSchema, StaysAsItIsWhenTheStepFails) {
  {
    const StepFaultScope fault(StepFault::StepFails);
    ExpectRefusal("not authorized");
  }
  Open();
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, StaysAsItIsWhenTheCommitFails) {
  {
    const StepFaultScope fault(StepFault::CommitFails);
    ExpectRefusal("it is unchanged");
  }
  Open();
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, StaysAsItIsWhenTheProcessIsKilled) {
  EXPECT_TRUE(test::ChildProcess([&] {
                const StepFaultScope fault(StepFault::StepKills);
                Open();
                return std::string("opened");
              })
                  .Outcome()
                  .starts_with("the process died"));
  ExpectIsFirst(Store.Path());
  Open();
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, StaysAsItIsOnAFullDisk) {
  const auto lSize = static_cast<rlim_t>(std::filesystem::file_size(Store.Path()));
  for (const rlim_t lBytes : {rlim_t{40'000}, lSize - 4096}) {
    const std::string zOutcome = test::ChildProcess([&] {
                                   signal(SIGXFSZ, SIG_IGN);
                                   const rlimit limit{lBytes, lBytes};
                                   setrlimit(RLIMIT_FSIZE, &limit);
                                   Open();
                                   return std::string("opened");
                                 }).Outcome();
    EXPECT_NE(std::string::npos, zOutcome.find("could not be brought up to date; it is unchanged"))
        << zOutcome;
    EXPECT_FALSE(std::filesystem::exists(BackupPath()));
    ExpectIsFirst(Store.Path());
  }
}

TEST_F(StoreOfTheFirstSchema, ThatIsReadOnlyMustBeWritableOnce) {
  test::GiveToUnprivileged(Folder.Path());
  test::GiveToUnprivileged(Store.Path());
  std::filesystem::permissions(Store.Path(), std::filesystem::perms(0400));
  const std::string zOutcome = OpenUnprivileged();
  EXPECT_NE(std::string::npos, zOutcome.find("must be writable once, to be brought up to date")) << zOutcome;
  std::filesystem::permissions(Store.Path(), std::filesystem::perms(0600));
  ExpectIsFirst(Store.Path());
  EXPECT_EQ("opened", OpenUnprivileged());
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, StaysAsItIsWhereNoCopyCanBeMade) {
  test::GiveToUnprivileged(Folder.Path());
  test::GiveToUnprivileged(Store.Path());
  // In a folder that may not be written the engine can work where the log is there already.
  const engine::DatabaseHandle other = engine::OpenEngine(Store.Path(), Store.Path(), SQLITE_OPEN_READWRITE);
  engine::ReadText(other.get(), "select count(*) from sqlite_schema", Store.Path());
  for (const char* zSuffix : {"-wal", "-shm"}) {
    test::GiveToUnprivileged(Store.Path() + zSuffix);
  }
  std::filesystem::permissions(Folder.Path(), std::filesystem::perms(0500));
  const std::string zOutcome = OpenUnprivileged();
  std::filesystem::permissions(Folder.Path(), std::filesystem::perms(0700));
  EXPECT_NE(std::string::npos,
            zOutcome.find("could not be brought up to date; it is unchanged. Its copy " + BackupPath() +
                          " was not made: no file can be made in the folder"))
      << zOutcome;
  ExpectIsFirst(Store.Path());
}

TEST_F(StoreOfTheFirstSchema, IsRestoredFromABackup) {
  test::TempFolder backups;
  std::filesystem::rename(Store.Path(), backups.File("backup"));
  EXPECT_EQ("", qm_ordering::RestoreOrderStore(backups.File("backup")));
  EXPECT_EQ("1", Store.Value("pragma user_version"));
  Open();
  ExpectUpdated();
}

TEST_F(StoreOfTheFirstSchema, CanBePutBackFromItsCopy) {
  Open();
  qm_ordering::RestoreOrderStore(BackupPath());
  ExpectIsFirst(Store.Path());
}
