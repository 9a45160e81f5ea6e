#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/host/HostRun.h"
#include "tests/support/EnvironmentScope.h"

namespace {

using test::EnvironmentScope;
using test::HostRun;
using testing::Test;

class StoreCommands : public test::HostFixture {
 protected:
  std::string Setting() const { return RunJson({"settings", "get", "OrderingDatabasePath"}).Data()["value"]; }
};

TEST_F(StoreCommands, CreateMakesTheStoreAndSetsAnUnsetPath) {
  const HostRun run = Run({"store", "create", Folder.File("a folder/orders/")});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("Created " + Folder.File("a folder/orders/Orders.mdb") + "\n", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("OrderingDatabasePath is now " + Folder.File("a folder/orders")));
  EXPECT_EQ(Folder.File("a folder/orders"), Setting());
  EXPECT_EQ(0, Run({"order", "show"}).ExitCode);
}

TEST_F(StoreCommands, CreateKeepsAnAbsolutePathOfARelativeFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(Folder.Path());
  const HostRun run = Run({"store", "create", "./here/../there"});
  std::filesystem::current_path(before);
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(std::filesystem::canonical(Folder.File("there")), Setting());
}

TEST_F(StoreCommands, CreateWithoutAFolderUsesTheSetting) {
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", Folder.File("set")}).ExitCode);
  const HostRun run = RunJson({"store", "create"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ(Folder.File("set/Orders.mdb"), run.Data()["path"]);
  EXPECT_EQ(Folder.File("set"), run.Data()["OrderingDatabasePath"]);
  EXPECT_EQ("", run.Err);
}

TEST_F(StoreCommands, CreateWithoutFolderAndSettingUsesTheUsersDataFolder) {
  const EnvironmentScope data("XDG_DATA_HOME", Folder.File("data").c_str());
  EXPECT_EQ(0, Run({"store", "create"}).ExitCode);
  EXPECT_TRUE(std::filesystem::exists(Folder.File("data/qm_ordering/Orders.mdb")));
}

TEST_F(StoreCommands, CreateWithoutADataFolderUsesTheHomeFolder) {
  // A relative folder in the variable does not count.
  const EnvironmentScope data("XDG_DATA_HOME", "relative");
  const EnvironmentScope home("HOME", Folder.Path().c_str());
  EXPECT_EQ(0, Run({"store", "create"}).ExitCode);
  EXPECT_TRUE(std::filesystem::exists(Folder.File(".local/share/qm_ordering/Orders.mdb")));
}

TEST_F(StoreCommands, CreateWithoutAnyFolderAsksForOne) {
  const EnvironmentScope data("XDG_DATA_HOME", nullptr);
  const EnvironmentScope home("HOME", nullptr);
  const HostRun run = Run({"store", "create"});
  EXPECT_EQ(2, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("Give the folder"));
}

TEST_F(StoreCommands, CreateElsewhereSaysThatTheSettingStaysAndHowToChangeIt) {
  CreateStore();
  const HostRun run = Run({"store", "create", Folder.File("other")});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("is still " + Folder.Path()));
  EXPECT_NE(std::string::npos,
            run.Err.find("settings set OrderingDatabasePath \"" + Folder.File("other") + "\""));
  EXPECT_EQ(Folder.Path(), Setting());
}

TEST_F(StoreCommands, CreateNeverReplacesAStore) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=PO-7"}).ExitCode);
  const HostRun run = Run({"store", "create"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("error 75: "));
  EXPECT_EQ("PO-7", Order()["PurchaseOrderNumber"]);
}

TEST_F(StoreCommands, CreateSaysHowToUseAStoreThatIsThereAlready) {
  CreateStore();
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", ""}).ExitCode);
  const HostRun run = Run({"store", "create", Folder.Path()});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("settings set OrderingDatabasePath"));
}

TEST_F(StoreCommands, CreateRefusesAFolderThatTheSettingCannotName) {
  for (const char* zName : {"semi;colon", "back\\slash"}) {
    const HostRun run = Run({"store", "create", Folder.File(zName)});
    EXPECT_EQ(2, run.ExitCode) << zName;
    EXPECT_FALSE(std::filesystem::exists(Folder.File(zName))) << zName;
    EXPECT_EQ("", Setting()) << zName;
  }
}

TEST_F(StoreCommands, PathShowsTheStoresFile) {
  CreateStore();
  EXPECT_EQ(Folder.File("Orders.mdb") + "\n", Run({"store", "path"}).Out);
  EXPECT_EQ(Folder.File("Orders.mdb"), RunJson({"store", "path"}).Data()["path"]);
}

TEST_F(StoreCommands, PathWithoutASettingIsARaisedFailureWithARemedy) {
  const HostRun run = Run({"store", "path"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("error 76: "));
  EXPECT_NE(std::string::npos, run.Err.find("qm-ordering store create"));
}

TEST_F(StoreCommands, CheckOfAWholeStoreSaysSo) {
  CreateStore();
  const HostRun run = Run({"store", "check"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("The store is whole.\n", run.Out);
  const auto data = RunJson({"store", "check"}).Data();
  EXPECT_EQ(true, data["whole"]);
  EXPECT_TRUE(data["findings"].empty());
}

TEST_F(StoreCommands, CheckNamesEveryFinding) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "show"}).ExitCode);
  Store().Run(
      "update tblOrder set cTotalPrice = 70000 where lOrderID = 1;"
      "insert into tblOrder (lOrderID, bIsCurrent, cTotalPrice) values (2, 0, 10000)");
  const HostRun run = RunJson({"store", "check"});
  EXPECT_EQ(1, run.ExitCode);
  const auto data = run.Data();
  EXPECT_EQ(false, data["whole"]);
  EXPECT_EQ(2U, data["findings"].size());
  EXPECT_EQ("order 1: its total is 7, its lines add up to 0", data["findings"][0]);
  EXPECT_EQ(
      "order 1: its total is 7, its lines add up to 0\norder 2: its total is 1, its lines add up to 0\n",
      Run({"store", "check"}).Out);
}

TEST_F(StoreCommands, BackupCopiesTheStoreIntoAFile) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=PO-7"}).ExitCode);
  const std::string zBackup = Folder.File("a backup");
  const HostRun run = Run({"store", "backup", zBackup});
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("Backed up " + Folder.File("Orders.mdb") + " to " + zBackup + "\n", run.Out);
  EXPECT_EQ("", run.Err);
  EXPECT_EQ("PO-7", test::StoreFile(zBackup).Value("select zPurchaseOrderNumber from tblOrder"));
  const auto data = RunJson({"store", "backup", zBackup}).Data();
  EXPECT_EQ(Folder.File("Orders.mdb"), data["path"]);
  EXPECT_EQ(zBackup, data["backup"]);
}

TEST_F(StoreCommands, BackupNamesARelativeFileWithItsFullPath) {
  CreateStore();
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(Folder.Path());
  const HostRun run = RunJson({"store", "backup", "file:backup"});
  std::filesystem::current_path(before);
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ(std::filesystem::canonical(Folder.File("file:backup")), run.Data()["backup"].get<std::string>());
}

TEST_F(StoreCommands, BackupReplacesNoFileOfAnotherKind) {
  CreateStore();
  const HostRun run = Run({"store", "backup", Write("letter", "Dear Sir")});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("error 75: ")) << run.Err;
  EXPECT_EQ("Dear Sir", test::ReadFile(Folder.File("letter")));
}

TEST_F(StoreCommands, BackupAndRestoreNeedAFile) {
  CreateStore();
  EXPECT_EQ(2, Run({"store", "backup"}).ExitCode);
  EXPECT_EQ(2, Run({"store", "restore"}).ExitCode);
  EXPECT_NE(std::string::npos, Run({"store", "backup", ""}).Err.find("the name given is empty"));
  EXPECT_NE(std::string::npos, Run({"store", "restore", ""}).Err.find("the name given is empty"));
}

TEST_F(StoreCommands, RestorePutsABackupInPlaceAndSaysWhatIsKeptWhere) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=then"}).ExitCode);
  ASSERT_EQ(0, Run({"store", "backup", Folder.File("backup")}).ExitCode);
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=now"}).ExitCode);
  const HostRun run = RunJson({"store", "restore", Folder.File("backup")});
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("", run.Err);
  EXPECT_EQ("then", Order()["PurchaseOrderNumber"]);
  EXPECT_EQ(Folder.File("Orders.mdb"), run.Data()["path"]);
  EXPECT_EQ(Folder.File("backup"), run.Data()["backup"]);
  const std::string zKept = run.Data()["kept"];
  EXPECT_TRUE(zKept.starts_with(Folder.File("Orders.mdb.replaced-"))) << zKept;
  EXPECT_EQ("now", test::StoreFile(zKept).Value("select zPurchaseOrderNumber from tblOrder"));
  const HostRun again = Run({"store", "restore", Folder.File("backup")});
  EXPECT_TRUE(again.Out.starts_with("Restored " + Folder.File("Orders.mdb") + " from " +
                                    Folder.File("backup") + "\nWhat it replaced is kept as " +
                                    Folder.File("Orders.mdb.replaced-")))
      << again.Out;
}

TEST_F(StoreCommands, RestoreOfALostStoreHasNothingToKeep) {
  CreateStore();
  ASSERT_EQ(0, Run({"store", "backup", Folder.File("backup")}).ExitCode);
  std::filesystem::remove(Store().Path());
  const HostRun run = Run({"store", "restore", Folder.File("backup")});
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_NE(std::string::npos, run.Out.find("There was no store to keep."));
  std::filesystem::remove(Store().Path());
  EXPECT_TRUE(RunJson({"store", "restore", Folder.File("backup")}).Data()["kept"].is_null());
  EXPECT_EQ(0, Run({"store", "check"}).ExitCode);
}

TEST_F(StoreCommands, RestoreOfSomethingElseChangesNothing) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "set", "PurchaseOrderNumber=now"}).ExitCode);
  const HostRun run = Run({"store", "restore", Write("letter", "Dear Sir")});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("error 75: ")) << run.Err;
  EXPECT_EQ("now", Order()["PurchaseOrderNumber"]);
}

TEST_F(StoreCommands, RepairSaysWhatItChanged) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "show"}).ExitCode);
  Store().Run("update tblOrder set cTotalPrice = 70000");
  const HostRun run = Run({"store", "repair"});
  EXPECT_EQ(0, run.ExitCode) << run.Err;
  EXPECT_EQ("order 1: its total was 7, its lines add up to 0; set to 0\n", run.Out);
  EXPECT_EQ("There was nothing to repair.\n", Run({"store", "repair"}).Out);
  Store().Run("update tblOrder set cTotalPrice = 70000");
  const auto data = RunJson({"store", "repair"}).Data();
  EXPECT_EQ(1U, data["changes"].size());
  EXPECT_EQ("order 1: its total was 7, its lines add up to 0; set to 0", data["changes"][0]);
  EXPECT_EQ(true, data["whole"]);
  EXPECT_TRUE(data["findings"].empty());
}

TEST_F(StoreCommands, RepairWarnsOfWhatIsLeft) {
  CreateStore();
  ASSERT_EQ(0, Run({"order", "show"}).ExitCode);
  Store().Run(
      "insert into tblOrderItem (lOrderID, zItemNumber, cExtendedPrice) values (1, 'a', "
      "9223372036854775807), "
      "(1, 'b', 1)");
  const HostRun run = Run({"store", "repair"});
  EXPECT_EQ(1, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Out.find("order 1: the sum of its lines is beyond the range of money"));
  EXPECT_NE(std::string::npos, run.Err.find("order 1: the sum of its lines is beyond the range of money."));
  EXPECT_EQ(false, RunJson({"store", "repair"}).Data()["whole"]);
}

TEST_F(StoreCommands, RepairOfADamagedStoreIsARaisedFailure) {
  CreateStore();
  Store().Run("create table other (a)");
  const HostRun run = Run({"store", "repair"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("qm-ordering store restore")) << run.Err;
}

TEST_F(StoreCommands, CheckOfAMissingStoreIsARaisedFailure) {
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", Folder.Path()}).ExitCode);
  const HostRun run = Run({"store", "check"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("error -2147467259: "));
  EXPECT_NE(std::string::npos, run.Err.find(Folder.File("Orders.mdb")));
}

}  // namespace
