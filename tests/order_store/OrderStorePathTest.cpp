#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/store/OrderStore.h"
#include "tests/support/FailureOf.h"
#include "tests/support/MemorySettings.h"

namespace {

namespace failure = qm_ordering::failure;
using qm_ordering::OrderStorePath;

std::string PathFor(const std::string& zvSetting) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = zvSetting;
  return OrderStorePath();
}

}  // namespace

TEST(OrderStorePath, IsTheFileInTheFolderOfTheSetting) {
  EXPECT_EQ("/home/user/orders/Orders.mdb", PathFor("/home/user/orders"));
}

TEST(OrderStorePath, HasTheSystemsSeparators) {
  EXPECT_EQ("/home/user/orders/Orders.mdb", PathFor("/home\\user\\orders"));
  EXPECT_EQ("/home/user/orders//Orders.mdb", PathFor("/home/user/orders/"));
}

TEST(OrderStorePath, IsCompleteForARelativeFolder) {
  const std::string zCurrent = std::filesystem::current_path().string();
  EXPECT_EQ(zCurrent + "/orders/Orders.mdb", PathFor("orders"));
  EXPECT_EQ(zCurrent + "/~/orders/Orders.mdb", PathFor("~/orders"));
}

TEST(OrderStorePath, RaisesWithoutASetting) {
  for (const char* zSetting : {"", "\\", "\\orders"}) {
    const auto refused = test::FailureOf([&] { PathFor(zSetting); });
    EXPECT_EQ(failure::kPathNotFound, refused.Number()) << zSetting;
    EXPECT_NE(std::string::npos, refused.Description().find("OrderingDatabasePath")) << refused.Description();
  }
}

TEST(OrderStorePath, RaisesForAFolderWithAZeroByte) {
  EXPECT_EQ(failure::kPathNotFound, test::FailureOf([&] { PathFor(std::string("/tmp/a\0b", 8)); }).Number());
}

TEST(OrderStorePath, RunsTheStartUp) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "/a";
  settings->Before = [](const std::string&) { throw qm_ordering::Failure(75, "no settings"); };
  EXPECT_EQ(75, test::FailureOf([&] { OrderStorePath(); }).Number());
  EXPECT_EQ(75, test::FailureOf([&] { qm_ordering::CheckOrderStore(); }).Number());
  settings->Before = nullptr;
  EXPECT_EQ("/a/Orders.mdb", OrderStorePath());
  EXPECT_EQ("/a", qm_ordering::DatabasePath());
}
