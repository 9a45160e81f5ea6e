#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "qm_ordering/store/OrderStore.h"
#include "tests/c_interface/CHost.h"
#include "tests/support/LegacyTables.h"
#include "tests/support/StoreFixture.h"

namespace {

using namespace test;

constexpr std::int32_t kFailure = 4711;

// A settings component of functions, of which one may fail.
struct Component {
  std::string Folder;
  std::string Failing = {};  // "order_default" or the like
  std::string Why = "The host does not like it";
  std::map<std::string, std::string> Defaults = {};
  int Saved = 0;
  int Disposed = 0;
  std::function<void()> InUserSetting = {};

  std::int32_t Answer(const char* zvFunction, std::string_view zvText, qm_ordering_reply* reply) const {
    if (Failing == zvFunction) {
      EXPECT_EQ(0, qm_ordering_answer(reply, Why.data(), Why.size()));
      return kFailure;
    }
    EXPECT_EQ(0, qm_ordering_answer(reply, zvText.data(), zvText.size()));
    return 0;
  }
};

Component& In(void* payload) {
  return *static_cast<Component*>(payload);
}

std::int32_t UserSetting(const char* key, qm_ordering_reply* value, void* payload) {
  if (In(payload).InUserSetting) {
    In(payload).InUserSetting();
  }
  return In(payload).Answer("user_setting",
                            std::strcmp(key, "OrderingDatabasePath") == 0 ? In(payload).Folder : "", value);
}

std::int32_t OrderDefault(const char* key, qm_ordering_reply* value, void* payload) {
  return In(payload).Answer("order_default", In(payload).Defaults[key], value);
}

std::int32_t SetOrderDefault(const char* key, const char* data, std::size_t length, qm_ordering_reply* reply,
                             void* payload) {
  In(payload).Defaults[key].assign(data, length);
  return In(payload).Answer("set_order_default", "", reply);
}

std::int32_t SaveOrderDefaults(qm_ordering_reply* reply, void* payload) {
  ++In(payload).Saved;
  return In(payload).Answer("save_order_defaults", "", reply);
}

std::int32_t Registration(const char* field, qm_ordering_reply* value, void* payload) {
  return In(payload).Answer("registration", std::string("my ") + field, value);
}

void Dispose(void* payload) {
  ++In(payload).Disposed;
}

constexpr qm_ordering_settings kFunctions = {UserSetting,       OrderDefault, SetOrderDefault,
                                             SaveOrderDefaults, Registration, Dispose};

// A store, and a thread for each host: a thread's settings are chosen once.
class CInterfaceSettings : public testing::Test {
 protected:
  CInterfaceSettings() {
    Host.Folder = Folder.Path();
    EXPECT_EQ(0, qm_ordering_create_order_store(Host.Folder.c_str()));
  }

  // Runs on a thread with the settings, and the thread's end.
  void OnAThread(const std::function<void()>& work) {
    std::thread([&] {
      ASSERT_EQ(0, qm_ordering_install_settings(&kFunctions, &Host));
      work();
      EXPECT_EQ(0, Host.Disposed);
    }).join();
    EXPECT_EQ(1, Host.Disposed);
  }

  static std::string RecordText(qm_ordering_object object) {
    return Get(Get(object, "Error").Object(), "Description").Text();
  }

  TempFolder Folder;
  Component Host;
};

class CInterfaceCallbacks : public StoreFixture {
 public:
  int Called = 0;
  std::string Text;
  std::function<void()> Within;
};

std::int32_t Stop(const char* data, std::size_t length, qm_ordering_reply* reply, void* payload) {
  auto& test = *static_cast<CInterfaceCallbacks*>(payload);
  ++test.Called;
  test.Text.assign(data, length);
  EXPECT_EQ('\0', data[length]);
  EXPECT_EQ(0, qm_ordering_answer(reply, "not now", 7));
  return kFailure;
}

std::int32_t Show(const char* data, std::size_t length, qm_ordering_reply*, void* payload) {
  auto& test = *static_cast<CInterfaceCallbacks*>(payload);
  ++test.Called;
  test.Text.append(data, length).append("\n");
  if (const auto within = std::exchange(test.Within, {})) {
    within();
  }
  return 0;
}

}  // namespace

TEST_F(CInterfaceSettings, DefaultsAndRegistrationGoThroughTheFunctions) {
  OnAThread([&] {
    const CObject order("CurrentOrder");
    ASSERT_EQ(0, NumberOfCall(order, "ApplyRegistrationSettings"));
    const CObject details = Get(order, "OrderDetails").Object();
    const CObject delivery = Get(details, "DeliveryInformation").Object();
    EXPECT_EQ("my City", Get(delivery, "City").Text());
    EXPECT_EQ("my TelephoneExt", Get(delivery, "PhoneExt").Text());
    using namespace std::string_view_literals;
    Put(delivery, "Notes", TextValue("zero\0within"sv));
    ASSERT_EQ(0, NumberOfCall(order, "SaveSummary"));
    EXPECT_EQ(0, RecordOf(order));
    EXPECT_EQ("my City", Host.Defaults["DEFAULT_DI_CITY"]);
    EXPECT_EQ("zero\0within"sv, Host.Defaults["DEFAULT_DI_NOTES"]);
    EXPECT_GE(Host.Saved, 1);
  });
}

TEST_F(CInterfaceSettings, AFailingUserSettingFailsTheFirstObjectUntilItWorks) {
  OnAThread([&] {
    Host.Failing = "user_setting";
    qm_ordering_object order = 1;
    EXPECT_EQ(kFailure, qm_ordering_create("CurrentOrder", &order));
    EXPECT_EQ(0u, order);
    EXPECT_EQ(Host.Why, FailureText());
    CValue path;
    EXPECT_EQ(kFailure, qm_ordering_order_store_path(&path));
    Host.Why = "";
    EXPECT_EQ(kFailure, qm_ordering_create("CurrentOrder", &order));
    EXPECT_EQ("The host's function user_setting failed with number 4711 and did not say why.", FailureText());
    Host.Failing = "";
    EXPECT_EQ(0, qm_ordering_create("CurrentOrder", &order));
    EXPECT_EQ(0, qm_ordering_release(order));
    EXPECT_EQ(5, qm_ordering_install_settings(&kFunctions, &Host));
  });
}

TEST_F(CInterfaceSettings, EachOtherFailingFunctionIsInTheRecordWithItsNumberAndText) {
  OnAThread([&] {
    const CObject order("CurrentOrder");
    const std::map<std::string, const char*> members = {{"set_order_default", "SaveSummary"},
                                                        {"save_order_defaults", "SaveSummary"},
                                                        {"registration", "ApplyRegistrationSettings"}};
    for (const auto& [zFunction, zMember] : members) {
      Host.Failing = zFunction;
      EXPECT_EQ(0, qm_ordering_clear_last_failure());
      const std::int32_t lNumber = NumberOfCall(order, zMember);
      qm_ordering_failure last{};
      EXPECT_EQ(0, qm_ordering_last_failure(&last));
      if (lNumber == 0) {
        EXPECT_EQ(5, RecordOf(order)) << zFunction;
        EXPECT_NE(std::string::npos, RecordText(order).find("4711")) << RecordText(order);
        EXPECT_NE(std::string::npos, RecordText(order).find(Host.Why)) << RecordText(order);
        EXPECT_EQ(kFailure, last.number) << zFunction;
        EXPECT_TRUE(std::string(last.description.data).ends_with(Host.Why)) << last.description.data;
      } else {
        EXPECT_EQ(kFailure, lNumber) << zFunction;
        EXPECT_EQ(Host.Why, FailureText()) << zFunction;
      }
      Host.Failing = "";
      EXPECT_EQ(0, NumberOfCall(order, zMember)) << zFunction;
      EXPECT_EQ(0, RecordOf(order)) << zFunction;
    }
  });
}

TEST_F(CInterfaceSettings, AFailingOrderDefaultLeavesNoNewOrder) {
  OnAThread([&] {
    Host.Failing = "order_default";
    EXPECT_EQ(0, qm_ordering_clear_last_failure());
    { const CObject order("CurrentOrder"); }
    qm_ordering_failure last{};
    EXPECT_EQ(0, qm_ordering_last_failure(&last));
    EXPECT_EQ(kFailure, last.number);
    EXPECT_EQ(Host.Why, last.description.data);
    Host.Failing = "";
    const CObject order("CurrentOrder");
    const CObject details = Get(order, "OrderDetails").Object();
    EXPECT_EQ(0, RecordOf(details));
    EXPECT_GT(Get(details, "OrderID")->as.integer, 0);
  });
}

TEST_F(CInterfaceSettings, AComponentIsDisposedOfOnceWhenAnotherTakesItsPlace) {
  Component other{.Folder = Host.Folder};
  std::thread([&] {
    ASSERT_EQ(0, qm_ordering_install_settings(&kFunctions, &Host));
    ASSERT_EQ(0, qm_ordering_install_settings(&kFunctions, &other));
    EXPECT_EQ(1, Host.Disposed);
    EXPECT_EQ(0, other.Disposed);
    ASSERT_EQ(0, qm_ordering_install_settings(nullptr, nullptr));
    EXPECT_EQ(1, other.Disposed);
  }).join();
  EXPECT_EQ(1, Host.Disposed);
  EXPECT_EQ(1, other.Disposed);
}

TEST_F(CInterfaceSettings, AComponentThatIsRefusedStaysTheHosts) {
  Component other{.Folder = Host.Folder};
  OnAThread([&] {
    qm_ordering_settings nothing = kFunctions;
    nothing.user_setting = nullptr;
    EXPECT_EQ(91, qm_ordering_install_settings(&nothing, &other));
    const CObject item("OrderItem");
    EXPECT_EQ(5, qm_ordering_install_settings(&kFunctions, &other));
    EXPECT_EQ(5, qm_ordering_install_settings(nullptr, nullptr));
  });
  EXPECT_EQ(0, other.Disposed);
}

TEST_F(CInterfaceSettings, FunctionsThatAreLackingKnowNothingAndKeepNothing) {
  std::thread([&] {
    const qm_ordering_settings least = {UserSetting, nullptr, nullptr, nullptr, nullptr, nullptr};
    ASSERT_EQ(0, qm_ordering_install_settings(&least, &Host));
    const CObject order("CurrentOrder");
    EXPECT_EQ(0, NumberOfCall(order, "ApplyRegistrationSettings"));
    EXPECT_EQ(0, RecordOf(order));
    EXPECT_EQ(0, NumberOfCall(order, "SaveSummary"));
    EXPECT_EQ(0, RecordOf(order));
  }).join();
}

TEST_F(CInterfaceSettings, AFunctionMayUseTheLibrary) {
  OnAThread([&] {
    int lCalls = 0;
    Host.InUserSetting = [&] {
      if (++lCalls == 1) {
        // The start-up runs within itself, and both end.
        const CObject item("OrderItem");
        Put(item, "Quantity", IntegerValue(3));
        EXPECT_EQ(3, Get(item, "Quantity")->as.integer);
        EXPECT_EQ(5, qm_ordering_install_settings(nullptr, nullptr));
      }
    };
    const CObject order("CurrentOrder");
    EXPECT_GT(lCalls, 1);
    EXPECT_EQ(0, NumberOfCall(order, "LoadItems", {IntegerValue(0)}));
    EXPECT_EQ(0, RecordOf(order));
  });
}

TEST_F(CInterfaceSettings, AComponentMayBeReplacedFromWithinItself) {
  Component other{.Folder = Host.Folder};
  std::thread([&] {
    ASSERT_EQ(0, qm_ordering_install_settings(&kFunctions, &Host));
    Host.InUserSetting = [&] {
      Host.InUserSetting = {};
      EXPECT_EQ(0, qm_ordering_install_settings(&kFunctions, &other));
    };
    const CObject item("OrderItem");
  }).join();
  EXPECT_EQ(1, Host.Disposed);
  EXPECT_EQ(1, other.Disposed);
}

TEST_F(CInterfaceSettings, AFileMayHoldThem) {
  const std::string zFile = Folder.File("settings.ini");
  WriteFile(zFile, "OrderingDatabasePath=" + Folder.Path() + "\n");
  std::thread([&] {
    ASSERT_EQ(0, qm_ordering_install_settings_file(zFile.c_str()));
    CValue path;
    EXPECT_EQ(0, qm_ordering_order_store_path(&path));
    EXPECT_EQ(Folder.File("Orders.mdb"), path.Text());
  }).join();
}

TEST_F(CInterfaceCallbacks, ATraceSeesEachStatementAndCanStopIt) {
  const CObject order("CurrentOrder");
  const CObject item("OrderItem");
  Put(item, "ItemNumber", TextValue("4QX17"));
  ASSERT_EQ(0, qm_ordering_set_statement_trace(Stop, static_cast<CInterfaceCallbacks*>(this)));
  const Rows before = Store.Everything();
  // A member that raises what its first statement raises, and one that records it.
  EXPECT_EQ(kFailure, NumberOfCall(order, "AddItem", {ObjectValue(item)}));
  EXPECT_EQ("not now", FailureText());
  EXPECT_EQ(1, Called);
  EXPECT_NE(std::string::npos, Text.find("4QX17")) << Text;
  EXPECT_EQ(0, NumberOfCall(order, "SaveSummary"));
  EXPECT_EQ(5, RecordOf(order));
  qm_ordering_failure last{};
  EXPECT_EQ(0, qm_ordering_last_failure(&last));
  EXPECT_EQ(kFailure, last.number);
  EXPECT_STREQ("not now", last.description.data);
  EXPECT_EQ(2, Called);
  EXPECT_EQ(before, Store.Everything());
  ASSERT_EQ(0, qm_ordering_set_statement_trace(nullptr, nullptr));
  EXPECT_EQ(0, NumberOfCall(order, "AddItem", {ObjectValue(item)}));
  EXPECT_EQ(0, RecordOf(order));
  EXPECT_EQ(2, Called);
}

TEST_F(CInterfaceCallbacks, ATraceMayUseTheLibraryAndEndItself) {
  const CObject order("CurrentOrder");
  ASSERT_EQ(0, qm_ordering_set_statement_trace(Show, static_cast<CInterfaceCallbacks*>(this)));
  Within = [&] {
    EXPECT_EQ(0, qm_ordering_set_statement_trace(nullptr, nullptr));
    const CObject other("CurrentOrder");
    EXPECT_EQ(0, NumberOfCall(other, "LoadItems", {IntegerValue(0)}));
    EXPECT_EQ(0, RecordOf(other));
  };
  EXPECT_EQ(0, NumberOfCall(order, "LoadItems", {IntegerValue(0)}));
  EXPECT_EQ(0, RecordOf(order));
  EXPECT_EQ(1, Called);
}

TEST_F(CInterfaceCallbacks, AnObjectMayBeReleasedByACallbackOfItsOwnCall) {
  CObject order("CurrentOrder");
  ASSERT_EQ(0, qm_ordering_set_statement_trace(Show, static_cast<CInterfaceCallbacks*>(this)));
  const qm_ordering_object number = order;
  Within = [&] { order.Release(); };
  EXPECT_EQ(0, NumberOfCall(order, "LoadItems", {IntegerValue(0)}));
  EXPECT_EQ(91, qm_ordering_retain(number));
  ASSERT_EQ(0, qm_ordering_set_statement_trace(nullptr, nullptr));
}

namespace {

struct Progress {
  std::int64_t CancelAt = -1;
  std::int64_t FailAt = -1;
  std::vector<std::int64_t> Lines = {};
  qm_ordering_object Order = 0;
};

std::int32_t Follow(std::int64_t orders, std::int64_t lines, std::int64_t lines_in_all, std::int32_t* go_on,
                    qm_ordering_reply* reply, void* payload) {
  auto& progress = *static_cast<Progress*>(payload);
  EXPECT_EQ(kSmallLines, lines_in_all);
  EXPECT_LE(orders, kSmallOrders);
  EXPECT_EQ(1, *go_on);
  progress.Lines.push_back(lines);
  if (lines == progress.FailAt) {
    EXPECT_EQ(0, qm_ordering_answer(reply, "enough", 6));
    return kFailure;
  }
  if (progress.Order != 0) {
    // The store is in the middle of the import.
    EXPECT_EQ(5, NumberOfCall(progress.Order, "LoadItems", {IntegerValue(0)}));
  }
  *go_on = lines == progress.CancelAt ? 0 : 1;
  return 0;
}

std::int32_t Fail(std::int64_t, std::int64_t, qm_ordering_reply* reply, void* payload) {
  ++*static_cast<int*>(payload);
  EXPECT_EQ(0, qm_ordering_answer(reply, "enough", 6));
  return kFailure;
}

}  // namespace

TEST_F(CInterfaceCallbacks, AnImportIsFollowedCancelledAndFailedByTheHost) {
  const std::string& zTables = SmallLegacyTables();
  const CObject order("CurrentOrder");
  const CObject importer("OrderHistoryImporter");
  const Rows before = Store.Everything();
  Progress progress;
  ASSERT_EQ(0, qm_ordering_on_import_progress(importer, Follow, &progress));

  progress.CancelAt = 2;
  EXPECT_EQ(0, Call(importer, "ApplyImports", {TextValue(zTables)})->as.integer);
  EXPECT_EQ((std::vector<std::int64_t>{0, 1, 2}), progress.Lines);
  EXPECT_EQ(before, Store.Everything());

  progress = {.FailAt = 1};
  EXPECT_EQ(kFailure, NumberOfCall(importer, "ApplyImports", {TextValue(zTables)}));
  EXPECT_EQ("enough", FailureText());
  EXPECT_EQ(before, Store.Everything());

  progress = {.Order = order};
  EXPECT_EQ(kSmallOrders, Call(importer, "ApplyImports", {TextValue(zTables)})->as.integer);
  EXPECT_EQ(1u + kSmallLines, progress.Lines.size());

  ASSERT_EQ(0, qm_ordering_on_import_progress(importer, nullptr, nullptr));
  EXPECT_EQ(kSmallOrders, Call(importer, "ApplyImports", {TextValue(zTables)})->as.integer);
  EXPECT_EQ(1u + kSmallLines, progress.Lines.size());
}

TEST_F(CInterfaceCallbacks, ACopyOfTheStoreEndsWithTheHostsFailure) {
  const std::string zFile = Folder.File("backup");
  qm_ordering_object findings = 1;
  int lCalled = 0;
  EXPECT_EQ(kFailure, qm_ordering_backup_order_store(zFile.c_str(), &findings, Fail, &lCalled));
  EXPECT_EQ("enough The backup " + zFile + " was not made.", FailureText());
  EXPECT_EQ(0u, findings);
  EXPECT_EQ(1, lCalled);
  EXPECT_FALSE(std::filesystem::exists(zFile));
  ASSERT_EQ(0, qm_ordering_backup_order_store(zFile.c_str(), &findings, nullptr, nullptr));
  EXPECT_EQ(0, Get(CObject(findings), "Count")->as.integer);
  const Rows before = Store.Everything();
  CValue kept;
  EXPECT_EQ(kFailure, qm_ordering_restore_order_store(zFile.c_str(), &kept, Fail, &lCalled));
  EXPECT_EQ(QM_ORDERING_MISSING, kept->kind);
  EXPECT_EQ(2, lCalled);
  EXPECT_EQ(before, Store.Everything());
}
