#include "qm_ordering/platform/PerThread.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "qm_ordering/foundation/Errors.h"
#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/foundation/LibraryObject.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/NoMembers.h"
#include "tests/support/RaisedNumber.h"

namespace {

using qm_ordering::PerThread;
using test::RaisedNumber;

struct Counter {
  int Value = 0;
};

class Thing : public qm_ordering::LibraryObject {
 public:
  const char* ClassName() const noexcept override { return "Thing"; }
  const qm_ordering::ClassInfo& Members() const override { return test::NoMembers(); }
};

// What a host's own object finds that ends after the library's per-thread values.
struct Findings {
  bool HadCounter = false;
  bool HasCounter = true;
  std::string ConnectionString = "untouched";
  std::string DatabasePath = "untouched";
  std::string ImportTempFilesPath = "untouched";
  std::int32_t CaughtNumber = 0;
  std::int32_t RememberedNumber = -1;
  std::int32_t ErrorNumber = 0;
  std::int32_t CreationFailure = 0;
};

class AtThreadEnd {
 public:
  AtThreadEnd() = default;
  ~AtThreadEnd() {
    if (Report == nullptr) {
      return;
    }
    Report->HasCounter = PerThread<Counter>::Get() != nullptr;
    Report->ConnectionString = qm_ordering::ConnectionString();
    Report->DatabasePath = qm_ordering::DatabasePath();
    Report->ImportTempFilesPath = qm_ordering::ImportTempFilesPath();
    try {
      throw qm_ordering::Failure(6, "Overflow");
    } catch (...) {
      Report->CaughtNumber = qm_ordering::CatchFailure("AtThreadEnd").Number();
    }
    Report->RememberedNumber = qm_ordering::LastFailure().Number;
    qm_ordering::ClearLastFailure();
    qm_ordering::ErrorInfo record;
    qm_ordering::SetError(record, qm_ordering::OrderingError::errUnexpected, "");
    Report->ErrorNumber = record.Number;
    Report->CreationFailure = RaisedNumber([] { return Thing().ClassName(); });
  }
  AtThreadEnd(const AtThreadEnd&) = delete;
  AtThreadEnd& operator=(const AtThreadEnd&) = delete;

  Findings* Report = nullptr;
};

TEST(PerThread, IsOneValueForEachThread) {
  PerThread<Counter>::Get()->Value = 1;
  PerThread<Counter>::Get()->Value += 1;
  int lElsewhere = -1;
  std::thread([&] { lElsewhere = PerThread<Counter>::Get()->Value++; }).join();
  EXPECT_EQ(lElsewhere, 0);
  EXPECT_EQ(PerThread<Counter>::Get()->Value, 2);
}

TEST(PerThread, LeavesTheLibraryUsableForAnObjectThatEndsLater) {
  Findings findings;
  std::thread([&] {
    // Made first, so that it ends last.
    static thread_local AtThreadEnd atEnd;
    atEnd.Report = &findings;
    const test::SettingsScope settings;
    settings->User["OrderingDatabasePath"] = "C:\\Data";
    const Thing thing;
    findings.HadCounter = PerThread<Counter>::Get() != nullptr;
    try {
      throw qm_ordering::Failure(13, "Type mismatch");
    } catch (...) {
      qm_ordering::CatchFailure("Earlier");
    }
  }).join();
  EXPECT_TRUE(findings.HadCounter);
  EXPECT_FALSE(findings.HasCounter);
  EXPECT_EQ(findings.ConnectionString, "");
  EXPECT_EQ(findings.DatabasePath, "");
  EXPECT_EQ(findings.ImportTempFilesPath, "");
  EXPECT_EQ(findings.CaughtNumber, 6);
  EXPECT_EQ(findings.RememberedNumber, 0);
  EXPECT_EQ(findings.ErrorNumber, 5);
  EXPECT_EQ(findings.CreationFailure, 5);
}

}  // namespace
