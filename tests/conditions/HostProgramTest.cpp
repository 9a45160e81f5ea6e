#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/conditions/TroubledStore.h"
#include "tests/host/HostRun.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/HostProgram.h"
#include "tests/support/TempFolder.h"

// What a user of the host program sees of a store in trouble: what is wrong, with which file, and what to do;
// and that all is there when the trouble is over.

namespace {

using Texts = std::vector<std::string>;

class HostProgram : public test::TroubledStore {
 protected:
  HostProgram() {
    test::WriteFile(Settings(), "OrderingDatabasePath=" + Folder.Path() + "\n");
    test::WriteFile(Folder.File("catalogue.csv"), test::kCatalogue);
  }

  std::string Settings() const { return Folder.File("settings.ini"); }

  test::HostRun Run(Texts zvArguments) const {
    zvArguments.insert(zvArguments.begin(), {"--settings", Settings()});
    test::HostStreams streams;
    streams.Program = m_zProgram;
    return test::RunHost(zvArguments, streams);
  }
  test::HostRun Add() const {
    return Run({"order", "add", "--catalogue", Folder.File("catalogue.csv"), "B2", "1"});
  }
  test::HostRun Show() const { return Run({"order", "show"}); }

  // The run failed, and says all of the words.
  void ExpectFailure(const test::HostRun& run, const Texts& zvWords) const {
    EXPECT_TRUE(run.ExitCode == 1 || run.ExitCode == 3) << run.ExitCode << "\n" << run.Out << run.Err;
    EXPECT_NE(std::string::npos, run.Err.find(Store.Path())) << run.Err;
    for (const std::string& zWord : zvWords) {
      EXPECT_NE(std::string::npos, run.Err.find(zWord)) << zWord << " is not in " << run.Err;
    }
  }

  // The order is there, and takes another item.
  void ExpectWorksAgain() const {
    EXPECT_EQ(0, Run({"store", "check"}).ExitCode);
    const test::HostRun added = Add();
    EXPECT_EQ(0, added.ExitCode) << added.Err;
    const test::HostRun shown = Show();
    EXPECT_EQ(0, shown.ExitCode) << shown.Err;
    for (const char* zItem : {"now-1", "now-2", "now-3", "B2"}) {
      EXPECT_NE(std::string::npos, shown.Out.find(zItem)) << shown.Out;
    }
  }

  // Every use of the store fails while the trouble lasts.
  void ExpectTrouble(const std::function<void()>& make, const Texts& zvWords,
                     const std::function<void()>& end) {
    make();
    for (const test::HostRun& run : {Show(), Add(), Run({"order", "remove", "now-1"}),
                                     Run({"order", "submit"}), Run({"store", "check"})}) {
      ExpectFailure(run, zvWords);
    }
    end();
    ExpectWorksAgain();
  }

  std::string m_zProgram;  // empty: the one that the build made
};

TEST_F(HostProgram, SaysThatTheStoreIsMissingAndHowToMakeOne) {
  ExpectTrouble([&] { std::filesystem::rename(Store.Path(), Folder.File("Away.mdb")); },
                {"there is no such file", "qm-ordering store create"},
                [&] {
                  EXPECT_FALSE(std::filesystem::exists(Store.Path()));
                  std::filesystem::rename(Folder.File("Away.mdb"), Store.Path());
                });
}

TEST_F(HostProgram, SaysThatTheStoreIsDamaged) {
  ExpectTrouble([&] { std::filesystem::resize_file(Store.Path(), Bytes.size() / 2 / 4096 * 4096); },
                {"damaged or truncated", "restore a backup"}, [&] { Restore(); });
}

TEST_F(HostProgram, SaysThatTheStoreIsOfANewerVersion) {
  ExpectTrouble([&] { Store.Run("pragma user_version = 9999"); }, {"newer version", "Update the program"},
                [&] { Restore(); });
}

TEST_F(HostProgram, SaysThatAFolderIsInThePlaceOfTheLog) {
  ExpectTrouble([&] { std::filesystem::create_directory(Store.Path() + "-wal"); },
                {Store.Path() + "-wal beside it is not a file", "Move it away"},
                [&] { std::filesystem::remove(Store.Path() + "-wal"); });
}

// A user without privileges, and the program and its library where that user can reach them: the folder of
// the build may be another user's alone.
class UnprivilegedUserOfTheProgram : public HostProgram {
 protected:
  UnprivilegedUserOfTheProgram() {
    const std::filesystem::path built = test::HostProgramPath();
    const std::string zLibrary = "libqm_ordering.so.0";
    m_zProgram = Folder.File("qm-ordering");
    std::filesystem::copy_file(built, m_zProgram);
    std::filesystem::copy_file(built.parent_path().parent_path() / zLibrary, Folder.File(zLibrary));
    for (const std::string& zPath : {Folder.Path(), Store.Path(), Settings(), Folder.File("catalogue.csv"),
                                     m_zProgram, Folder.File(zLibrary)}) {
      test::GiveToUnprivileged(zPath);
    }
  }
  // So that the folder can go.
  ~UnprivilegedUserOfTheProgram() override { Allow(Folder.Path(), 0700); }

  static void Allow(const std::string& zvPath, unsigned lvPermissions) {
    std::filesystem::permissions(zvPath, std::filesystem::perms(lvPermissions));
  }

  // What the user sees of the run; output and messages in one.
  test::HostRun AsUser(const std::function<test::HostRun()>& run) const {
    const std::string zOutcome =
        test::ChildProcess([&] {
          test::DropPrivileges();
          const test::EnvironmentScope library("LD_LIBRARY_PATH", Folder.Path().c_str());
          const test::HostRun done = run();
          return std::to_string(done.ExitCode) + "\n" + done.Out + done.Err;
        }).Outcome();
    test::HostRun seen;
    seen.ExitCode = std::atoi(zOutcome.c_str());
    seen.Out = seen.Err = zOutcome;
    return seen;
  }
};

TEST_F(UnprivilegedUserOfTheProgram, ReadsAReadOnlyStoreAndIsToldHowToWriteIt) {
  Allow(Store.Path(), 0400);
  const test::HostRun shown = AsUser([&] { return Show(); });
  EXPECT_EQ(0, shown.ExitCode) << shown.Err;
  EXPECT_NE(std::string::npos, shown.Out.find("now-3")) << shown.Out;
  ExpectFailure(AsUser([&] { return Add(); }), {"read-only", "grant write permission"});
  Allow(Store.Path(), 0600);
  EXPECT_EQ(0, AsUser([&] { return Add(); }).ExitCode);
  ExpectWorksAgain();
}

TEST_F(UnprivilegedUserOfTheProgram, IsToldOfAReadOnlyFolder) {
  Allow(Folder.Path(), 0500);
  ExpectFailure(AsUser([&] { return Show(); }), {"read-only", "folder", "grant write permission"});
  ExpectFailure(AsUser([&] { return Add(); }), {"read-only", "folder", "grant write permission"});
  Allow(Folder.Path(), 0700);
  const test::HostRun added = AsUser([&] { return Add(); });
  EXPECT_EQ(0, added.ExitCode) << added.Err;
  ExpectWorksAgain();
}

}  // namespace
