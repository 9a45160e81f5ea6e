#include "tests/support/MemorySettings.h"

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/settings/InstalledSettings.h"

namespace test {

class MemoryUserSettings : public qm_ordering::UserSettings {
 public:
  explicit MemoryUserSettings(MemorySettings& owner) : m_oOwner(owner) {
    m_oOwner.Note("create user settings");
  }
  ~MemoryUserSettings() override { m_oOwner.Calls.emplace_back("release user settings"); }

  std::string Get(const std::string& zvKey) override {
    m_oOwner.Note("get " + zvKey);
    const auto found = m_oOwner.User.find(zvKey);
    return found == m_oOwner.User.end() ? std::string() : found->second;
  }

 private:
  MemorySettings& m_oOwner;
};

class MemoryOrderDefaults : public qm_ordering::OrderDefaults {
 public:
  explicit MemoryOrderDefaults(MemorySettings& owner) : m_oOwner(owner) {
    m_oOwner.Note("create order defaults");
  }
  ~MemoryOrderDefaults() override { m_oOwner.Calls.emplace_back("release order defaults"); }

  std::string Get(const std::string& zvKey) override {
    m_oOwner.Note("default get " + zvKey);
    const auto found = m_oOwner.Defaults.find(zvKey);
    return found == m_oOwner.Defaults.end() ? std::string() : found->second;
  }
  void Set(const std::string& zvKey, const std::string& zvValue) override {
    m_oOwner.Note("default set " + zvKey + "=" + zvValue);
    m_oOwner.Defaults[zvKey] = zvValue;
  }
  void Save() override { m_oOwner.Note("save"); }

 private:
  MemorySettings& m_oOwner;
};

std::unique_ptr<qm_ordering::UserSettings> MemorySettings::CreateUserSettings() {
  return std::make_unique<MemoryUserSettings>(*this);
}

std::unique_ptr<qm_ordering::OrderDefaults> MemorySettings::CreateOrderDefaults() {
  return std::make_unique<MemoryOrderDefaults>(*this);
}

qm_ordering::RegistrationDetails MemorySettings::ReadRegistration() {
  Note("read registration");
  return Registration;
}

void MemorySettings::Note(const std::string& zvCall) {
  if (Before) {
    Before(zvCall);
  }
  Calls.push_back(zvCall);
}

SettingsScope::SettingsScope() : m_oSettings(std::make_shared<MemorySettings>()) {
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(m_oSettings);
}

SettingsScope::~SettingsScope() {
  qm_ordering::ForgetStartUp();
  qm_ordering::InstallSettings(nullptr);
}

}  // namespace test
