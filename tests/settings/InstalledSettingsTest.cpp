#include "qm_ordering/platform/settings/InstalledSettings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/platform/value/Failure.h"
#include "tests/support/EnvironmentScope.h"
#include "tests/support/FailureOf.h"
#include "tests/support/MemorySettings.h"
#include "tests/support/TempFolder.h"

namespace {

using qm_ordering::Failure;
using qm_ordering::InstallSettings;
namespace failure = qm_ordering::failure;
namespace settings = qm_ordering::settings;
using test::FailureOf;
using test::SettingsScope;

// Every call into a component, by the name under which MemorySettings reports it.
struct ForeignCall {
  const char* zName;
  void (*Run)();
};

const ForeignCall kCalls[] = {
    {"create user settings", [] { settings::CreateUserSettings(); }},
    {"get LogPath", [] { settings::CreateUserSettings()->Get("LogPath"); }},
    {"create order defaults", [] { settings::CreateOrderDefaults(); }},
    {"default get KEY", [] { settings::CreateOrderDefaults()->Get("KEY"); }},
    {"default set KEY=1", [] { settings::CreateOrderDefaults()->Set("KEY", "1"); }},
    {"save", [] { settings::CreateOrderDefaults()->Save(); }},
    {"read registration", [] { settings::ReadRegistration(); }},
};

// What arrives when each of the calls throws so.
void ExpectAtEveryCall(const std::function<void()>& raise, std::int32_t lvNumber, const std::string& zvText) {
  const SettingsScope scope;
  for (const ForeignCall& call : kCalls) {
    scope->Before = [&](const std::string& zvCall) {
      if (zvCall == call.zName) {
        raise();
      }
    };
    const Failure caught = FailureOf(call.Run);
    EXPECT_EQ(lvNumber, caught.Number()) << call.zName;
    EXPECT_NE(std::string::npos, caught.Description().find(zvText)) << call.zName << caught.Description();
  }
}

TEST(InstalledSettings, HandsEveryCallToTheComponent) {
  const SettingsScope scope;
  scope->User["LogPath"] = "/logs";
  scope->Defaults["KEY"] = "old";
  scope->Registration.City = "Lund";
  EXPECT_EQ("/logs", settings::CreateUserSettings()->Get("LogPath"));
  {
    const auto oDefaults = settings::CreateOrderDefaults();
    EXPECT_EQ("old", oDefaults->Get("KEY"));
    oDefaults->Set("KEY", "new");
    oDefaults->Save();
  }
  EXPECT_EQ("Lund", settings::ReadRegistration().City);
  EXPECT_EQ((std::vector<std::string>{"create user settings", "get LogPath", "release user settings",
                                      "create order defaults", "default get KEY", "default set KEY=new",
                                      "save", "release order defaults", "read registration"}),
            scope->Calls);
}

TEST(InstalledSettings, LetsAFailureOfTheComponentThroughAsItIs) {
  ExpectAtEveryCall([] { throw Failure(4711, "the vault is shut"); }, 4711, "the vault is shut");
}

TEST(InstalledSettings, TurnsOtherExceptionsIntoFailuresWithTheirText) {
  ExpectAtEveryCall([] { throw std::runtime_error("no such hive"); }, failure::kInvalidCall, "no such hive");
}

TEST(InstalledSettings, TurnsExhaustedMemoryIntoItsOwnNumber) {
  ExpectAtEveryCall([] { throw std::bad_alloc(); }, failure::kOutOfMemory, "memory");
}

TEST(InstalledSettings, TurnsWhatIsNoExceptionIntoAFailure) {
  ExpectAtEveryCall([] { throw 17; }, failure::kInvalidCall, "settings component");
}

TEST(InstalledSettings, RefusesAComponentThatReturnsNothing) {
  class Empty : public qm_ordering::SettingsComponent {
   public:
    std::unique_ptr<qm_ordering::UserSettings> CreateUserSettings() override { return nullptr; }
    std::unique_ptr<qm_ordering::OrderDefaults> CreateOrderDefaults() override { return nullptr; }
    qm_ordering::RegistrationDetails ReadRegistration() override { return {}; }
  };
  const SettingsScope scope;
  InstallSettings(std::make_shared<Empty>());
  const Failure user = FailureOf([] { settings::CreateUserSettings(); });
  EXPECT_EQ(failure::kObjectNotSet, user.Number());
  EXPECT_NE(std::string::npos, user.Description().find("CreateUserSettings")) << user.Description();
  const Failure defaults = FailureOf([] { settings::CreateOrderDefaults(); });
  EXPECT_EQ(failure::kObjectNotSet, defaults.Number());
  EXPECT_NE(std::string::npos, defaults.Description().find("CreateOrderDefaults")) << defaults.Description();
}

TEST(InstalledSettings, ReadsTheDefaultFileWhereNoneIsInstalled) {
  const SettingsScope scope;
  InstallSettings(nullptr);
  const test::TempFolder folder;
  test::WriteFile(folder.File("own.ini"), "LogPath=/from/the/file\nReg_City=Oslo\n");
  const test::EnvironmentScope variable("QK_COMMON_SETTINGS", folder.File("own.ini").c_str());
  EXPECT_EQ("/from/the/file", settings::CreateUserSettings()->Get("LogPath"));
  EXPECT_EQ("Oslo", settings::ReadRegistration().City);
}

TEST(InstalledSettings, TakesTheLastComponentThatWasInstalled) {
  const SettingsScope scope;
  const auto oOther = std::make_shared<test::MemorySettings>();
  oOther->User["LogPath"] = "/other";
  InstallSettings(oOther);
  EXPECT_EQ("/other", settings::CreateUserSettings()->Get("LogPath"));
}

TEST(InstalledSettings, RefusesANewComponentOnceFixed) {
  const SettingsScope scope;
  scope->User["LogPath"] = "/first";
  settings::Fix();
  EXPECT_EQ(failure::kInvalidCall,
            FailureOf([] { InstallSettings(std::make_shared<test::MemorySettings>()); }).Number());
  EXPECT_EQ(failure::kInvalidCall, FailureOf([] { InstallSettings(nullptr); }).Number());
  EXPECT_EQ("/first", settings::CreateUserSettings()->Get("LogPath"));
  settings::Unfix();
  InstallSettings(nullptr);
}

TEST(InstalledSettings, BelongToTheirThread) {
  const SettingsScope scope;
  scope->User["LogPath"] = "/mine";
  settings::Fix();
  std::thread([] {
    const auto oTheirs = std::make_shared<test::MemorySettings>();
    oTheirs->User["LogPath"] = "/theirs";
    InstallSettings(oTheirs);
    EXPECT_EQ("/theirs", settings::CreateUserSettings()->Get("LogPath"));
  }).join();
  EXPECT_EQ("/mine", settings::CreateUserSettings()->Get("LogPath"));
}

// A host's per-thread object that outlives the library's own.
struct LateReader {
  ~LateReader() {
    if (pAnswer != nullptr) {
      *pAnswer = settings::CreateUserSettings()->Get("LogPath");
      InstallSettings(std::make_shared<test::MemorySettings>());
    }
  }
  std::string* pAnswer = nullptr;
};

TEST(InstalledSettings, AnswerFromTheDefaultFileWhileAThreadEnds) {
  const test::TempFolder folder;
  test::WriteFile(folder.File("own.ini"), "LogPath=/late\n");
  const test::EnvironmentScope variable("QK_COMMON_SETTINGS", folder.File("own.ini").c_str());
  std::string zAnswer;
  std::thread([&] {
    thread_local LateReader reader;
    reader.pAnswer = &zAnswer;
    InstallSettings(std::make_shared<test::MemorySettings>());
    EXPECT_EQ("", settings::CreateUserSettings()->Get("LogPath"));
  }).join();
  EXPECT_EQ("/late", zAnswer);
}

TEST(InstalledSettings, ReleaseTheComponentWhenTheirThreadEnds) {
  std::weak_ptr<test::MemorySettings> oWatched;
  std::thread([&] {
    const auto oComponent = std::make_shared<test::MemorySettings>();
    oWatched = oComponent;
    InstallSettings(oComponent);
  }).join();
  EXPECT_TRUE(oWatched.expired());
}

}  // namespace
