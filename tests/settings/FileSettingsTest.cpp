#include "qm_ordering/platform/settings/FileSettings.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::CreateFileSettings;
using qm_ordering::Failure;
using qm_ordering::FileSettingsKeys;
using test::ChildProcess;
using test::EnvironmentScope;
using test::FailureOf;
using test::ReadFile;
using test::TempFolder;
using test::WriteFile;

constexpr std::int32_t kFileAccess = qm_ordering::failure::kFileAccess;

std::string UserValue(const std::string& zvFile, const std::string& zvKey) {
  return CreateFileSettings(zvFile)->CreateUserSettings()->Get(zvKey);
}

void SaveOne(const std::string& zvFile, const std::string& zvKey, const std::string& zvValue) {
  const auto oDefaults = CreateFileSettings(zvFile)->CreateOrderDefaults();
  oDefaults->Set(zvKey, zvValue);
  oDefaults->Save();
}

// The names in a folder, in order.
std::vector<std::string> Names(const std::string& zvFolder) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(zvFolder)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

mode_t ModeOf(const std::string& zvPath) {
  struct stat status {};
  EXPECT_EQ(0, stat(zvPath.c_str(), &status)) << zvPath;
  return status.st_mode & 07777;
}

ino_t FileNumber(const std::string& zvPath) {
  struct stat status {};
  EXPECT_EQ(0, stat(zvPath.c_str(), &status)) << zvPath;
  return status.st_ino;
}

void ExpectFileAccess(const Failure& failure, const std::string& zvFile, const char* zvCause) {
  EXPECT_EQ(kFileAccess, failure.Number());
  EXPECT_NE(std::string::npos, failure.Description().find("\"" + zvFile + "\"")) << failure.Description();
  EXPECT_NE(std::string::npos, failure.Description().find(zvCause)) << failure.Description();
}

TEST(FileSettings, AnswersTheValuesOfItsFile) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "# where\nOrderingDatabasePath = /data\nDEFAULT_OI_EMAIL=a@b.example\n");
  EXPECT_EQ("/data", UserValue(zFile, "OrderingDatabasePath"));
  EXPECT_EQ("/data", UserValue(zFile, "ORDERINGDATABASEPATH"));
  EXPECT_EQ("", UserValue(zFile, "LogPath"));
  EXPECT_EQ("a@b.example", CreateFileSettings(zFile)->CreateOrderDefaults()->Get("DEFAULT_OI_EMAIL"));
  EXPECT_EQ((std::vector<std::string>{"OrderingDatabasePath", "DEFAULT_OI_EMAIL"}), FileSettingsKeys(zFile));
}

TEST(FileSettings, TakesAMissingFileForAnEmptyOne) {
  const TempFolder folder;
  EXPECT_EQ("", UserValue(folder.File("none.ini"), "LogPath"));
  EXPECT_EQ("", UserValue(folder.File("no/such/folder/none.ini"), "LogPath"));
  EXPECT_EQ(std::vector<std::string>{}, FileSettingsKeys(folder.File("none.ini")));
  EXPECT_EQ("", CreateFileSettings(folder.File("none.ini"))->ReadRegistration().City);
  EXPECT_EQ(std::vector<std::string>{}, Names(folder.Path()));
}

TEST(FileSettings, ReadsTheFileOnceForEachObject) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "LogPath=/old\n");
  const auto oComponent = CreateFileSettings(zFile);
  const auto oUser = oComponent->CreateUserSettings();
  const auto oDefaults = oComponent->CreateOrderDefaults();
  WriteFile(zFile, "LogPath=/new\n");
  EXPECT_EQ("/old", oUser->Get("LogPath"));
  EXPECT_EQ("/old", oDefaults->Get("LogPath"));
  EXPECT_EQ("/new", oComponent->CreateUserSettings()->Get("LogPath"));
}

TEST(FileSettings, FillTheRegistrationFromItsKeys) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile,
            "Reg_FirstName=1\nReg_LastName=2\nReg_JobTitle=3\nReg_FullCompanyName=4\nReg_Country=5\n"
            "Reg_CompanyAddress1=6\nReg_CompanyAddress2=7\nReg_City=8\nReg_State=9\nReg_StateOr=10\n"
            "Reg_ZipOrPostCode=11\nReg_CompanyPhone=12\nReg_CompanyPhoneExt=13\nReg_CompanyFax=14\n"
            "Reg_AccounNumber=15\nReg_PriceCode=16\nReg_Email=17\n");
  const auto details = CreateFileSettings(zFile)->ReadRegistration();
  EXPECT_EQ("1", details.FirstName);
  EXPECT_EQ("2", details.LastName);
  EXPECT_EQ("4", details.CompanyName);
  EXPECT_EQ("5", details.Country);
  EXPECT_EQ("6", details.Address1);
  EXPECT_EQ("7", details.Address2);
  EXPECT_EQ("8", details.City);
  EXPECT_EQ("9", details.State);
  EXPECT_EQ("10", details.StateOr);
  EXPECT_EQ("11", details.ZipOrPostCode);
  EXPECT_EQ("12", details.Telephone);
  EXPECT_EQ("13", details.TelephoneExt);
  EXPECT_EQ("14", details.Fax);
  EXPECT_EQ("15", details.AccountNumber);
  EXPECT_EQ("17", details.Email);
}

TEST(FileSettings, FindTheirFileThroughTheEnvironment) {
  const EnvironmentScope home("HOME", "/home/user");
  const EnvironmentScope config("XDG_CONFIG_HOME", "/config");
  const EnvironmentScope own("QK_COMMON_SETTINGS", "/own/name.ini");
  EXPECT_EQ("/own/name.ini", qm_ordering::DefaultSettingsFile());
  const EnvironmentScope noOwn("QK_COMMON_SETTINGS", "");
  EXPECT_EQ("/config/qk_common/settings.ini", qm_ordering::DefaultSettingsFile());
  const EnvironmentScope noConfig("XDG_CONFIG_HOME", nullptr);
  EXPECT_EQ("/home/user/.config/qk_common/settings.ini", qm_ordering::DefaultSettingsFile());
  const EnvironmentScope noHome("HOME", nullptr);
  EXPECT_EQ(qm_ordering::failure::kPathNotFound,
            FailureOf([] { qm_ordering::DefaultSettingsFile(); }).Number());
  EXPECT_EQ(qm_ordering::failure::kPathNotFound, FailureOf([] { CreateFileSettings(); }).Number());
}

TEST(FileSettings, TakeTheDefaultFileForAnEmptyName) {
  const TempFolder folder;
  const EnvironmentScope own("QK_COMMON_SETTINGS", folder.File("own.ini").c_str());
  SaveOne("", "DEFAULT_OI_EMAIL", "x");
  EXPECT_EQ("DEFAULT_OI_EMAIL=x\n", ReadFile(folder.File("own.ini")));
  EXPECT_EQ(std::vector<std::string>{"DEFAULT_OI_EMAIL"}, FileSettingsKeys());
}

TEST(FileSettings, KeepARelativeNameWhenTheCurrentFolderChanges) {
  const TempFolder folder;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  const auto oComponent = CreateFileSettings("settings.ini");
  std::filesystem::current_path(before);
  const auto oDefaults = oComponent->CreateOrderDefaults();
  oDefaults->Set("K", "1");
  oDefaults->Save();
  EXPECT_EQ("K=1\n", ReadFile(folder.File("settings.ini")));
}

TEST(FileSettings, AnswerAValueThatWasSetBeforeItIsSaved) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=old\n");
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Set("k", "new");
  EXPECT_EQ("new", oDefaults->Get("K"));
  EXPECT_EQ("K=old\n", ReadFile(zFile));
  oDefaults->Save();
  EXPECT_EQ("new", oDefaults->Get("K"));
  EXPECT_EQ("K=new\n", ReadFile(zFile));
}

TEST(FileSettings, KeepCommentsOrderAndLineEndsWhenSaving) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "\xEF\xBB\xBF# mine\r\n[store]\r\nB = 2\r\n\r\nA=1\r\n; end");
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Set("A", "one");
  oDefaults->Set("C", " three");
  oDefaults->Set("b", "two");
  oDefaults->Save();
  EXPECT_EQ("\xEF\xBB\xBF# mine\r\n[store]\r\nB = two\r\n\r\nA=one\r\n; end\r\nC=\" three\"\r\n",
            ReadFile(zFile));
}

TEST(FileSettings, CarryOverWhatAnotherHasSavedMeanwhile) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "A=1\nB=1\nC=1\n");
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Set("B", "mine");
  SaveOne(zFile, "A", "theirs");
  SaveOne(zFile, "B", "theirs");
  SaveOne(zFile, "D", "theirs");
  oDefaults->Save();
  EXPECT_EQ("A=theirs\nB=mine\nC=1\nD=theirs\n", ReadFile(zFile));
  // What was saved once is not saved again over a later change.
  SaveOne(zFile, "B", "later");
  oDefaults->Set("C", "mine");
  oDefaults->Save();
  EXPECT_EQ("A=theirs\nB=later\nC=mine\nD=theirs\n", ReadFile(zFile));
}

TEST(FileSettings, ForgetAChangeThatTheFileAlreadyHeld) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "A=1\nB=1\n");
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Set("A", "1");
  oDefaults->Save();
  SaveOne(zFile, "A", "later");
  oDefaults->Set("B", "2");
  oDefaults->Save();
  EXPECT_EQ("A=later\nB=2\n", ReadFile(zFile));
}

TEST(FileSettings, WriteNothingWhenNothingChanges) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "A=1\nB=\n");
  const ino_t lBefore = FileNumber(zFile);
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Save();
  oDefaults->Set("A", "1");
  oDefaults->Set("b", "");
  oDefaults->Save();
  EXPECT_EQ(lBefore, FileNumber(zFile));
  EXPECT_EQ(std::vector<std::string>{"settings.ini"}, Names(folder.Path()));
}

TEST(FileSettings, AreReadableByTheirUserAlone) {
  const TempFolder folder;
  const mode_t lBefore = umask(0);
  SaveOne(folder.File("deep/er/settings.ini"), "K", "1");
  umask(lBefore);
  EXPECT_EQ(0600U, ModeOf(folder.File("deep/er/settings.ini")));
  EXPECT_EQ(0600U, ModeOf(folder.File("deep/er/settings.ini.lock")));
  EXPECT_EQ(0700U, ModeOf(folder.File("deep/er")));
  EXPECT_EQ(0700U, ModeOf(folder.File("deep")));
}

TEST(FileSettings, CloseAFileThatOthersCouldRead) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=1\n");
  std::filesystem::permissions(zFile, std::filesystem::perms(0644));
  SaveOne(zFile, "K", "2");
  EXPECT_EQ(0600U, ModeOf(zFile));
}

TEST(FileSettings, LeaveNoTemporaryFile) {
  const TempFolder folder;
  SaveOne(folder.File("settings.ini"), "K", "1");
  EXPECT_EQ((std::vector<std::string>{"settings.ini", "settings.ini.lock"}), Names(folder.Path()));
}

TEST(FileSettings, RemoveWhatAKilledWriterLeft) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile + ".tmp." + std::to_string(getpid()), "half");
  WriteFile(zFile + ".tmp.1", "half");
  WriteFile(zFile + ".tmp.mine", "kept");
  WriteFile(zFile + ".tmp.", "kept");
  WriteFile(folder.File("other.ini.tmp.1"), "kept");
  SaveOne(zFile, "K", "1");
  EXPECT_EQ("K=1\n", ReadFile(zFile));
  EXPECT_EQ((std::vector<std::string>{"other.ini.tmp.1", "settings.ini", "settings.ini.lock",
                                      "settings.ini.tmp.", "settings.ini.tmp.mine"}),
            Names(folder.Path()));
}

TEST(FileSettings, WriteThroughASymbolicLink) {
  const TempFolder folder;
  std::filesystem::create_directory(folder.File("real"));
  WriteFile(folder.File("real/settings.ini"), "K=1\n");
  std::filesystem::create_symlink("real/settings.ini", folder.File("relative"));
  std::filesystem::create_symlink(folder.File("relative"), folder.File("link.ini"));
  SaveOne(folder.File("link.ini"), "K", "2");
  EXPECT_EQ("K=2\n", ReadFile(folder.File("real/settings.ini")));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link.ini")));
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("relative")));
  EXPECT_EQ((std::vector<std::string>{"settings.ini", "settings.ini.lock"}), Names(folder.File("real")));
}

TEST(FileSettings, MakeTheFileThatALinkLeadsTo) {
  const TempFolder folder;
  std::filesystem::create_symlink("new/settings.ini", folder.File("link.ini"));
  SaveOne(folder.File("link.ini"), "K", "1");
  EXPECT_TRUE(std::filesystem::is_symlink(folder.File("link.ini")));
  EXPECT_EQ("K=1\n", ReadFile(folder.File("new/settings.ini")));
}

TEST(FileSettings, RefuseALinkThatLeadsToItself) {
  const TempFolder folder;
  std::filesystem::create_symlink("b", folder.File("a"));
  std::filesystem::create_symlink("a", folder.File("b"));
  ExpectFileAccess(FailureOf([&] { UserValue(folder.File("a"), "K"); }), folder.File("a"), "symbolic links");
}

TEST(FileSettings, RefuseABrokenFileAndLeaveItAlone) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "A=1\nnonsense\n");
  ExpectFileAccess(FailureOf([&] { UserValue(zFile, "A"); }), zFile, "line 2 ");
  ExpectFileAccess(FailureOf([&] { CreateFileSettings(zFile)->CreateOrderDefaults(); }), zFile, "line 2 ");
  ExpectFileAccess(FailureOf([&] { CreateFileSettings(zFile)->ReadRegistration(); }), zFile, "line 2 ");
  ExpectFileAccess(FailureOf([&] { FileSettingsKeys(zFile); }), zFile, "line 2 ");
  EXPECT_EQ("A=1\nnonsense\n", ReadFile(zFile));
}

TEST(FileSettings, SaveNothingOverAFileThatBrokeMeanwhile) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Set("K", "1");
  WriteFile(zFile, "A=\"open\n");
  ExpectFileAccess(FailureOf([&] { oDefaults->Save(); }), zFile, "line 1 ");
  EXPECT_EQ("A=\"open\n", ReadFile(zFile));
  // Once the file is repaired, the change is still there to be saved.
  WriteFile(zFile, "A=\"closed\"\n");
  oDefaults->Save();
  EXPECT_EQ("A=\"closed\"\nK=1\n", ReadFile(zFile));
}

TEST(FileSettings, RefuseAKeyThatNoLineCanHold) {
  const TempFolder folder;
  const auto oDefaults = CreateFileSettings(folder.File("settings.ini"))->CreateOrderDefaults();
  EXPECT_EQ(qm_ordering::failure::kInvalidCall, FailureOf([&] { oDefaults->Set("a=b", "1"); }).Number());
  oDefaults->Save();
  EXPECT_EQ(std::vector<std::string>{}, Names(folder.Path()));
}

TEST(FileSettings, RefuseAFolder) {
  const TempFolder folder;
  ExpectFileAccess(FailureOf([&] { UserValue(folder.Path(), "K"); }), folder.Path(), "it is a folder");
}

TEST(FileSettings, RefuseAPipeWithoutWaitingForAWriter) {
  const TempFolder folder;
  ASSERT_EQ(0, mkfifo(folder.File("pipe").c_str(), 0600));
  ExpectFileAccess(FailureOf([&] { UserValue(folder.File("pipe"), "K"); }), folder.File("pipe"),
                   "not a regular file");
}

TEST(FileSettings, RefuseADevice) {
  ExpectFileAccess(FailureOf([&] { UserValue("/dev/zero", "K"); }), "/dev/zero", "not a regular file");
}

TEST(FileSettings, RefuseAFileWhereAFolderShouldBe) {
  const TempFolder folder;
  WriteFile(folder.File("file"), "");
  const std::string zFile = folder.File("file/settings.ini");
  ExpectFileAccess(FailureOf([&] { UserValue(zFile, "K"); }), zFile, "Not a directory");
}

TEST(FileSettings, RefuseAFileThatIsFarTooLarge) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  const std::string zLargest = "#" + std::string(16 * 1024 * 1024 - 1, '-');
  WriteFile(zFile, zLargest);
  EXPECT_EQ("", UserValue(zFile, "K"));
  ExpectFileAccess(FailureOf([&] { SaveOne(zFile, "K", "1"); }), zFile, "16 MiB");
  EXPECT_EQ(16U * 1024 * 1024, std::filesystem::file_size(zFile));
  WriteFile(zFile, zLargest + "-");
  ExpectFileAccess(FailureOf([&] { UserValue(zFile, "K"); }), zFile, "16 MiB");
}

TEST(FileSettings, RefuseAFileThatMayNotBeRead) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=1\n");
  std::filesystem::permissions(zFile, std::filesystem::perms(0200));
  test::GiveToUnprivileged(zFile);
  test::GiveToUnprivileged(folder.Path());
  ChildProcess child([&] {
    test::DropPrivileges();
    return UserValue(zFile, "K");
  });
  const std::string zOutcome = child.Outcome();
  EXPECT_TRUE(zOutcome.starts_with("75 Cannot read the settings file \"" + zFile + "\": Permission denied"))
      << zOutcome;
}

TEST(FileSettings, RefuseAFolderThatCannotBeMade) {
  const std::string zFile = "/proc/qm_ordering/settings.ini";
  ExpectFileAccess(FailureOf([&] { SaveOne(zFile, "K", "1"); }), zFile,
                   "\"/proc/qm_ordering\" cannot be made");
}

// Saves as a user that may not write in the folder, and answers what came of it.
std::string SaveInAReadOnlyFolder(const TempFolder& folder, const std::string& zvFile) {
  for (const std::string& zName : Names(folder.Path())) {
    test::GiveToUnprivileged(folder.File(zName));
  }
  test::GiveToUnprivileged(folder.Path());
  std::filesystem::permissions(folder.Path(), std::filesystem::perms(0500));
  ChildProcess child([&]() -> std::string {
    test::DropPrivileges();
    SaveOne(zvFile, "K", "2");
    return "saved";
  });
  const std::string zOutcome = child.Outcome();
  std::filesystem::permissions(folder.Path(), std::filesystem::perms(0700));
  return zOutcome;
}

TEST(FileSettings, KeepTheOldFileWhereTheFolderCannotBeWritten) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=1\n");
  const std::string zOutcome = SaveInAReadOnlyFolder(folder, zFile);
  EXPECT_TRUE(zOutcome.starts_with("75 Cannot write the settings file \"" + zFile + "\"")) << zOutcome;
  EXPECT_NE(std::string::npos, zOutcome.find("Permission denied")) << zOutcome;
  EXPECT_EQ("K=1\n", ReadFile(zFile));
  EXPECT_EQ(std::vector<std::string>{"settings.ini"}, Names(folder.Path()));
}

TEST(FileSettings, KeepTheOldFileWhereTheTemporaryFileCannotBeMade) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  SaveOne(zFile, "K", "1");
  const std::string zOutcome = SaveInAReadOnlyFolder(folder, zFile);
  EXPECT_TRUE(zOutcome.starts_with("75 ")) << zOutcome;
  EXPECT_NE(std::string::npos, zOutcome.find("cannot be made, Permission denied")) << zOutcome;
  EXPECT_EQ("K=1\n", ReadFile(zFile));
  EXPECT_EQ((std::vector<std::string>{"settings.ini", "settings.ini.lock"}), Names(folder.Path()));
}

TEST(FileSettings, NeedNoWritableFolderWhenNothingChanges) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=2\n");
  EXPECT_EQ("saved", SaveInAReadOnlyFolder(folder, zFile));
}

TEST(FileSettings, KeepTheOldFileWhenTheDiskIsFull) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=1\n");
  ChildProcess child([&]() -> std::string {
    // A limit on the size of a file fails in the middle of the writing, as a full disk does.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
      return "no limit";
    }
    SaveOne(zFile, "K", std::string(100'000, 'x'));
    return "saved";
  });
  const std::string zOutcome = child.Outcome();
  EXPECT_EQ("75 Cannot write the settings file \"" + zFile + "\": File too large.", zOutcome);
  EXPECT_EQ("K=1\n", ReadFile(zFile));
  EXPECT_EQ((std::vector<std::string>{"settings.ini", "settings.ini.lock"}), Names(folder.Path()));
}

TEST(FileSettings, SaveNothingWhereAFolderTookTheFilesPlace) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  const auto oDefaults = CreateFileSettings(zFile)->CreateOrderDefaults();
  oDefaults->Set("K", "1");
  std::filesystem::create_directory(zFile);
  ExpectFileAccess(FailureOf([&] { oDefaults->Save(); }), zFile, "it is a folder");
  EXPECT_EQ(std::vector<std::string>{"settings.ini"}, Names(folder.Path()));
}

TEST(FileSettings, GiveUpOnAFileThatAnotherProcessKeepsLocked) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  WriteFile(zFile, "K=1\n");
  const int lLock = open((zFile + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(0, flock(lLock, LOCK_EX));
  ExpectFileAccess(FailureOf([&] { SaveOne(zFile, "K", "2"); }), zFile, "locked by another process");
  EXPECT_EQ("K=1\n", ReadFile(zFile));
  // Reading never waits.
  EXPECT_EQ("1", UserValue(zFile, "K"));
  close(lLock);
  SaveOne(zFile, "K", "2");
  EXPECT_EQ("K=2\n", ReadFile(zFile));
}

TEST(FileSettings, WaitForAnotherWriter) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  const int lLock = open((zFile + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_EQ(0, flock(lLock, LOCK_EX));
  std::thread holder([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    WriteFile(zFile, "A=theirs\n");
    close(lLock);
  });
  SaveOne(zFile, "K", "1");
  holder.join();
  EXPECT_EQ("A=theirs\nK=1\n", ReadFile(zFile));
}

TEST(FileSettings, LoseNothingWhenTwoProcessesSaveAtOnce) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  const auto saveHundred = [&](const std::string& zvStart) {
    return [&zFile, zvStart]() -> std::string {
      for (int i = 0; i < 100; ++i) {
        SaveOne(zFile, zvStart + std::to_string(i), std::to_string(i));
      }
      return "saved";
    };
  };
  ChildProcess one(saveHundred("one"));
  ChildProcess other(saveHundred("other"));
  EXPECT_EQ("saved", one.Outcome());
  EXPECT_EQ("saved", other.Outcome());
  EXPECT_EQ(200U, FileSettingsKeys(zFile).size());
  const auto oUser = CreateFileSettings(zFile)->CreateUserSettings();
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(std::to_string(i), oUser->Get("one" + std::to_string(i)));
    EXPECT_EQ(std::to_string(i), oUser->Get("other" + std::to_string(i)));
  }
}

TEST(FileSettings, LoseNothingWhenTwoThreadsSaveAtOnce) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  const auto saveSome = [&](const std::string& zvStart) {
    for (int i = 0; i < 25; ++i) {
      SaveOne(zFile, zvStart + std::to_string(i), "x");
    }
  };
  std::thread other([&] { saveSome("other"); });
  saveSome("one");
  other.join();
  EXPECT_EQ(50U, FileSettingsKeys(zFile).size());
}

TEST(FileSettingsFull, StayWholeWhenAWriterIsKilled) {
  const TempFolder folder;
  const std::string zFile = folder.File("settings.ini");
  SaveOne(zFile, "K", std::string(50'000, '0'));
  for (int i = 0; i < 60; ++i) {
    ChildProcess child([&]() -> std::string {
      for (char c = 'a';; c = c == 'z' ? 'a' : static_cast<char>(c + 1)) {
        SaveOne(zFile, "K", std::string(50'000, c));
      }
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(5 + i));
    child.Kill();
    const std::string zValue = UserValue(zFile, "K");
    ASSERT_EQ(std::string(50'000, zValue.empty() ? '?' : zValue.front()), zValue);
  }
  SaveOne(zFile, "K", "end");
  EXPECT_EQ("K=end\n", ReadFile(zFile));
  EXPECT_EQ((std::vector<std::string>{"settings.ini", "settings.ini.lock"}), Names(folder.Path()));
}

}  // namespace
