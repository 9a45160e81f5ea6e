#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "qm_ordering/platform/settings/Settings.h"

namespace test {

// A settings component in memory that records what the library asks of it.
class MemorySettings : public qm_ordering::SettingsComponent {
 public:
  std::unique_ptr<qm_ordering::UserSettings> CreateUserSettings() override;
  std::unique_ptr<qm_ordering::OrderDefaults> CreateOrderDefaults() override;
  qm_ordering::RegistrationDetails ReadRegistration() override;

  std::map<std::string, std::string> User;      // what user-setting readers answer
  std::map<std::string, std::string> Defaults;  // what order defaults answer and take
  qm_ordering::RegistrationDetails Registration;

  // "create user settings", "get KEY", "release user settings", "create order defaults", "default get KEY",
  // "default set KEY=VALUE", "save", "release order defaults", "read registration", in the order of the
  // calls.
  std::vector<std::string> Calls;

  // Called with each entry of Calls before it takes effect; may throw.
  std::function<void(const std::string&)> Before;

 private:
  friend class MemoryUserSettings;
  friend class MemoryOrderDefaults;
  void Note(const std::string& zvCall);
};

// Installs a MemorySettings on this thread for the length of a scope, start-up not yet run; afterwards the
// thread is as before any object existed.
class SettingsScope {
 public:
  SettingsScope();
  ~SettingsScope();
  MemorySettings* operator->() const { return m_oSettings.get(); }
  MemorySettings& operator*() const { return *m_oSettings; }

 private:
  std::shared_ptr<MemorySettings> m_oSettings;
};

}  // namespace test
