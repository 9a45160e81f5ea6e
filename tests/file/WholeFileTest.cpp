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
using qm_ordering::file::TakePart;
namespace failure = qm_ordering::failure;

void ReplaceBy(const std::string& zvFile, std::string_view zvContent) {
  ReplaceFile(zvFile, [&](const TakePart& take) { take(zvContent); });
}

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
  ReplaceBy(File, "one");
  EXPECT_EQ("one", test::ReadFile(File));
  const std::string zBytes("t\0w\no", 5);
  ReplaceBy(File, zBytes);
  EXPECT_EQ(zBytes, test::ReadFile(File));
  ReplaceBy(File, "");
  EXPECT_EQ("", test::ReadFile(File));
  struct stat status {};
  ASSERT_EQ(0, stat(File.c_str(), &status));
  EXPECT_EQ(0600U, status.st_mode & 0777U);
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, HasAllPartsOfItsContent) {
  std::string zExpected;
  ReplaceFile(File, [&](const TakePart& take) {
    for (const std::size_t lSize : {1U, 0U, 60'000U, 6'000U, 70'000U, 3U}) {
      const std::string zPart(lSize, static_cast<char>('a' + lSize % 26));
      zExpected += zPart;
      take(zPart);
    }
  });
  EXPECT_TRUE(test::ReadFile(File) == zExpected);
}

TEST_F(ReplacedFile, StaysAsItWasWhenItsContentCannotBeMade) {
  ReplaceBy(File, "old");
  const auto failed = test::FailureOf([&] {
    ReplaceFile(File, [](const TakePart& take) {
      take(std::string(100'000, 'x'));
      throw qm_ordering::Failure(failure::kOverflow, "no content");
    });
  });
  EXPECT_EQ(failure::kOverflow, failed.Number());
  EXPECT_EQ("old", test::ReadFile(File));
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, NeedsItsFolder) {
  const auto failed = test::FailureOf([&] { ReplaceBy(Folder.File("none/f.xml"), "x"); });
  EXPECT_EQ(failure::kPathNotFound, failed.Number());
  EXPECT_NE(std::string::npos, failed.Description().find(Folder.File("none/f.xml")));
}

TEST_F(ReplacedFile, StaysAsItWasWhenAFolderIsInTheWay) {
  std::filesystem::create_directories(File + "/in the way");
  EXPECT_EQ(failure::kFileAccess, test::FailureOf([&] { ReplaceBy(File, "x"); }).Number());
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, TakesOverWhatAKilledProgramLeft) {
  test::WriteFile(File + ".tmp", std::string(10'000, 'x'));
  ReplaceBy(File, "new");
  EXPECT_EQ("new", test::ReadFile(File));
  EXPECT_EQ((std::vector<std::string>{"f.xml"}), Files());
}

TEST_F(ReplacedFile, FollowsNoLinkOnItsWay) {
  test::WriteFile(Folder.File("other"), "untouched");
  std::filesystem::create_symlink(Folder.File("other"), File + ".tmp");
  EXPECT_EQ(failure::kFileAccess, test::FailureOf([&] { ReplaceBy(File, "x"); }).Number());
  EXPECT_EQ("untouched", test::ReadFile(Folder.File("other")));
}

TEST_F(ReplacedFile, IsOneOfThoseThatWereWrittenAtOnce) {
  constexpr int kWriters = 4;
  std::vector<std::thread> writers;
  for (int i = 0; i < kWriters; ++i) {
    writers.emplace_back([&, i] {
      for (int j = 0; j < 50; ++j) {
        ReplaceBy(File, std::string(5'000, static_cast<char>('a' + i)));
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
