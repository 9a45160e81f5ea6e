// Any sequence of calls of the C interface, with arguments of every kind and objects that live, were released
// or never were: each answers 0 or a failure that it can tell, nothing is thrown, and when the host has given
// back what it was given, nothing of it is left. The settings component and the statement trace fail now and
// then, and the store is a new one for each input.

#include <fuzzer/FuzzedDataProvider.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <limits>
#include <list>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/qm_ordering_c.h"
#include "tests/fuzz/Require.h"
#include "tests/support/TempFolder.h"

namespace {

using fuzz::Require;

constexpr std::int32_t kWrongThread = -2147417842;
constexpr std::size_t kMostObjects = 24;

// How many functions of the interface were called; said when the program ends.
class CallCount {
 public:
  ~CallCount() { dprintf(STDERR_FILENO, "counted: %llu calls\n", m_lCalls); }
  void Add() { ++m_lCalls; }

 private:
  unsigned long long m_lCalls = 0;
};
CallCount g_oCalls;

// What a call answered, when it was made the way that every call is.
template <typename Function, typename... Arguments>
std::int32_t Call(Function function, Arguments... arguments) {
  g_oCalls.Add();
  const std::int32_t lNumber = function(arguments...);
  if (lNumber != 0) {
    g_oCalls.Add();
    qm_ordering_failure failure{};
    Require(qm_ordering_get_failure(&failure) == 0, "a failure can be asked for");
    Require(failure.number == lNumber, "the failure told is the one answered: " + std::to_string(lNumber) +
                                           " and " + std::to_string(failure.number));
    Require(failure.description.length > 0, "a failure says what failed");
    Require(std::strlen(failure.description.data) <= failure.description.length, "a text ends with a zero");
  }
  return lNumber;
}

// The host's settings, with calls until one fails; below 0: none does.
struct Host {
  std::string Folder;
  int UntilSettingsFail = -1;
  int UntilTraceFails = -1;
  int UntilProgressFails = -1;
  int Disposed = 0;
  std::function<void()> WithinTrace{};  // what the trace calls of the library
};

constexpr std::int32_t kHostsFailure = 4711;

std::int32_t FailsNow(int& lrUntil, qm_ordering_reply* reply) {
  if (lrUntil < 0 || lrUntil-- > 0) {
    return 0;
  }
  g_oCalls.Add();
  qm_ordering_answer(reply, "no", 2);
  return kHostsFailure;
}

std::int32_t Give(std::string_view zvText, qm_ordering_reply* reply) {
  g_oCalls.Add();
  return qm_ordering_answer(reply, zvText.data(), zvText.size());
}

std::int32_t ReadSetting(const char* key, qm_ordering_reply* reply, void* payload) {
  Host& host = *static_cast<Host*>(payload);
  if (const std::int32_t lNumber = FailsNow(host.UntilSettingsFail, reply)) {
    return lNumber;
  }
  return Give(host.Folder + (std::strcmp(key, "OrderingDatabasePath") == 0 ? "" : "/others"), reply);
}

std::int32_t ReadText(const char* key, qm_ordering_reply* reply, void* payload) {
  if (const std::int32_t lNumber = FailsNow(static_cast<Host*>(payload)->UntilSettingsFail, reply)) {
    return lNumber;
  }
  return Give(std::strstr(key, "METHOD") != nullptr ? "1" : key, reply);
}

std::int32_t SetDefault(const char*, const char*, std::size_t, qm_ordering_reply* reply, void* payload) {
  return FailsNow(static_cast<Host*>(payload)->UntilSettingsFail, reply);
}

std::int32_t SaveDefaults(qm_ordering_reply* reply, void* payload) {
  return FailsNow(static_cast<Host*>(payload)->UntilSettingsFail, reply);
}

void Dispose(void* payload) {
  ++static_cast<Host*>(payload)->Disposed;
}

std::int32_t Trace(const char*, std::size_t, qm_ordering_reply* reply, void* payload) {
  Host& host = *static_cast<Host*>(payload);
  // Once: the statements that it causes are shown, too.
  if (const auto within = std::exchange(host.WithinTrace, nullptr)) {
    within();
    host.WithinTrace = within;
  }
  return FailsNow(host.UntilTraceFails, reply);
}

std::int32_t ImportProgress(std::int64_t, std::int64_t lines, std::int64_t, std::int32_t* go_on,
                            qm_ordering_reply* reply, void* payload) {
  *go_on = lines < 3 ? 1 : 0;
  return FailsNow(static_cast<Host*>(payload)->UntilProgressFails, reply);
}

std::int32_t StoreProgress(std::int64_t, std::int64_t, qm_ordering_reply* reply, void* payload) {
  return FailsNow(static_cast<Host*>(payload)->UntilProgressFails, reply);
}

// What the interface gives and takes texts of.
std::string_view TextOf(const qm_ordering_value& value) {
  return {value.as.text.data, value.as.text.length};
}

// The store of all inputs, in memory where there is such a folder.
class Store {
 public:
  Store() {
    Require(qm_ordering_create_order_store(Folder().c_str()) == 0, "a store can be made");
    m_zPristine = test::ReadFile(File());
    setenv("XDG_CONFIG_HOME", "/nonexistent/config", 1);
    Require(chdir(m_oFolder.Path().c_str()) == 0, "the folder can be the current one");
  }

  std::string Folder() const { return m_oFolder.File("store"); }
  std::string File() const { return Folder() + "/Orders.mdb"; }

  // As it was made, and nothing beside it.
  void Renew() const {
    qm_ordering::ado::embedded::CloseIdleSessions();
    for (const auto& entry : std::filesystem::directory_iterator(Folder())) {
      std::filesystem::remove_all(entry);
    }
    test::WriteFile(File(), m_zPristine);
    test::WriteFile("settings.ini", "OrderingDatabasePath=" + Folder() + "\n");
  }

 private:
  static bool UseMemory() {
    return std::filesystem::is_directory("/dev/shm") && setenv("TMPDIR", "/dev/shm", 1) == 0;
  }
  const bool m_bInMemory = UseMemory();
  test::TempFolder m_oFolder;
  std::string m_zPristine;
};

// An object that the host holds.
struct Held {
  qm_ordering_object Object;
  int References;
};

// Texts that members look at: keys, numbers, a folder of tables, and what is hard to store or to write.
constexpr std::string_view kZero("4QX\0 17", 7);
constexpr std::array<std::string_view, 18> kTexts = {"",
                                                     "4QX17",
                                                     "4qx17",
                                                     "4QX18",
                                                     kZero,
                                                     "O'Brien's \"<&>\"",
                                                     "1",
                                                     "-1",
                                                     "922337203685477.5807",
                                                     "1e400",
                                                     "True",
                                                     "2003-07-04 15:04:05",
                                                     "Tools",
                                                     "M\xC3\xBCller \xE2\x82\xAC",
                                                     "\xFF\xFE",
                                                     "\x01\x02",
                                                     QM_ORDERING_SOURCE_DIR "/tests/dbase/data",
                                                     "nowhere"};
constexpr std::array<std::int32_t, 12> kIntegers = {0,  1,  2,   3,    6,          12,
                                                    -1, -2, 100, 2003, 2147483647, -2147483647 - 1};
constexpr std::array<double, 8> kDoubles = {0.0,
                                            0.5,
                                            -1.00005,
                                            1e15,
                                            1e308,
                                            std::numeric_limits<double>::infinity(),
                                            std::numeric_limits<double>::quiet_NaN(),
                                            std::numeric_limits<double>::denorm_min()};
constexpr std::array<std::int64_t, 6> kCurrencies = {0,
                                                     1,
                                                     -125000,
                                                     114725,
                                                     std::numeric_limits<std::int64_t>::max(),
                                                     std::numeric_limits<std::int64_t>::min()};

class Session {
 public:
  Session(FuzzedDataProvider& bytes, Host& host) : m_oBytes(bytes), m_oHost(host) {
    g_oCalls.Add();
    Require(qm_ordering_classes(&m_pClasses, &m_lClasses) == 0, "there are classes");
  }

  void Run() {
    while (m_oBytes.remaining_bytes() > 0) {
      Step();
    }
  }

  // Gives everything back.
  void End() {
    for (Held& held : m_oObjects) {
      for (; held.References > 0; --held.References) {
        Require(Call(qm_ordering_release, held.Object) == 0, "what the host holds can be released");
      }
      Require(Call(qm_ordering_retain, held.Object) == 91, "what was released is gone");
    }
    m_oObjects.clear();
    m_oHost.WithinTrace = nullptr;
  }

 private:
  template <typename T, std::size_t N>
  T Pick(const std::array<T, N>& values) {
    return values[m_oBytes.ConsumeIntegralInRange<std::size_t>(0, N - 1)];
  }
  std::size_t Below(std::size_t lvEnd) { return m_oBytes.ConsumeIntegralInRange<std::size_t>(0, lvEnd - 1); }

  void Step() {
    m_lInUse = 0;
    switch (Below(32)) {
      case 0:
      case 1:
        return Create(AnyClass());
      case 2:
        return UseAnyName();
      case 3:
        return Walk();
      case 4:
        return Retain();
      case 5:
        return Release();
      case 6:
        return Describe();
      case 7:
        return Failures();
      case 8:
        m_oHost.UntilSettingsFail = static_cast<int>(Below(40)) - 1;
        return;
      case 9:
        return SetTrace();
      case 10:
        return Follow();
      case 11:
        return Install();
      case 12:
        return WorkHard();
      default:
        return UseMember();
    }
  }

  // What takes as long as hundreds of other calls.
  void WorkHard() {
    switch (Below(8)) {
      case 0:
        return Maintain();
      case 1:
        return Copy();
      case 2:
        return UseAnotherThread();
      default:
        return UseMember();
    }
  }

  std::string AnyClass() {
    const std::size_t lClass = Below(m_lClasses + 3);
    if (lClass < m_lClasses) {
      return (m_oBytes.ConsumeBool() ? "QM_Ordering." : "") + std::string(m_pClasses[lClass]->name);
    }
    return lClass == m_lClasses ? "currentorder" : m_oBytes.ConsumeRandomLengthString(20);
  }

  void Create(const std::string& zvClass) {
    qm_ordering_object object = 1;
    const bool bNowhere = Below(64) == 0;
    const std::int32_t lNumber = Call(qm_ordering_create, zvClass.c_str(), bNowhere ? nullptr : &object);
    if (!bNowhere) {
      Require((lNumber == 0) == (object != 0), "an object is made, or a failure told");
      Keep(object);
    }
  }

  // The host has got a reference.
  void Keep(qm_ordering_object object) {
    if (object == 0) {
      return;
    }
    const auto found = std::ranges::find(m_oObjects, object, &Held::Object);
    if (found != m_oObjects.end()) {
      ++found->References;
      return;
    }
    m_oObjects.push_back({object, 1});
    if (m_oObjects.size() > kMostObjects) {
      const Held oldest = m_oObjects.front();
      m_oObjects.pop_front();
      m_oReleased.push_back(oldest.Object);
      for (int i = 0; i < oldest.References; ++i) {
        Require(Call(qm_ordering_release, oldest.Object) == 0, "what the host holds can be released");
      }
    }
  }

  // One that lives; seldom one that was released, never was, or is another thread's.
  qm_ordering_object AnyObject() {
    const std::size_t lWhich = Below(32);
    if (lWhich == 0) {
      return m_oReleased.empty() ? 0 : m_oReleased[Below(m_oReleased.size())];
    }
    if (lWhich == 1) {
      return m_oBytes.ConsumeIntegral<std::uint64_t>();
    }
    if (m_oObjects.empty()) {
      return 0;
    }
    return std::next(m_oObjects.begin(), static_cast<std::ptrdiff_t>(Below(m_oObjects.size())))->Object;
  }

  const char* ClassOf(qm_ordering_object object) {
    const char* zName = "";
    const std::int32_t lNumber = Call(qm_ordering_class_name, object, &zName);
    Require((lNumber == 0) == (zName != nullptr), "an object has a class, or a failure is told");
    return zName;
  }

  const qm_ordering_class* DescriptionOf(qm_ordering_object object) {
    const char* zName = ClassOf(object);
    if (zName == nullptr) {
      return nullptr;
    }
    const qm_ordering_class* pClass = nullptr;
    Require(Call(qm_ordering_describe, zName, &pClass) == 0, "each class is described");
    return pClass;
  }

  qm_ordering_value ObjectOf(std::string_view zvClass) {
    qm_ordering_value value{};
    value.kind = QM_ORDERING_OBJECT;
    for (const Held& held : m_oObjects) {
      if (ClassOf(held.Object) == zvClass) {
        value.as.object = held.Object;
      }
    }
    if (value.as.object == 0 || Below(8) == 0) {
      if (Call(qm_ordering_create, std::string(zvClass).c_str(), &value.as.object) == 0) {
        Keep(value.as.object);
      }
    }
    return value;
  }

  qm_ordering_value TextValue(std::string_view zvText) {
    qm_ordering_value value{};
    value.kind = QM_ORDERING_TEXT;
    // Of its own bytes, so that who reads behind them is caught.
    m_oTexts.emplace_back(zvText.begin(), zvText.end());
    value.as.text = {m_oTexts.back().data(), m_oTexts.back().size()};
    return value;
  }

  qm_ordering_value AnyText() {
    return TextValue(Below(3) == 0 ? m_oBytes.ConsumeRandomLengthString(40) : Pick(kTexts));
  }

  // A value of the wanted type mostly, else of any kind.
  qm_ordering_value AnyValue(std::string_view zvType) {
    if (Below(5) != 0) {
      if (zvType == "String") {
        return AnyText();
      }
      if (zvType == "Integer") {
        return Value(QM_ORDERING_INTEGER);
      }
      if (zvType == "Currency") {
        return Value(QM_ORDERING_CURRENCY);
      }
      if (zvType == "Boolean") {
        return Value(QM_ORDERING_BOOLEAN);
      }
      if (zvType == "Date") {
        return Value(QM_ORDERING_DATE);
      }
      if (zvType != "Variant") {
        return ObjectOf(zvType);
      }
    }
    return Value(static_cast<std::int32_t>(Below(13)) - 1);
  }

  qm_ordering_value Value(std::int32_t lvKind) {
    qm_ordering_value value{};
    value.kind = lvKind;
    switch (lvKind) {
      case QM_ORDERING_BOOLEAN:
        value.as.boolean = Pick(kIntegers);
        break;
      case QM_ORDERING_INTEGER:
        value.as.integer = Below(3) == 0 ? m_oBytes.ConsumeIntegral<std::int32_t>() : Pick(kIntegers);
        break;
      case QM_ORDERING_DOUBLE:
        value.as.number = Below(3) == 0 ? m_oBytes.ConsumeFloatingPoint<double>() : Pick(kDoubles);
        break;
      case QM_ORDERING_CURRENCY:
        value.as.currency = Below(3) == 0 ? m_oBytes.ConsumeIntegral<std::int64_t>() : Pick(kCurrencies);
        break;
      case QM_ORDERING_DATE:
        value.as.date = {2003, 7, 4, 15, 4, 5};
        if (Below(4) == 0) {
          value.as.date = {m_oBytes.ConsumeIntegral<std::int32_t>(),
                           Pick(kIntegers),
                           Pick(kIntegers),
                           Pick(kIntegers),
                           Pick(kIntegers),
                           Pick(kIntegers)};
        }
        break;
      case QM_ORDERING_TEXT:
        if (Below(8) == 0) {
          value.as.text = {nullptr, Below(2)};
          break;
        }
        return AnyText();
      case QM_ORDERING_OBJECT:
        value.as.object = AnyObject();
        break;
      default:
        break;
    }
    return value;
  }

  // What a call gave: is it whole, and is it given back or kept.
  void Take(std::int32_t lvNumber, qm_ordering_value& orValue) {
    Require(lvNumber == 0 || orValue.kind == QM_ORDERING_MISSING, "a failed call gives nothing");
    Require(orValue.kind >= QM_ORDERING_MISSING && orValue.kind <= QM_ORDERING_OBJECT, "a value has a kind");
    if (orValue.kind == QM_ORDERING_BOOLEAN) {
      Require(orValue.as.boolean == 0 || orValue.as.boolean == 1, "a boolean is 0 or 1");
    }
    if (orValue.kind == QM_ORDERING_TEXT) {
      Require(TextOf(orValue).data()[TextOf(orValue).size()] == '\0', "a text has a zero behind it");
    }
    if (orValue.kind == QM_ORDERING_OBJECT) {
      Keep(orValue.as.object);
      return;
    }
    Require(Call(qm_ordering_clear, &orValue) == 0, "a value can be cleared");
    Require(orValue.kind == QM_ORDERING_MISSING, "what was cleared is missing");
  }

  // A member that the class has, or one of no name.
  void UseMember() {
    const qm_ordering_object object = AnyObject();
    const qm_ordering_class* pClass = DescriptionOf(object);
    if (pClass == nullptr) {
      return UseName(object, "OrderID", {});
    }
    const qm_ordering_member& member = pClass->members[Below(pClass->member_count)];
    UseName(object, member.is_default != 0 && m_oBytes.ConsumeBool() ? "" : member.name, {&member, 1});
  }

  void UseAnyName() {
    const qm_ordering_class* pOther = m_pClasses[Below(m_lClasses)];
    const std::string zName = m_oBytes.ConsumeBool() ? m_oBytes.ConsumeRandomLengthString(12)
                                                     : pOther->members[Below(pOther->member_count)].name;
    UseName(AnyObject(), zName, {});
  }

  void UseName(qm_ordering_object object, const std::string& zvName,
               std::span<const qm_ordering_member> vvMember) {
    std::vector<qm_ordering_value> arguments;
    if (!vvMember.empty()) {
      for (std::size_t i = 0; i < vvMember[0].parameter_count; ++i) {
        if (vvMember[0].parameters[i].is_optional == 0 || m_oBytes.ConsumeBool()) {
          arguments.push_back(AnyValue(vvMember[0].parameters[i].type));
        }
      }
    }
    if (vvMember.empty() || Below(16) == 0) {
      for (std::size_t i = Below(3); i > 0; --i) {
        arguments.push_back(AnyValue("Variant"));
      }
    }
    m_lInUse = object;
    const bool bPut = vvMember.empty() ? Below(3) == 0
                                       : vvMember[0].kind == QM_ORDERING_PROPERTY_LET ||
                                             vvMember[0].kind == QM_ORDERING_PROPERTY_SET;
    const std::size_t lWay = Below(16);
    if (bPut && lWay != 0) {
      Call(qm_ordering_put, object, zvName.c_str(), arguments.empty() ? nullptr : arguments.data());
      return;
    }
    const auto function = lWay % 2 == 0 ? qm_ordering_call : qm_ordering_get;
    const std::size_t lCount = Below(64) == 0 ? std::numeric_limits<std::size_t>::max() : arguments.size();
    const qm_ordering_value* pArguments = arguments.empty() ? nullptr : arguments.data();
    if (lWay == 15) {
      Call(function, object, zvName.c_str(), pArguments, lCount, nullptr);
      return;
    }
    if (lWay == 14 && !arguments.empty()) {
      // The answer where the first argument stood.
      Take(Call(function, object, zvName.c_str(), pArguments, lCount, arguments.data()), arguments[0]);
      return;
    }
    qm_ordering_value result{};
    result.kind = 77;
    Take(Call(function, object, zvName.c_str(), pArguments, lCount, &result), result);
  }

  void Walk() {
    qm_ordering_object enumeration = 1;
    const qm_ordering_object object = AnyObject();
    const std::int32_t lNumber = Call(qm_ordering_enumerate, object, &enumeration);
    Require((lNumber == 0) == (enumeration != 0), "a walk begins, or a failure is told");
    Keep(enumeration);
    for (std::size_t i = Below(8); i > 0; --i) {
      qm_ordering_value member{};
      // Not only over the enumeration: it may be any object.
      Take(Call(qm_ordering_next, lNumber == 0 ? enumeration : AnyObject(), &member), member);
    }
  }

  void Retain() {
    const qm_ordering_object object = AnyObject();
    if (Call(qm_ordering_retain, object) == 0) {
      Keep(object);
    }
  }

  void Release() {
    const qm_ordering_object object = AnyObject();
    const auto found = std::ranges::find(m_oObjects, object, &Held::Object);
    const std::int32_t lNumber = Call(qm_ordering_release, object);
    if (found == m_oObjects.end()) {
      return;
    }
    Require(lNumber == 0, "what the host holds can be released");
    if (--found->References == 0) {
      m_oObjects.erase(found);
      m_oReleased.push_back(object);
    }
  }

  void Describe() {
    const qm_ordering_class* pClass = nullptr;
    const std::string zName = AnyClass();
    const std::int32_t lNumber = Call(qm_ordering_describe, zName.c_str(), &pClass);
    Require((lNumber == 0) == (pClass != nullptr), "a class is described, or a failure told");
    const char* zVersion = nullptr;
    Call(qm_ordering_version, &zVersion);
  }

  void Failures() {
    qm_ordering_failure last{};
    Require(Call(qm_ordering_last_failure, &last) == 0, "the last failure can be asked for");
    Require(last.number == 0 || last.description.length > 0, "a failure says what failed");
    if (m_oBytes.ConsumeBool()) {
      Call(qm_ordering_clear_last_failure);
    }
    Call(qm_ordering_get_failure, nullptr);
  }

  void SetTrace() {
    m_oHost.UntilTraceFails = static_cast<int>(Below(20)) - 1;
    m_oHost.WithinTrace = [this] { UseWithinTrace(); };
    Call(qm_ordering_set_statement_trace, Below(4) == 0 ? nullptr : Trace, static_cast<void*>(&m_oHost));
  }

  // The object whose statement is shown: another one would wait for seconds, and in vain, where the statement
  // belongs to a transaction.
  void UseWithinTrace() {
    constexpr std::array<const char*, 8> kMembers = {"LoadSummary", "LoadItems",   "ItemCount",
                                                     "ClearItems",  "SaveSummary", "SaveToHistory",
                                                     "GetXML",      "LoadLists"};
    qm_ordering_value argument{};
    argument.kind = QM_ORDERING_INTEGER;
    qm_ordering_value answer{};
    Call(qm_ordering_call, m_lInUse, Pick(kMembers), &argument, Below(2), &answer);
    Call(qm_ordering_clear, &answer);
  }

  void Follow() {
    m_oHost.UntilProgressFails = static_cast<int>(Below(8)) - 1;
    Call(qm_ordering_on_import_progress, ObjectOf("OrderHistoryImporter").as.object,
         Below(4) == 0 ? nullptr : ImportProgress, static_cast<void*>(&m_oHost));
  }

  // The functions of the store that are not costly.
  void Maintain() {
    qm_ordering_object texts = 0;
    qm_ordering_value path{};
    switch (Below(4)) {
      case 0:
        Call(qm_ordering_check_order_store, &texts);
        break;
      case 1:
        Call(qm_ordering_repair_order_store, &texts);
        break;
      case 2:
        Call(qm_ordering_create_order_store, m_oBytes.ConsumeBool() ? m_oHost.Folder.c_str() : "");
        break;
      default:
        Take(Call(qm_ordering_order_store_path, &path), path);
    }
    Keep(texts);
  }

  void Copy() {
    m_oHost.UntilProgressFails = static_cast<int>(Below(4)) - 1;
    const std::string zFile = Below(8) == 0 ? "" : m_oHost.Folder + "/backup";
    const auto progress = m_oBytes.ConsumeBool() ? StoreProgress : nullptr;
    if (m_oBytes.ConsumeBool()) {
      qm_ordering_object findings = 0;
      Call(qm_ordering_backup_order_store, zFile.c_str(), &findings, progress, static_cast<void*>(&m_oHost));
      Keep(findings);
    } else {
      qm_ordering_value kept{};
      Take(
          Call(qm_ordering_restore_order_store, zFile.c_str(), &kept, progress, static_cast<void*>(&m_oHost)),
          kept);
    }
  }

  // Too late, once there was an object: the component stays.
  void Install() {
    const qm_ordering_settings nothing{};
    switch (Below(3)) {
      case 0:
        Require(Call(qm_ordering_install_settings, &nothing, nullptr) != 0, "settings need a function");
        break;
      case 1:
        Call(qm_ordering_install_settings_file, "settings.ini");
        break;
      default:
        g_oCalls.Add();
        Require(qm_ordering_answer(nullptr, "", 0) == 5, "there is no reply outside of a callback");
    }
  }

  // It may release one reference of this thread's and do nothing else with them; what it has itself ends with
  // it.
  void UseAnotherThread() {
    if (m_oObjects.empty()) {
      return;
    }
    Held& held = m_oObjects.front();
    bool bReleased = false;
    std::thread([&] {
      const char* zName = nullptr;
      Require(qm_ordering_class_name(held.Object, &zName) == kWrongThread, "another thread is refused");
      Require(qm_ordering_retain(held.Object) == kWrongThread, "another thread is refused");
      bReleased = qm_ordering_release(held.Object) == 0;
      qm_ordering_object own = 0;
      Require(qm_ordering_create("OrderItem", &own) == 0, "another thread has its own objects");
    }).join();
    Require(bReleased, "another thread can release");
    if (--held.References == 0) {
      m_oReleased.push_back(held.Object);
      m_oObjects.pop_front();
    }
  }

  FuzzedDataProvider& m_oBytes;
  Host& m_oHost;
  const qm_ordering_class* const* m_pClasses = nullptr;
  std::size_t m_lClasses = 0;
  std::list<Held> m_oObjects;
  qm_ordering_object m_lInUse = 0;  // while a member is used
  std::vector<qm_ordering_object> m_oReleased;
  std::list<std::vector<char>> m_oTexts;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t lSize) {
  static const Store store;
  store.Renew();
  FuzzedDataProvider bytes(pData, lSize);
  Host host{.Folder = store.Folder()};
  const qm_ordering_settings settings{.user_setting = ReadSetting,
                                      .order_default = ReadText,
                                      .set_order_default = SetDefault,
                                      .save_order_defaults = SaveDefaults,
                                      .registration = ReadText,
                                      .dispose = Dispose};
  Require(Call(qm_ordering_install_settings, &settings, static_cast<void*>(&host)) == 0,
          "settings can be installed before the first object");
  Session session(bytes, host);
  session.Run();
  session.End();
  Call(qm_ordering_set_statement_trace, nullptr, nullptr);
  // The thread is as before its first object again.
  qm_ordering::ForgetStartUp();
  Require(Call(qm_ordering_install_settings, nullptr, nullptr) == 0, "settings can be taken away");
  Require(host.Disposed <= 1, "a component is disposed of once");
  Require(host.Disposed == 1, "a component is disposed of");
  return 0;
}
