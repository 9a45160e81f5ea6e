#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// The settings component that the library reads its configuration from. A host derives from these classes, or
// takes the library's own component (FileSettings.h). A component reports a failure by throwing Failure;
// anything else that it throws reaches the host as a Failure with the same text.

// Reads the user's settings.
class QM_ORDERING_API UserSettings {
 public:
  virtual ~UserSettings() = default;
  // The value of a key of UserSettingConstants; empty when it is unset.
  virtual std::string Get(const std::string& zvKey) = 0;
};

// Reads and writes the values that a new order starts with.
class QM_ORDERING_API OrderDefaults {
 public:
  virtual ~OrderDefaults() = default;
  // The value of a DEFAULT_ key; empty when it is unset.
  virtual std::string Get(const std::string& zvKey) = 0;
  // Sets a DEFAULT_ key, for this object until Save. An empty value unsets it.
  virtual void Set(const std::string& zvKey, const std::string& zvValue) = 0;
  // Called once after the last Set: what was set must be kept when it returns.
  virtual void Save() {}
};

// The user as registered with the host product.
struct RegistrationDetails {
  std::string City;           // town of the company's address
  std::string CompanyName;    // the company
  std::string Address1;       // first line of its address
  std::string Address2;       // second line; optional
  std::string Fax;            // fax number; optional
  std::string Telephone;      // telephone
  std::string TelephoneExt;   // extension of the telephone; optional
  std::string Country;        // country of the address, free text
  std::string Email;          // the user's e-mail address
  std::string FirstName;      // the user's first name
  std::string LastName;       // the user's last name
  std::string State;          // state of the address, one of those that the host lists
  std::string StateOr;        // state, province or region written out, where State is not used
  std::string ZipOrPostCode;  // ZIP or post code of the address
  std::string AccountNumber;  // the company's account with the vendor
};

// What hands the settings to the library.
class QM_ORDERING_API SettingsComponent {
 public:
  virtual ~SettingsComponent() = default;
  // A reader of the user's settings. Called when the library needs one, which it releases at the end of that
  // routine.
  virtual std::unique_ptr<UserSettings> CreateUserSettings() = 0;
  // A reader and writer of the order defaults, likewise.
  virtual std::unique_ptr<OrderDefaults> CreateOrderDefaults() = 0;
  // The registration as it is now.
  virtual RegistrationDetails ReadRegistration() = 0;
};

// Chooses this thread's settings component; null chooses the library's own, which is also what a thread has
// that never calls this. Raises failure 5 once the thread's start-up has run, by its first object of the
// library or by OrderStorePath or CheckOrderStore: the store's location is read once for each thread and does
// not change under its objects.
QM_ORDERING_API void InstallSettings(std::shared_ptr<SettingsComponent> oComponent);

}  // namespace qm_ordering
