#include "qm_ordering/foundation/LibraryObject.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "qm_ordering/foundation/ErrorsOrdering.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/NoMembers.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::Failure;
using test::RaisedNumber;

class Thing : public qm_ordering::LibraryObject {
 public:
  const char* ClassName() const noexcept override { return "Thing"; }
  const qm_ordering::ClassInfo& Members() const override { return test::NoMembers(); }
};

TEST(LibraryObject, RunsTheStartUpBeforeTheFirstObjectAlone) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  const auto oFirst = std::make_shared<Thing>();
  EXPECT_EQ(qm_ordering::DatabasePath(), "C:\\Data");
  EXPECT_EQ(settings->Calls.size(), 5U);
  const auto oSecond = std::make_shared<Thing>();
  EXPECT_EQ(settings->Calls.size(), 5U);
}

TEST(LibraryObject, HasTheErrorTableAsSoonAsTheFirstObjectExists) {
  std::int32_t lBefore = 0;
  std::int32_t lNumber = 0;
  std::thread([&] {
    const test::SettingsScope settings;
    lBefore = RaisedNumber(
        [] { return qm_ordering::ErrorTableEntry(qm_ordering::OrderingError::errOrderNotFound); });
    const Thing thing;
    lNumber = qm_ordering::ErrorTableEntry(qm_ordering::OrderingError::errOrderNotFound).Number;
  }).join();
  EXPECT_EQ(lBefore, 9);
  EXPECT_EQ(lNumber, 3);
}

TEST(LibraryObject, FixesTheSettingsOfItsThread) {
  const test::SettingsScope settings;
  { const Thing thing; }
  EXPECT_EQ(RaisedNumber([] { qm_ordering::InstallSettings(std::make_shared<test::MemorySettings>()); }), 5);
  std::int32_t lElsewhere = -1;
  std::thread([&] {
    lElsewhere = RaisedNumber([] { qm_ordering::InstallSettings(std::make_shared<test::MemorySettings>()); });
  }).join();
  EXPECT_EQ(lElsewhere, 0);
}

TEST(LibraryObject, IsNotMadeWhenTheSettingsFailAndTheNextOneTriesAgain) {
  const test::SettingsScope settings;
  settings->User["OrderingDatabasePath"] = "C:\\Data";
  settings->Before = [](const std::string&) { throw Failure(75, "The settings cannot be read"); };
  EXPECT_EQ(RaisedNumber([] { return std::make_shared<Thing>(); }), 75);
  EXPECT_EQ(RaisedNumber([] { return std::make_shared<Thing>(); }), 75);

  settings->Before = nullptr;
  const auto oThing = std::make_shared<Thing>();
  EXPECT_EQ(qm_ordering::DatabasePath(), "C:\\Data");
}

TEST(LibraryObject, RaisesAForeignExceptionOfTheSettingsAsAFailure) {
  for (const char* zFailing :
       {"create user settings", "get OrderingDatabasePath", "get OHImportTempFilesPath"}) {
    const test::SettingsScope settings;
    settings->Before = [&](const std::string& zvCall) {
      if (zvCall == zFailing) {
        throw std::runtime_error("the registry is gone");
      }
    };
    try {
      const Thing thing;
      ADD_FAILURE() << "no failure of " << zFailing;
    } catch (const Failure& caught) {
      EXPECT_EQ(caught.Number(), 5) << zFailing;
      EXPECT_EQ(caught.Description(), "the registry is gone") << zFailing;
    }
    settings->Before = nullptr;
    EXPECT_EQ(RaisedNumber([] { return std::make_shared<Thing>(); }), 0) << zFailing;
  }
}

}  // namespace
