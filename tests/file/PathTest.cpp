#include "qm_ordering/platform/file/Path.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "tests/support/ChildProcess.h"
#include "tests/support/FailureOf.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::file::AbsolutePath;
using qm_ordering::file::SystemPath;
using std::string_view_literals::operator""sv;

constexpr const char* kSetting = "OrderingDatabasePath";

std::string CurrentFolder() {
  return std::filesystem::current_path().string();
}

TEST(Path, TurnsBackslashesIntoSeparators) {
  EXPECT_EQ("/data/orders/Orders.mdb", SystemPath("/data/orders\\Orders.mdb", kSetting));
  EXPECT_EQ("/data/orders/Orders.mdb", SystemPath("/data\\orders\\Orders.mdb", kSetting));
}

TEST(Path, KeepsADoubledSeparator) {
  EXPECT_EQ("/data//Orders.mdb", SystemPath("/data/\\Orders.mdb", kSetting));
  EXPECT_EQ("/data//Orders.mdb", SystemPath("/data\\\\Orders.mdb", kSetting));
}

TEST(Path, CompletesARelativeNameWithTheCurrentFolder) {
  EXPECT_EQ(CurrentFolder() + "/data/Orders.mdb", SystemPath("data\\Orders.mdb", kSetting));
  EXPECT_EQ(CurrentFolder() + "/C:/Data/Orders.mdb", SystemPath("C:\\Data\\Orders.mdb", kSetting));
  EXPECT_EQ(CurrentFolder() + "/../x", AbsolutePath("../x"));
}

TEST(Path, TakesATildeAsAName) {
  EXPECT_EQ(CurrentFolder() + "/~/orders/Orders.mdb", SystemPath("~/orders\\Orders.mdb", kSetting));
}

TEST(Path, KeepsBlanksAndBytesBeyondASCII) {
  EXPECT_EQ("/ my data /Büro\xFF/Orders.mdb", SystemPath("/ my data /Büro\xFF\\Orders.mdb", kSetting));
}

TEST(Path, RefusesANameWithoutAFolderAndNamesTheSetting) {
  const auto failure = test::FailureOf([] { SystemPath("\\Orders.mdb", kSetting); });
  EXPECT_EQ(qm_ordering::failure::kPathNotFound, failure.Number());
  EXPECT_NE(std::string::npos, failure.Description().find("\"OrderingDatabasePath\""))
      << failure.Description();
  EXPECT_NE(std::string::npos, failure.Description().find("\\Orders.mdb")) << failure.Description();
  EXPECT_EQ(qm_ordering::failure::kPathNotFound, test::FailureOf([] { SystemPath("", kSetting); }).Number());
}

TEST(Path, RefusesAZeroByte) {
  EXPECT_EQ(qm_ordering::failure::kPathNotFound,
            test::FailureOf([] { SystemPath("/data\0/x\\Orders.mdb"sv, kSetting); }).Number());
  EXPECT_EQ(qm_ordering::failure::kPathNotFound,
            test::FailureOf([] { AbsolutePath("settings\0.ini"sv); }).Number());
}

TEST(Path, LeavesBackslashesOfOtherNamesAlone) {
  EXPECT_EQ("/data/a\\b", AbsolutePath("/data/a\\b"));
}

TEST(Path, RefusesARelativeNameWhereTheCurrentFolderIsGone) {
  const test::TempFolder folder;
  test::ChildProcess child([&]() -> std::string {
    const std::string zGone = folder.File("gone");
    std::filesystem::create_directory(zGone);
    std::filesystem::current_path(zGone);
    std::filesystem::remove(zGone);
    return SystemPath("data\\Orders.mdb", kSetting);
  });
  const std::string zOutcome = child.Outcome();
  EXPECT_TRUE(zOutcome.starts_with("76 ")) << zOutcome;
}

}  // namespace
