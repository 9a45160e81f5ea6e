#include "qm_ordering/platform/file/WholeFile.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::file::ReplaceFile;
namespace failure = qm_ordering::failure;

class ReplacedFile : public testing::Test {
 protected:
  std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(Folder.Path())) {
      files.push_back(entry.path().filename().string());
    }
    return files;
  }

  test::TempFolder Folder;
  std::string File = Folder.File("f.xml");
};

}  // namespace

TEST_F(ReplacedFile, HasTheNewContentAloneAndIsItsUsersOwn) {
  ReplaceFile(File, "one");
  EXPECT_EQ("one", test::ReadFile(File));
  const std::string zBytes("t\0w\no", 5);
  ReplaceFile(File, zBytes);
  EXPECT_EQ(zBytes, test::ReadFile(File));
  ReplaceFile(File, "");
  EXPECT_EQ("", test::ReadFile(File));
  struct stat status {};
  ASSERT_EQ(0, stat(File.c_str(), &status));
  EXPECT_EQ(0600U, status.st_mode & 0777U);
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, NeedsItsFolder) {
  const auto failed = test::FailureOf([&] { ReplaceFile(Folder.File("none/f.xml"), "x"); });
  EXPECT_EQ(failure::kPathNotFound, failed.Number());
  EXPECT_NE(std::string::npos, failed.Description().find(Folder.File("none/f.xml")));
}

TEST_F(ReplacedFile, StaysAsItWasWhenAFolderIsInTheWay) {
  std::filesystem::create_directories(File + "/in the way");
  EXPECT_EQ(failure::kFileAccess, test::FailureOf([&] { ReplaceFile(File, "x"); }).Number());
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, TakesOverWhatAKilledProgramLeft) {
  test::WriteFile(File + ".tmp", std::string(10'000, 'x'));
  ReplaceFile(File, "new");
  EXPECT_EQ("new", test::ReadFile(File));
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, FollowsNoLinkOnItsWay) {
  test::WriteFile(Folder.File("other"), "untouched");
  std::filesystem::create_symlink(Folder.File("other"), File + ".tmp");
  EXPECT_EQ(failure::kFileAccess, test::FailureOf([&] { ReplaceFile(File, "x"); }).Number());
  EXPECT_EQ("untouched", test::ReadFile(Folder.File("other")));
}

TEST_F(ReplacedFile, IsOneOfThoseThatWereWrittenAtOnce) {
  constexpr int kWriters = 4;
  std::vector<std::thread> writers;
  for (int i = 0; i < kWriters; ++i) {
    writers.emplace_back([&, i] {
      for (int j = 0; j < 50; ++j) {
        ReplaceFile(File, std::string(5'000, static_cast<char>('a' + i)));
      }
    });
  }
  for (std::thread& writer : writers) {
    writer.join();
  }
  const std::string zContent = test::ReadFile(File);
  EXPECT_EQ(std::string(5'000, zContent.at(0)), zContent);
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}
