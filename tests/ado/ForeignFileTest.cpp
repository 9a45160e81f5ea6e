#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/ado/OpenStore.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"

using namespace std::string_view_literals;

namespace {

namespace ado = qm_ordering::ado;
namespace failure = qm_ordering::failure;

// What the store's folder holds, with sizes, times and bytes.
std::string Snapshot(const std::string& zvFolder) {
  std::string zAll;
  for (const auto& oEntry : std::filesystem::directory_iterator(zvFolder)) {
    struct stat status {};
    EXPECT_EQ(0, lstat(oEntry.path().c_str(), &status));
    zAll += oEntry.path().filename().string() + " " + std::to_string(status.st_mode) + " " +
            std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec) + " ";
    if (S_ISREG(status.st_mode)) {
      zAll += test::ReadFile(oEntry.path().string());
    }
    zAll += "\n";
  }
  return zAll;
}

class ForeignFile : public test::StoreFixture {
 protected:
  // A folder without a store, to put something else there.
  ForeignFile() { std::filesystem::remove(Store.Path()); }

  // Opening and every use fail with a message that names the file and holds the given words, and nothing in
  // the folder is touched.
  void ExpectRefusal(const std::vector<std::string>& zvWords) const {
    const std::string zBefore = Snapshot(Folder.Path());
    for (int lTry = 0; lTry < 2; ++lTry) {
      const auto refused = test::FailureOf([] { test::Value("select count(*) from tblOrder"); });
      EXPECT_EQ(failure::kStoreUnavailable, refused.Number()) << refused.Description();
      EXPECT_NE(std::string::npos, refused.Description().find(Store.Path())) << refused.Description();
      for (const std::string& zWords : zvWords) {
        EXPECT_NE(std::string::npos, refused.Description().find(zWords)) << refused.Description();
      }
    }
    EXPECT_EQ(zBefore, Snapshot(Folder.Path()));
  }

  void Put(std::string_view zvContent) const { test::WriteFile(Store.Path(), std::string(zvContent)); }

  // The bytes of a store of this library with some orders, at rest.
  std::string StoreBytes() const {
    qm_ordering::CreateOrderStore(Folder.File("made"));
    const std::string zConnectionString = test::ConnectionStringOf(Folder.File("made"));
    for (int i = 0; i < 50; ++i) {
      test::RunOn(zConnectionString, "insert into tblOrder (zPurchaseOrderNumber, zDINotes) values ('PO-" +
                                         std::to_string(i) + "', '" + std::string(500, 'n') + "')");
    }
    ado::embedded::CloseIdleSessions();
    const std::string zBytes = test::ReadFile(Folder.File("made/Orders.mdb"));
    std::filesystem::remove_all(Folder.File("made"));
    return zBytes;
  }
};

const std::string kCreate = "qm-ordering store create";

}  // namespace

TEST_F(ForeignFile, ThatIsMissingIsNamed) {
  ExpectRefusal({"there is no such file", kCreate, "OrderingDatabasePath"});
}

TEST_F(ForeignFile, InAMissingFolderIsNamedWithTheFolder) {
  const std::string zFolder = Folder.File("none");
  const auto refused =
      test::FailureOf([&] { test::RunOn(test::ConnectionStringOf(zFolder), "delete from tblOrder"); });
  EXPECT_EQ(failure::kStoreUnavailable, refused.Number());
  for (const std::string& zWords :
       {zFolder + "/Orders.mdb cannot be used", "there is no folder " + zFolder, kCreate}) {
    EXPECT_NE(std::string::npos, refused.Description().find(zWords)) << refused.Description();
  }
  EXPECT_FALSE(std::filesystem::exists(zFolder));
}

TEST_F(ForeignFile, ThatIsAFolderIsRefused) {
  std::filesystem::create_directory(Store.Path());
  ExpectRefusal({"it is a folder", "Move it away", kCreate});
}

TEST_F(ForeignFile, InThePlaceOfTheLogIsNamed) {
  Put(StoreBytes());
  for (const char* zSuffix : {"-wal", "-shm"}) {
    std::filesystem::create_directory(Store.Path() + zSuffix);
    ExpectRefusal({Store.Path() + zSuffix + " beside it is not a file", "Move it away"});
    std::filesystem::remove(Store.Path() + zSuffix);
  }
}

TEST_F(ForeignFile, ThatIsEmptyIsRefused) {
  Put("");
  ExpectRefusal({"it is empty", "Restore a backup"});
}

TEST_F(ForeignFile, OfTenBytesIsRefused) {
  Put("0123456789");
  ExpectRefusal({"it is a file of another kind", "Move it away", kCreate});
}

TEST_F(ForeignFile, OfPlainTextIsRefused) {
  std::string zText;
  while (zText.size() < 20'000) {
    zText += "The quick brown fox jumps over the lazy dog.\n";
  }
  Put(zText);
  ExpectRefusal({"it is a file of another kind", "Move it away", kCreate});
}

TEST_F(ForeignFile, OfTheAccessEngineIsRefused) {
  for (const std::string_view zHeader : {"\0\1\0\0Standard Jet DB\0"sv, "\0\1\0\0Standard ACE DB\0"sv}) {
    std::string zBytes(zHeader);
    zBytes.resize(4096, '\x7E');
    Put(zBytes);
    ExpectRefusal({"it is a database of the Access engine", "Move it away", kCreate});
    // Also when no more than its beginning is there.
    Put(zHeader);
    ExpectRefusal({"it is a database of the Access engine", "Move it away", kCreate});
  }
}

TEST_F(ForeignFile, OfAnotherProgramIsRefused) {
  for (const char* zScript :
       {"create table t (a); insert into t values (1)", "pragma journal_mode = wal; create table t (a)",
        "pragma application_id = 1; pragma user_version = 1; create table tblOrder (lOrderID)"}) {
    std::filesystem::remove(Store.Path());
    sqlite3* pDatabase = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(Store.Path().c_str(), &pDatabase));
    ASSERT_EQ(SQLITE_OK, sqlite3_exec(pDatabase, zScript, nullptr, nullptr, nullptr));
    ASSERT_EQ(SQLITE_OK, sqlite3_close(pDatabase));
    ExpectRefusal({"it is a database of another program", "Move it away", kCreate});
  }
}

TEST_F(ForeignFile, OfANewerSchemaIsRefused) {
  Put(StoreBytes());
  Store.Run("pragma user_version = 3");
  ExpectRefusal({"newer version", "schema 3, this one knows 2", "Update the program"});
}

TEST_F(ForeignFile, OfNoSchemaVersionIsRefused) {
  Put(StoreBytes());
  for (const char* zVersion : {"0", "-1"}) {
    Store.Run(std::string("pragma user_version = ") + zVersion);
    ExpectRefusal({"no valid schema version", "Restore a backup"});
  }
}

TEST_F(ForeignFile, ThatIsAStoreWithoutItsEndIsRefused) {
  const std::string zBytes = StoreBytes();
  const std::size_t lPage = 4096;
  const std::size_t lAll = zBytes.size();
  for (const std::size_t lSize :
       {std::size_t{16}, std::size_t{50}, std::size_t{99}, std::size_t{100}, lPage / 2, lPage, lPage + 1,
        3 * lPage, lAll / 2, lAll - lPage - 1, lAll - lPage, lAll - lPage + 1, lAll - 100, lAll - 1}) {
    Put(std::string_view(zBytes).substr(0, lSize));
    ExpectRefusal({"truncated", "estore a backup"});
  }
}

TEST_F(ForeignFile, ThatIsAPipeIsRefusedAtOnce) {
  ASSERT_EQ(0, mkfifo(Store.Path().c_str(), 0600));
  ExpectRefusal({"it is not an ordinary file", "Move it away", kCreate});
}

TEST_F(ForeignFile, BehindABrokenSymbolicLinkIsMissing) {
  std::filesystem::create_symlink(Folder.File("nothing"), Store.Path());
  ExpectRefusal({"there is no such file", kCreate});
}

TEST_F(ForeignFile, BehindASymbolicLinkIsUsedWhenItIsAStore) {
  const test::TempFolder other;
  qm_ordering::CreateOrderStore(other.Path());
  std::filesystem::create_symlink(other.File("Orders.mdb"), Store.Path());
  test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
  EXPECT_EQ("a", test::Value("select zPurchaseOrderNumber from tblOrder"));
  ado::embedded::CloseIdleSessions();
  EXPECT_EQ("a",
            test::StoreFile(other.File("Orders.mdb")).Value("select zPurchaseOrderNumber from tblOrder"));
}

namespace {

// A store in a folder of a user without privileges, with an order in it.
class UnprivilegedUser : public test::StoreFixture {
 protected:
  UnprivilegedUser() {
    test::Run("insert into tblOrder (zPurchaseOrderNumber) values ('a')");
    ado::embedded::CloseIdleSessions();
    test::GiveToUnprivileged(Folder.Path());
    test::GiveToUnprivileged(Store.Path());
  }
  // So that the folder can go.
  ~UnprivilegedUser() override {
    std::filesystem::permissions(Folder.Path(), std::filesystem::perms::owner_all);
  }

  static void Allow(const std::string& zvPath, unsigned lvPermissions) {
    std::filesystem::permissions(zvPath, std::filesystem::perms(lvPermissions));
  }

  // What the statement answers that user, or how it fails.
  static std::string Ask(const std::string& zvSQL) {
    return test::ChildProcess([&] {
             test::DropPrivileges();
             ado::Connection connection;
             connection.Open(qm_ordering::ConnectionString());
             const auto rows = connection.Execute(zvSQL);
             const std::string zAnswer =
                 zvSQL.starts_with("select") ? rows->Fields(0).Value().ToString() : "done";
             rows->Close();
             connection.Close();
             ado::embedded::CloseIdleSessions();
             return zAnswer;
           })
        .Outcome();
  }

  void ExpectRefusal(const std::string& zvSQL, const std::vector<std::string>& zvWords) const {
    const std::string zOutcome = Ask(zvSQL);
    EXPECT_TRUE(zOutcome.starts_with(std::to_string(failure::kStoreUnavailable) + " ")) << zOutcome;
    EXPECT_NE(std::string::npos, zOutcome.find(Store.Path())) << zOutcome;
    for (const std::string& zWords : zvWords) {
      EXPECT_NE(std::string::npos, zOutcome.find(zWords)) << zOutcome;
    }
  }

  static constexpr const char* kRead = "select zPurchaseOrderNumber from tblOrder";
  static constexpr const char* kWrite = "update tblOrder set zPurchaseOrderNumber = 'b'";
};

}  // namespace

TEST_F(UnprivilegedUser, ReadsAReadOnlyFileAndMayNotWriteIt) {
  Allow(Store.Path(), 0400);
  EXPECT_EQ("a", Ask(kRead));
  ExpectRefusal(kWrite, {"read-only", "grant write permission"});
  EXPECT_EQ("a", Ask(kRead));
}

TEST_F(UnprivilegedUser, WritesAFileThatWasReadWhileItWasReadOnly) {
  Allow(Store.Path(), 0400);
  EXPECT_EQ("a", Ask(kRead));
  Allow(Store.Path(), 0600);
  EXPECT_EQ("done", Ask(kWrite));
  EXPECT_EQ("b", Ask(kRead));
}

// A host goes on running while its user follows the message's advice.
TEST_F(UnprivilegedUser, WritesAgainInTheSameProcessWhenTheFileMayBeWritten) {
  Allow(Store.Path(), 0400);
  EXPECT_EQ("refused, written", test::ChildProcess([&] {
                                  test::DropPrivileges();
                                  const auto write = [] {
                                    ado::Connection connection;
                                    connection.Open(qm_ordering::ConnectionString());
                                    connection.Execute(kWrite);
                                  };
                                  const bool bRefused =
                                      test::FailureOf(write).Number() == failure::kStoreUnavailable;
                                  Allow(Store.Path(), 0600);
                                  write();
                                  ado::embedded::CloseIdleSessions();
                                  return std::string(bRefused ? "refused, written" : "written");
                                }).Outcome());
  EXPECT_EQ("b", Ask(kRead));
}

TEST_F(UnprivilegedUser, WritesInTheSameProcessAfterAReadWhileTheFileWasReadOnly) {
  Allow(Store.Path(), 0400);
  EXPECT_EQ("done", test::ChildProcess([&] {
                      test::DropPrivileges();
                      const auto run = [](const char* zvSQL) {
                        ado::Connection connection;
                        connection.Open(qm_ordering::ConnectionString());
                        connection.Execute(zvSQL);
                      };
                      run(kRead);
                      Allow(Store.Path(), 0600);
                      run(kWrite);
                      ado::embedded::CloseIdleSessions();
                      return std::string("done");
                    }).Outcome());
  EXPECT_EQ("b", Ask(kRead));
}

TEST_F(UnprivilegedUser, MayNotUseAFileInAReadOnlyFolder) {
  Allow(Folder.Path(), 0500);
  const std::string zBefore = Snapshot(Folder.Path());
  ExpectRefusal(kRead, {"folder", "read-only", "grant write permission"});
  ExpectRefusal(kWrite, {"folder", "read-only", "grant write permission"});
  EXPECT_EQ(zBefore, Snapshot(Folder.Path()));
  Allow(Folder.Path(), 0700);
  EXPECT_EQ("done", Ask(kWrite));
}

TEST_F(UnprivilegedUser, MayNotUseAnUnreadableFile) {
  const std::string zBefore = Snapshot(Folder.Path());
  Allow(Store.Path(), 0);
  ExpectRefusal(kRead, {"cannot be opened", "check the permissions", "Permission denied"});
  ExpectRefusal(kWrite, {"cannot be opened", "check the permissions", "Permission denied"});
  Allow(Store.Path(), 0600);
  EXPECT_EQ(zBefore, Snapshot(Folder.Path()));
}

TEST_F(UnprivilegedUser, MayNotUseAFileInAnUnreadableFolder) {
  Allow(Folder.Path(), 0);
  ExpectRefusal(kRead, {"Permission denied", "Check the folder"});
}
