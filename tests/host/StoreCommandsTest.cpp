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

TEST_F(StoreCommands, CheckOfAMissingStoreIsARaisedFailure) {
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", Folder.Path()}).ExitCode);
  const HostRun run = Run({"store", "check"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("error -2147467259: "));
  EXPECT_NE(std::string::npos, run.Err.find(Folder.File("Orders.mdb")));
}

}  // namespace
