#include "tests/host/HostRun.h"

namespace {

using test::HostRun;

class SettingsCommands : public test::HostFixture {};

TEST_F(SettingsCommands, SetAndGetTakeAKeyInAnyLetterCaseAndShowItsOwnSpelling) {
  const HostRun set = Run({"settings", "set", "REG_firstname", "Zo\xC3\xAB"});
  EXPECT_EQ(0, set.ExitCode);
  EXPECT_EQ("Reg_FirstName = Zo\xC3\xAB\n", set.Out);
  EXPECT_EQ("Zo\xC3\xAB\n", Run({"settings", "get", "reg_FIRSTname"}).Out);
  const auto data = RunJson({"settings", "get", "reg_firstname"}).Data();
  EXPECT_EQ("Reg_FirstName", data["key"]);
  EXPECT_EQ("Zo\xC3\xAB", data["value"]);
  EXPECT_EQ("Reg_FirstName=Zo\xC3\xAB\n", test::ReadFile(SettingsFile()));
}

TEST_F(SettingsCommands, AnUnsetKeyIsAnEmptyLine) {
  const HostRun run = Run({"settings", "get", "LogPath"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("\n", run.Out);
}

TEST_F(SettingsCommands, ValuesAreTakenAsTheyWereTyped) {
  for (const std::string zValue : {"[a,b]", "[x]", "", "a=b", " two  words ", "x\ny", "[", "]"}) {
    ASSERT_EQ(0, Run({"settings", "set", "Reg_City", zValue}).ExitCode) << zValue;
    EXPECT_EQ(zValue, RunJson({"settings", "get", "Reg_City"}).Data()["value"]);
  }
}

TEST_F(SettingsCommands, AnUnknownKeyIsAUsageErrorThatNamesTheNearest) {
  for (const char* zCommand : {"get", "set"}) {
    std::vector<std::string> arguments = {"settings", zCommand, "OrderingDatabasPath"};
    if (std::string(zCommand) == "set") {
      arguments.emplace_back("x");
    }
    const HostRun run = Run(arguments);
    EXPECT_EQ(2, run.ExitCode);
    EXPECT_NE(std::string::npos, run.Err.find("Did you mean OrderingDatabasePath?")) << run.Err;
  }
}

TEST_F(SettingsCommands, ListShowsWhatIsSetAndTheFilesUnknownKeys) {
  Write("settings.ini", "Reg_City=Reims\nReg_Ctiy=Nancy\n");
  const HostRun run = Run({"settings", "list"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Out.find("Reg_City  Reims"));
  EXPECT_NE(std::string::npos, run.Out.find("Reg_Ctiy  Nancy  (unknown)"));
  EXPECT_EQ(std::string::npos, run.Out.find("LogPath"));
  const auto data = RunJson({"settings", "list"}).Data();
  EXPECT_EQ((nlohmann::json{{"Reg_City", "Reims"}}), data["settings"]);
  EXPECT_EQ((nlohmann::json{{"Reg_Ctiy", "Nancy"}}), data["unknown"]);
  EXPECT_EQ(SettingsFile(), data["file"]);
}

TEST_F(SettingsCommands, ListOfAllShowsEveryKey) {
  const auto data = RunJson({"settings", "list", "--all"}).Data();
  EXPECT_EQ(69U, data["settings"].size());
  EXPECT_EQ("", data["settings"]["DEFAULT_DI_PH0NE_NUMBER"]);
}

TEST_F(SettingsCommands, ListOfNothingSaysSo) {
  const HostRun run = Run({"settings", "list"});
  EXPECT_EQ(0, run.ExitCode);
  EXPECT_EQ("", run.Out);
  EXPECT_NE(std::string::npos, run.Err.find("No setting is set in " + SettingsFile()));
}

TEST_F(SettingsCommands, ARelativeStoreFolderIsWarnedOf) {
  EXPECT_NE(std::string::npos,
            Run({"settings", "set", "OrderingDatabasePath", "orders"}).Err.find("relative folder"));
  EXPECT_EQ("", Run({"settings", "set", "OrderingDatabasePath", "/orders"}).Err);
}

TEST_F(SettingsCommands, AStoreFolderThatAConnectionStringCannotNameIsRefused) {
  ASSERT_EQ(0, Run({"settings", "set", "OrderingDatabasePath", "/a{b}"}).ExitCode);
  const HostRun semicolon = Run({"settings", "set", "orderingdatabasepath", "/a;b"});
  EXPECT_EQ(2, semicolon.ExitCode);
  EXPECT_NE(std::string::npos, semicolon.Err.find("holds a semicolon, so a connection string"));
  const HostRun brace = Run({"settings", "set", "OrderingDatabasePath", "{a}"});
  EXPECT_EQ(2, brace.ExitCode);
  EXPECT_NE(std::string::npos, brace.Err.find("begins with a brace, so a connection string"));
  EXPECT_EQ("/a{b}\n", Run({"settings", "get", "OrderingDatabasePath"}).Out);
  EXPECT_EQ(0, Run({"settings", "set", "Reg_City", "{a;b"}).ExitCode);
}

TEST_F(SettingsCommands, ABrokenSettingsFileIsARaisedFailureThatNamesFileAndLine) {
  Write("settings.ini", "Reg_City=Reims\nno key here\n");
  const HostRun run = Run({"settings", "list"});
  EXPECT_EQ(3, run.ExitCode);
  EXPECT_NE(std::string::npos, run.Err.find("error 75: "));
  EXPECT_NE(std::string::npos, run.Err.find(SettingsFile()));
  EXPECT_NE(std::string::npos, run.Err.find("line 2"));
}

}  // namespace
