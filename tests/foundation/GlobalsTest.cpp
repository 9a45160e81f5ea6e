#include "qm_ordering/foundation/Globals.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/foundation/ErrorsOrdering.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::ConnectionString;
using qm_ordering::DatabasePath;
using qm_ordering::Failure;
using qm_ordering::ImportTempFilesPath;
using qm_ordering::NullTo;
using qm_ordering::SQLText;
using qm_ordering::StartUp;
using qm_ordering::Variant;
using test::RaisedNumber;

const std::vector<std::string> kStartUpCalls = {"create user settings", "get OrderingDatabasePath",
                                                "get OrderingDatabasePath", "get OHImportTempFilesPath",
                                                "release user settings"};

std::int32_t StartUpFailure() {
  return RaisedNumber([] { StartUp(); });
}

TEST(StartUp, BuildsTheStoresConnectionStringFromTheFolder) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  settings->User["OHImportTempFilesPath"] = "C:\\Temp";
  StartUp();
  EXPECT_EQ(ConnectionString(), "Driver=Microsoft Access Driver (*.mdb);DBQ=C:\\Data\\Orders.mdb");
  EXPECT_EQ(DatabasePath(), "C:\\Data");
  EXPECT_EQ(ImportTempFilesPath(), "C:\\Temp");
}

TEST(StartUp, KeepsATrailingBackslashOfTheFolder) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data\\";
  StartUp();
  EXPECT_EQ(ConnectionString(), "Driver=Microsoft Access Driver (*.mdb);DBQ=C:\\Data\\\\Orders.mdb");
  EXPECT_EQ(DatabasePath(), "C:\\Data\\");
}

TEST(StartUp, DoesNotCheckAnUnsetFolder) {
  const test::SettingsScope settings;
  StartUp();
  EXPECT_EQ(ConnectionString(), "Driver=Microsoft Access Driver (*.mdb);DBQ=\\Orders.mdb");
  EXPECT_EQ(DatabasePath(), "");
  EXPECT_EQ(ImportTempFilesPath(), "");
}

TEST(StartUp, ReadsTheSettingsInItsOrderAndReleasesTheReader) {
  const test::SettingsScope settings;
  StartUp();
  EXPECT_EQ(settings->Calls, kStartUpCalls);
}

TEST(StartUp, TakesEachAnswerForTheValueItWasAskedFor) {
  const test::SettingsScope settings;
  int lAsked = 0;
  settings->Before = [&](const std::string& zvCall) {
    if (zvCall == "get OrderingDatabasePath") {
      settings->User["OrderingDatabasePath"] = ++lAsked == 1 ? "C:\\First" : "C:\\Second";
    }
  };
  StartUp();
  EXPECT_EQ(ConnectionString(), "Driver=Microsoft Access Driver (*.mdb);DBQ=C:\\First\\Orders.mdb");
  EXPECT_EQ(DatabasePath(), "C:\\Second");
}

TEST(StartUp, RunsOnce) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  StartUp();
  settings->User["OrderingDatabasePath"] = "C:\\Elsewhere";
  StartUp();
  EXPECT_EQ(settings->Calls, kStartUpCalls);
  EXPECT_EQ(DatabasePath(), "C:\\Data");
}

TEST(StartUp, HasReadNothingBeforeItRuns) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  EXPECT_EQ(ConnectionString(), "");
  EXPECT_EQ(DatabasePath(), "");
  EXPECT_EQ(ImportTempFilesPath(), "");
  EXPECT_EQ(settings->Calls, std::vector<std::string>());
}

TEST(StartUp, FillsTheErrorTable) {
  // On a new thread, where no other test has filled it.
  std::int32_t lNumber = 0;
  std::thread([&] {
    const test::SettingsScope settings;
    StartUp();
    lNumber = qm_ordering::ErrorTableEntry(qm_ordering::OrderingError::errListNotFound).Number;
  }).join();
  EXPECT_EQ(lNumber, 11);
}

TEST(StartUp, FillsTheErrorTableOnlyOnceTheSettingsAreRead) {
  std::int32_t lBeforeRelease = 0;
  std::thread([&] {
    const test::SettingsScope settings;
    settings->Before = [&](const std::string& zvCall) {
      if (zvCall == "get OHImportTempFilesPath") {
        lBeforeRelease = RaisedNumber(
            [] { return qm_ordering::ErrorTableEntry(qm_ordering::OrderingError::errUnexpected); });
      }
    };
    StartUp();
  }).join();
  EXPECT_EQ(lBeforeRelease, 9);
}

TEST(StartUp, RunsForEachThreadWithItsOwnSettings) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  StartUp();
  std::string zBefore = "untouched";
  std::string zOther;
  std::thread([&] {
    const test::SettingsScope otherSettings;
    otherSettings->User["OrderingDatabasePath"] = "D:\\Other";
    zBefore = DatabasePath();
    StartUp();
    zOther = DatabasePath();
  }).join();
  EXPECT_EQ(zBefore, "");
  EXPECT_EQ(zOther, "D:\\Other");
  EXPECT_EQ(DatabasePath(), "C:\\Data");
}

TEST(StartUp, LetsTheSettingsBeReplacedUntilItHasRun) {
  const test::SettingsScope settings;
  const auto oOther = std::make_shared<test::MemorySettings>();
  oOther->User["OrderingDatabasePath"] = "D:\\Other";
  qm_ordering::InstallSettings(oOther);
  StartUp();
  EXPECT_EQ(DatabasePath(), "D:\\Other");
  EXPECT_EQ(RaisedNumber([] { qm_ordering::InstallSettings(nullptr); }), 5);
}

TEST(StartUp, RaisesTheFailureOfEachSettingsCall) {
  for (const char* zFailing :
       {"create user settings", "get OrderingDatabasePath", "get OHImportTempFilesPath"}) {
    const test::SettingsScope settings;
    settings->User["OrderingDatabasePath"] = "C:\\Data";
    settings->Before = [&](const std::string& zvCall) {
      if (zvCall == zFailing) {
        throw Failure(75, "The settings cannot be read");
      }
    };
    EXPECT_EQ(StartUpFailure(), 75) << zFailing;
  }
}

TEST(StartUp, LeavesEverythingAsItWasWhenItFails) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  settings->Before = [](const std::string& zvCall) {
    if (zvCall == "get OHImportTempFilesPath") {
      throw Failure(75, "The settings cannot be read");
    }
  };
  EXPECT_EQ(StartUpFailure(), 75);
  EXPECT_EQ(ConnectionString(), "");
  EXPECT_EQ(DatabasePath(), "");
  EXPECT_EQ(settings->Calls.back(), "release user settings");

  const auto oOther = std::make_shared<test::MemorySettings>();
  oOther->User["OrderingDatabasePath"] = "D:\\Other";
  qm_ordering::InstallSettings(oOther);
  StartUp();
  EXPECT_EQ(DatabasePath(), "D:\\Other");
}

TEST(StartUp, IsForgotten) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  StartUp();
  qm_ordering::ForgetStartUp();
  EXPECT_EQ(ConnectionString(), "");
  settings->User["OrderingDatabasePath"] = "D:\\Other";
  StartUp();
  EXPECT_EQ(DatabasePath(), "D:\\Other");
}

TEST(SQLText, DoublesEverySingleQuote) {
  EXPECT_EQ(SQLText("O'Brien's"), "O''Brien''s");
  EXPECT_EQ(SQLText("''"), "''''");
  EXPECT_EQ(SQLText("'"), "''");
  EXPECT_EQ(SQLText("'a'"), "''a''");
}

TEST(SQLText, LeavesAllElseAlone) {
  EXPECT_EQ(SQLText(""), "");
  EXPECT_EQ(SQLText("  \"a\" \\ % _ ; -- \xC3\xA9 "), "  \"a\" \\ % _ ; -- \xC3\xA9 ");
  EXPECT_EQ(SQLText(std::string("a\0'", 3)), std::string("a\0''", 4));
}

TEST(NullTo, ReplacesNullAlone) {
  EXPECT_EQ(NullTo(Variant::Null(), "none"), Variant("none"));
  EXPECT_EQ(NullTo("", "none"), Variant(""));
  EXPECT_EQ(NullTo(0, 5), Variant(0));
  EXPECT_EQ(NullTo(Variant(), "none"), Variant());
  EXPECT_EQ(NullTo(Variant::Missing(), "none"), Variant::Missing());
  EXPECT_EQ(NullTo(Variant::Null(), Variant::Null()), Variant::Null());
}

}  // namespace
