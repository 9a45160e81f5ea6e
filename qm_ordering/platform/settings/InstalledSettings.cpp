#include "qm_ordering/platform/settings/InstalledSettings.h"

#include <exception>
#include <new>
#include <utility>

#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/settings/FileSettings.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering {

namespace {

thread_local bool t_bFixed = false;

struct Installed {
  std::shared_ptr<SettingsComponent> Component;
};

// Holds a reference for the length of a call, so that a component that is replaced meanwhile lives on.
std::shared_ptr<SettingsComponent> Component() {
  const Installed* pInstalled = PerThread<Installed>::Get();
  return pInstalled != nullptr && pInstalled->Component ? pInstalled->Component : CreateFileSettings();
}

// Runs foreign code; what it throws leaves as a Failure.
template <typename Call>
auto Guarded(Call call) {
  try {
    return call();
  } catch (const Failure&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw OutOfMemory();
  } catch (const std::exception& error) {
    throw Failure(failure::kInvalidCall, error.what());
  } catch (...) {
    throw Failure(failure::kInvalidCall, "The settings component failed and did not say why.");
  }
}

template <typename T>
std::unique_ptr<T> NotNull(std::unique_ptr<T> oObject, const char* zvCall) {
  if (!oObject) {
    throw Failure(failure::kObjectNotSet, std::string("The settings component returned no object from ") +
                                              zvCall + ". It must return a new object from every call.");
  }
  return oObject;
}

class GuardedUserSettings : public UserSettings {
 public:
  explicit GuardedUserSettings(std::unique_ptr<UserSettings> oSettings) : m_oSettings(std::move(oSettings)) {}

  std::string Get(const std::string& zvKey) override {
    return Guarded([&] { return m_oSettings->Get(zvKey); });
  }

 private:
  std::unique_ptr<UserSettings> m_oSettings;
};

class GuardedOrderDefaults : public OrderDefaults {
 public:
  explicit GuardedOrderDefaults(std::unique_ptr<OrderDefaults> oDefaults)
      : m_oDefaults(std::move(oDefaults)) {}

  std::string Get(const std::string& zvKey) override {
    return Guarded([&] { return m_oDefaults->Get(zvKey); });
  }
  void Set(const std::string& zvKey, const std::string& zvValue) override {
    Guarded([&] { m_oDefaults->Set(zvKey, zvValue); });
  }
  void Save() override {
    Guarded([&] { m_oDefaults->Save(); });
  }

 private:
  std::unique_ptr<OrderDefaults> m_oDefaults;
};

}  // namespace

void InstallSettings(std::shared_ptr<SettingsComponent> oComponent) {
  if (t_bFixed) {
    throw Failure(
        failure::kInvalidCall,
        "InstallSettings was called after the first object of the library was created on this thread. "
        "Call it before, or on a new thread.");
  }
  if (Installed* pInstalled = PerThread<Installed>::Get()) {
    pInstalled->Component.swap(oComponent);
  }
}

namespace settings {

std::unique_ptr<UserSettings> CreateUserSettings() {
  const auto oComponent = Component();
  return std::make_unique<GuardedUserSettings>(
      NotNull(Guarded([&] { return oComponent->CreateUserSettings(); }), "CreateUserSettings"));
}

std::unique_ptr<OrderDefaults> CreateOrderDefaults() {
  const auto oComponent = Component();
  return std::make_unique<GuardedOrderDefaults>(
      NotNull(Guarded([&] { return oComponent->CreateOrderDefaults(); }), "CreateOrderDefaults"));
}

RegistrationDetails ReadRegistration() {
  const auto oComponent = Component();
  return Guarded([&] { return oComponent->ReadRegistration(); });
}

void Fix() {
  t_bFixed = true;
}

void Unfix() {
  t_bFixed = false;
}

}  // namespace settings

}  // namespace qm_ordering
