#include "qm_ordering/platform/file/WholeFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <thread>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/faults/SystemCalls.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::Failure;
using qm_ordering::file::TakePart;
using qm_ordering::file::WholeFile;
using test::FailureOf;
using test::SystemCall;
using test::SystemRequest;
namespace failure = qm_ordering::failure;
using Texts = std::vector<std::string>;

class WholeFileTest : public testing::Test {
 protected:
  static void Replace(const std::string& zvName, std::string_view zvContent) {
    const WholeFile file(zvName, "file of tests");
    WholeFile::Writing(file).Replace([&](const TakePart& take) { take(zvContent); });
  }

  Texts Files() const {
    Texts files;
    for (const auto& entry : std::filesystem::directory_iterator(Folder.Path())) {
      files.push_back(entry.path().filename().string());
    }
    std::sort(files.begin(), files.end());
    return files;
  }

  // Where this process writes before it renames.
  std::string Temporary() const { return File + ".tmp." + std::to_string(getpid()); }

  void ExpectNotWritten(const Failure& failed, const std::string& zvCause) const {
    EXPECT_EQ(failure::kFileAccess, failed.Number());
    EXPECT_EQ("Cannot write the file of tests \"" + File + "\": " + zvCause + ".", failed.Description());
  }

  test::TempFolder Folder;
  std::string File = Folder.File("f.xml");
};

const Texts kFileAndLock = {"f.xml", "f.xml.lock"};

// Notes what is asked of the system for the writing, and may refuse it or do it by pieces.
class Watcher : public test::SystemObserver {
 public:
  explicit Watcher(const test::TempFolder& folder) : m_zFolder(folder.Path()), m_oWatch(*this, m_zFolder) {}

  int Before(const SystemRequest& request) override { return Refuse ? Refuse(request) : 0; }

  void After(const SystemRequest& request) override {
    if (request.Kind == SystemCall::Write || request.Kind == SystemCall::Sync ||
        request.Kind == SystemCall::Rename) {
      const std::string zPath = request.Path == m_zFolder ? "folder" : request.Path;
      Steps.push_back(std::string(test::NameOf(request.Kind)) + " " +
                      (zPath.find(".tmp.") == std::string::npos ? zPath : "temporary"));
    }
  }

  std::size_t Shortened(const SystemRequest& request) override {
    return request.Kind == SystemCall::Write ? std::min(request.Size, Piece) : request.Size;
  }

  std::function<int(const SystemRequest&)> Refuse;
  std::size_t Piece = static_cast<std::size_t>(-1);
  Texts Steps;

 private:
  std::string m_zFolder;
  test::SystemWatch m_oWatch;
};

}  // namespace

TEST_F(WholeFileTest, HasTheNewContentAloneAndIsItsUsersOwn) {
  Replace(File, "one");
  EXPECT_EQ("one", test::ReadFile(File));
  const std::string zBytes("t\0w\no", 5);
  Replace(File, zBytes);
  EXPECT_EQ(zBytes, test::ReadFile(File));
  Replace(File, "");
  EXPECT_EQ("", test::ReadFile(File));
  for (const std::string& zFile : {File, File + ".lock"}) {
    struct stat status {};
    ASSERT_EQ(0, stat(zFile.c_str(), &status));
    EXPECT_EQ(0600U, status.st_mode & 07777U) << zFile;
  }
  EXPECT_EQ(kFileAndLock, Files());
}

TEST_F(WholeFileTest, IsClosedToOthersWhateverTheOldOneWas) {
  test::WriteFile(File, "old");
  std::filesystem::permissions(File, std::filesystem::perms(0644));
  Replace(File, "new");
  EXPECT_EQ(std::filesystem::perms(0600), std::filesystem::status(File).permissions());
}

TEST_F(WholeFileTest, HasAllPartsOfItsContent) {
  std::string zExpected;
  const WholeFile file(File, "file of tests");
  WholeFile::Writing(file).Replace([&](const TakePart& take) {
    for (const std::size_t lSize : {1U, 0U, 60'000U, 6'000U, 70'000U, 3U}) {
      const std::string zPart(lSize, static_cast<char>('a' + lSize % 26));
      zExpected += zPart;
      take(zPart);
    }
  });
  EXPECT_TRUE(test::ReadFile(File) == zExpected);
}

TEST_F(WholeFileTest, StaysAsItWasWhenItsContentCannotBeMade) {
  Replace(File, "old");
  const Failure failed = FailureOf([&] {
    const WholeFile file(File, "file of tests");
    WholeFile::Writing(file).Replace([](const TakePart& take) {
      take(std::string(100'000, 'x'));
      throw Failure(failure::kOverflow, "no content");
    });
  });
  EXPECT_EQ(failure::kOverflow, failed.Number());
  EXPECT_EQ("old", test::ReadFile(File));
  EXPECT_EQ(kFileAndLock, Files());
}

TEST_F(WholeFileTest, NeedsItsFolder) {
  const Failure failed = FailureOf([&] { Replace(Folder.File("none/f.xml"), "x"); });
  EXPECT_EQ(failure::kPathNotFound, failed.Number());
  EXPECT_EQ("Cannot write the file of tests \"" + Folder.File("none/f.xml") +
                "\": its folder cannot be opened, No such file or directory.",
            failed.Description());
  test::WriteFile(Folder.File("file"), "");
  EXPECT_EQ(failure::kPathNotFound, FailureOf([&] { Replace(Folder.File("file/f.xml"), "x"); }).Number());
}

TEST_F(WholeFileTest, StaysAsItWasWhenAFolderIsInTheWay) {
  std::filesystem::create_directories(File + "/in the way");
  ExpectNotWritten(FailureOf([&] { Replace(File, "x"); }), "Is a directory");
  EXPECT_EQ(kFileAndLock, Files());
}

TEST_F(WholeFileTest, IsWrittenThroughASymbolicLink) {
  std::filesystem::create_directory(Folder.File("real"));
  std::filesystem::create_symlink("real/f.xml", File);
  std::filesystem::create_symlink(File, Folder.File("link"));
  Replace(Folder.File("link"), "one");
  Replace(Folder.File("link"), "two");
  EXPECT_EQ("two", test::ReadFile(Folder.File("real/f.xml")));
  EXPECT_TRUE(std::filesystem::is_symlink(File));
  EXPECT_EQ((Texts{"f.xml", "link", "real"}), Files());
}

TEST_F(WholeFileTest, IsNotBehindALinkThatLeadsToItself) {
  std::filesystem::create_symlink("f.xml", File);
  ExpectNotWritten(FailureOf([&] { Replace(File, "x"); }), "Too many levels of symbolic links");
}

TEST_F(WholeFileTest, IsFreeOfWhatKilledProgramsLeft) {
  test::WriteFile(Folder.File("other"), "untouched");
  std::filesystem::create_hard_link(Folder.File("other"), Temporary());
  std::filesystem::create_symlink(Folder.File("other"), File + ".tmp.1");
  test::WriteFile(File + ".tmp.2", std::string(10'000, 'x'));
  Replace(File, "new");
  EXPECT_EQ("new", test::ReadFile(File));
  EXPECT_EQ("untouched", test::ReadFile(Folder.File("other")));
  EXPECT_EQ((Texts{"f.xml", "f.xml.lock", "other"}), Files());
}

TEST_F(WholeFileTest, IsNotWrittenWhileWhatCannotBeRemovedStandsInTheWayWhichIsNamed) {
  test::WriteFile(File, "old");
  std::filesystem::create_directories(Temporary());
  ExpectNotWritten(FailureOf([&] { Replace(File, "x"); }),
                   "\"" + Temporary() + "\" cannot be made, File exists. Remove it");
  std::filesystem::remove(Temporary());

  std::filesystem::remove(File + ".lock");
  std::filesystem::create_symlink("f.xml", File + ".lock");
  ExpectNotWritten(FailureOf([&] { Replace(File, "x"); }),
                   "\"" + File + ".lock\" cannot be opened, Too many levels of symbolic links. Remove it");
  EXPECT_EQ("old", test::ReadFile(File));
}

TEST_F(WholeFileTest, IsOnDiskBeforeItHasItsNameAndItsNameIsBeforeTheCallEnds) {
  Watcher watcher(Folder);
  watcher.Piece = 4;
  Replace(File, "one two");
  EXPECT_EQ(
      (Texts{"write temporary", "write temporary", "sync temporary", "rename temporary", "sync folder"}),
      watcher.Steps);
  EXPECT_EQ("one two", test::ReadFile(File));
}

TEST_F(WholeFileTest, StaysAsItWasWhenAnythingFailsButTheLastFlush) {
  test::WriteFile(File, "old");
  for (const SystemCall kind :
       {SystemCall::Open, SystemCall::Lock, SystemCall::Write, SystemCall::Sync, SystemCall::Rename}) {
    SCOPED_TRACE(test::NameOf(kind));
    Watcher watcher(Folder);
    int lFailed = 0;
    watcher.Refuse = [&](const SystemRequest& request) {
      return request.Kind == kind && request.Path != Folder.Path() && lFailed++ == 0 ? EIO : 0;
    };
    const Failure failed = FailureOf([&] { Replace(File, "new"); });
    EXPECT_EQ(failure::kFileAccess, failed.Number());
    EXPECT_NE(std::string::npos, failed.Description().find("Input/output error")) << failed.Description();
    EXPECT_EQ(1, lFailed);
    EXPECT_EQ("old", test::ReadFile(File));
  }
  EXPECT_EQ(kFileAndLock, Files());
}

TEST_F(WholeFileTest, StaysAsItWasWhenItsFolderCannotBeOpenedForTheFlush) {
  test::WriteFile(File, "old");
  Watcher watcher(Folder);
  watcher.Refuse = [&](const SystemRequest& request) {
    return request.Kind == SystemCall::Open && request.Path == Folder.Path() ? EMFILE : 0;
  };
  ExpectNotWritten(FailureOf([&] { Replace(File, "new"); }),
                   "its folder cannot be opened, Too many open files");
  EXPECT_EQ("old", test::ReadFile(File));
}

TEST_F(WholeFileTest, IsTheNewOneWhenItsFolderCannotBeFlushedWhichIsSaid) {
  test::WriteFile(File, "old");
  Watcher watcher(Folder);
  int lError = EIO;
  watcher.Refuse = [&](const SystemRequest& request) {
    return request.Kind == SystemCall::Sync && request.Path == Folder.Path() ? lError : 0;
  };
  const Failure failed = FailureOf([&] { Replace(File, "new"); });
  EXPECT_EQ(failure::kFileAccess, failed.Number());
  EXPECT_EQ("The file of tests \"" + File +
                "\" is written, but its folder cannot be flushed, Input/output error: should the power fail "
                "now, the old one may be back.",
            failed.Description());
  EXPECT_EQ("new", test::ReadFile(File));
  lError = EINVAL;
  Replace(File, "newer");
  EXPECT_EQ("newer", test::ReadFile(File)) << "a file system that flushes no folders";
}

TEST_F(WholeFileTest, StaysAsItWasWhenTheDiskIsFull) {
  test::WriteFile(File, "old");
  test::ChildProcess child([&]() -> std::string {
    // A limit on the size of a file fails in the middle of the writing, as a full disk does.
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{4096, 4096};
    if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
      return "no limit";
    }
    Replace(File, std::string(100'000, 'x'));
    return "written";
  });
  EXPECT_EQ("75 Cannot write the file of tests \"" + File + "\": File too large.", child.Outcome());
  EXPECT_EQ("old", test::ReadFile(File));
  EXPECT_EQ(kFileAndLock, Files());
}

TEST_F(WholeFileTest, IsNotWaitedForForEverWhoHasItIsNamed) {
  test::WriteFile(File, "old");
  const qm_ordering::file::Descriptor other(
      open((File + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  ASSERT_EQ(0, flock(other.Number(), LOCK_EX));
  ExpectNotWritten(FailureOf([&] { Replace(File, "x"); }),
                   "it is locked by another process, the one that \"lslocks\" shows with \"" + File +
                       ".lock\". Try again when that one has finished, or end it");
  EXPECT_EQ("old", test::ReadFile(File));
}

TEST_F(WholeFileTest, IsOneOfThoseThatWereWrittenAtOnce) {
  constexpr int kWriters = 4;
  std::vector<std::thread> writers;
  for (int i = 0; i < kWriters; ++i) {
    writers.emplace_back([&, i] {
      for (int j = 0; j < 50; ++j) {
        Replace(File, std::string(5'000, static_cast<char>('a' + i)));
      }
    });
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  const std::string zContent = test::ReadFile(File);
  EXPECT_EQ(std::string(5'000, zContent.at(0)), zContent);
  EXPECT_EQ(kFileAndLock, Files());
}
