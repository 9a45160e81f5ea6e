#include <algorithm>
#include <array>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/foundation/LastFailure.h"
#include "qm_ordering/foundation/members/Texts.h"
#include "qm_ordering/history/OrderHistoryImporter.h"
#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/ado/StatementTrace.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"
#include "qm_ordering/qm_ordering_c.h"
#include "qm_ordering/registry/CCallbacks.h"
#include "qm_ordering/registry/CClasses.h"
#include "qm_ordering/registry/CValues.h"
#include "qm_ordering/registry/CreateObject.h"
#include "qm_ordering/registry/LateBinding.h"
#include "qm_ordering/registry/ThreadObjects.h"
#include "qm_ordering/store/OrderStore.h"

namespace qm_ordering {

namespace {

using c_interface::ProgressOf;
using c_interface::Required;
using c_interface::RequiredPlace;

// No member takes as many; what says that it gives more is not read.
constexpr size_t kMostArguments = 16;

// What a thread's host can ask for about failures. A Failure copies without failing.
struct Failures {
  std::optional<Failure> Answered;  // by the last failing function
  std::optional<Failure> Shown;     // to the host, whose pointers lead here
  LastFailureInfo ShownLast;
};

int32_t Remember(const Failure& failure) noexcept {
  if (Failures* pFailures = PerThread<Failures>::Get()) {
    pFailures->Answered = failure;
  }
  // 0 would tell the host that all is well.
  return failure.Number() != 0 ? failure.Number() : failure::kInvalidCall;
}

// Does the work of a function; whatever it throws is answered.
template <typename Work>
int32_t Answer(Work work) noexcept {
  try {
    work();
    return 0;
  } catch (const Failure& failure) {
    return Remember(failure);
  } catch (const std::bad_alloc&) {
    return Remember(OutOfMemory());
  } catch (const std::exception& error) {
    try {
      return Remember(Failure(failure::kInvalidCall, error.what()));
    } catch (...) {
      return Remember(OutOfMemory());
    }
  } catch (...) {
    return Remember(OutOfMemory());
  }
}

qm_ordering_text Shown(const std::string& zvText) {
  return {zvText.c_str(), zvText.size()};
}

// The arguments of a call. Most have none, which costs nothing.
std::vector<Variant> ArgumentsOf(const qm_ordering_value* arguments, size_t count) {
  std::vector<Variant> vArguments;
  if (count == 0) {
    return vArguments;
  }
  if (count > kMostArguments) {
    throw Failure(failure::kWrongArgumentCount, "No member takes " + std::to_string(count) + " arguments.");
  }
  RequiredPlace(arguments, "list of the arguments");
  vArguments.reserve(count);
  for (const qm_ordering_value& argument : std::span(arguments, count)) {
    vArguments.push_back(c_interface::FromC(argument));
  }
  return vArguments;
}

using Access = Variant (*)(const std::shared_ptr<Object>&, std::string_view, std::span<const Variant>);

// What reading and calling have in common. An argument may stand where the answer goes.
int32_t Use(Access access, qm_ordering_object object, const char* member, const qm_ordering_value* arguments,
            size_t count, qm_ordering_value* result) noexcept {
  qm_ordering_value answer{};
  const int32_t lNumber = Answer([&] {
    const std::shared_ptr<Object> oObject = ThreadObjects::OfThisThread().Find(object);
    Variant vAnswer =
        access(oObject, member == nullptr ? std::string_view() : member, ArgumentsOf(arguments, count));
    if (result != nullptr) {
      answer = c_interface::ToC(std::move(vAnswer));
    }
  });
  if (result != nullptr) {
    *result = answer;
  }
  return lNumber;
}

// Gives the host an object that work makes.
template <typename Work>
int32_t AnswerObject(qm_ordering_object* object, Work work) noexcept {
  return Answer([&] {
    RequiredPlace(object) = 0;
    ThreadObjects& objects = ThreadObjects::OfThisThread();
    *object = objects.Keep(work());
  });
}

template <typename Work>
int32_t AnswerTexts(qm_ordering_object* object, Work work) noexcept {
  return AnswerObject(object, [&] { return std::make_shared<Texts>(work()); });
}

template <typename Work>
int32_t AnswerText(qm_ordering_value* value, Work work) noexcept {
  return Answer([&] {
    RequiredPlace(value) = {};
    *value = c_interface::TextToC(work());
  });
}

}  // namespace

}  // namespace qm_ordering

using namespace qm_ordering;

int32_t qm_ordering_version(const char** version) {
  return Answer([&] { RequiredPlace(version) = QM_ORDERING_VERSION; });
}

int32_t qm_ordering_get_failure(qm_ordering_failure* failure) {
  return Answer([&] {
    RequiredPlace(failure) = {};
    Failures* pFailures = PerThread<Failures>::Get();
    if (pFailures == nullptr || !pFailures->Answered) {
      return;
    }
    pFailures->Shown = pFailures->Answered;
    failure->number = Remember(*pFailures->Shown);
    failure->description = Shown(pFailures->Shown->Description());
  });
}

int32_t qm_ordering_last_failure(qm_ordering_failure* failure) {
  return Answer([&] {
    RequiredPlace(failure) = {};
    if (Failures* pFailures = PerThread<Failures>::Get()) {
      pFailures->ShownLast = LastFailure();
      const LastFailureInfo& last = pFailures->ShownLast;
      *failure = {last.Number, Shown(last.Description), Shown(last.Operation)};
    }
  });
}

int32_t qm_ordering_clear_last_failure(void) {
  ClearLastFailure();
  return 0;
}

int32_t qm_ordering_create(const char* class_name, qm_ordering_object* object) {
  return AnswerObject(object,
                      [&] { return CreateObject(std::string(Required(class_name, "name of the class"))); });
}

int32_t qm_ordering_retain(qm_ordering_object object) {
  return Answer([&] { ThreadObjects::OfThisThread().Retain(object); });
}

int32_t qm_ordering_release(qm_ordering_object object) {
  return Answer([&] { ThreadObjects::Release(object); });
}

int32_t qm_ordering_clear(qm_ordering_value* value) {
  return Answer([&] { c_interface::Clear(RequiredPlace(value, "value")); });
}

int32_t qm_ordering_get(qm_ordering_object object, const char* member, const qm_ordering_value* arguments,
                        size_t count, qm_ordering_value* result) {
  return Use(GetProperty, object, member, arguments, count, result);
}

int32_t qm_ordering_call(qm_ordering_object object, const char* member, const qm_ordering_value* arguments,
                         size_t count, qm_ordering_value* result) {
  return Use(CallMethod, object, member, arguments, count, result);
}

int32_t qm_ordering_put(qm_ordering_object object, const char* member, const qm_ordering_value* value) {
  return Answer([&] {
    const std::shared_ptr<Object> oObject = ThreadObjects::OfThisThread().Find(object);
    PutProperty(oObject, member == nullptr ? std::string_view() : member,
                c_interface::FromC(RequiredPlace(value, "value")));
  });
}

int32_t qm_ordering_enumerate(qm_ordering_object object, qm_ordering_object* enumeration) {
  return AnswerObject(enumeration, [&] { return Enumerate(ThreadObjects::OfThisThread().Find(object)); });
}

int32_t qm_ordering_next(qm_ordering_object enumeration, qm_ordering_value* member) {
  if (member == nullptr) {
    // Nobody could tell when the walk ends.
    return Answer([] { c_interface::RaiseNullPointer("place for the answer"); });
  }
  return Use(CallMethod, enumeration, "Next", nullptr, 0, member);
}

int32_t qm_ordering_class_name(qm_ordering_object object, const char** class_name) {
  return Answer([&] {
    RequiredPlace(class_name) = nullptr;
    *class_name = ThreadObjects::OfThisThread().Find(object)->ClassName();
  });
}

int32_t qm_ordering_classes(const qm_ordering_class* const** classes, size_t* count) {
  if (count != nullptr) {
    *count = 0;
  }
  return Answer([&] {
    RequiredPlace(classes) = nullptr;
    RequiredPlace(count);
    const auto all = c_interface::Classes();
    *classes = all.data();
    *count = all.size();
  });
}

int32_t qm_ordering_describe(const char* class_name, const qm_ordering_class** description) {
  return Answer([&] {
    RequiredPlace(description) = nullptr;
    *description = &c_interface::Describe(std::string(Required(class_name, "name of the class")));
  });
}

int32_t qm_ordering_install_settings(const qm_ordering_settings* settings, void* payload) {
  return Answer([&] {
    if (settings != nullptr) {
      c_interface::Install(*settings, payload);
    } else {
      InstallSettings(nullptr);
    }
  });
}

int32_t qm_ordering_install_settings_file(const char* file) {
  return Answer([&] { InstallSettings(CreateFileSettings(file == nullptr ? "" : file)); });
}

int32_t qm_ordering_set_statement_trace(qm_ordering_trace trace, void* payload) {
  return Answer([&] { SetStatementTrace(c_interface::TraceOf(trace, payload)); });
}

int32_t qm_ordering_on_import_progress(qm_ordering_object importer, qm_ordering_import_progress progress,
                                       void* payload) {
  return Answer([&] {
    const auto oImporter = Late<std::shared_ptr<OrderHistoryImporter>>::FromVariant(
        Variant(ThreadObjects::OfThisThread().Find(importer)));
    oImporter->OnProgress(ProgressOf(progress, payload));
  });
}

int32_t qm_ordering_create_order_store(const char* folder) {
  return Answer([&] { CreateOrderStore(std::string(Required(folder, "folder"))); });
}

int32_t qm_ordering_order_store_path(qm_ordering_value* path) {
  return AnswerText(path, OrderStorePath);
}

int32_t qm_ordering_check_order_store(qm_ordering_object* findings) {
  return AnswerTexts(findings, CheckOrderStore);
}

int32_t qm_ordering_repair_order_store(qm_ordering_object* changes) {
  return AnswerTexts(changes, RepairOrderStore);
}

int32_t qm_ordering_backup_order_store(const char* file, qm_ordering_object* findings,
                                       qm_ordering_store_progress progress, void* payload) {
  return AnswerTexts(findings, [&] {
    return BackupOrderStore(std::string(Required(file, "name of the file")), ProgressOf(progress, payload));
  });
}

int32_t qm_ordering_restore_order_store(const char* file, qm_ordering_value* kept,
                                        qm_ordering_store_progress progress, void* payload) {
  return AnswerText(kept, [&] {
    return RestoreOrderStore(std::string(Required(file, "name of the file")), ProgressOf(progress, payload));
  });
}
