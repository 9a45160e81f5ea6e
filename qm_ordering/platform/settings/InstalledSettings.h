#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/settings/Settings.h"

namespace qm_ordering::settings {

// The thread's settings component, reached so that whatever a component throws arrives as a Failure. Each
// call creates the component's object anew; the caller releases it at the end of its routine.
std::unique_ptr<UserSettings> CreateUserSettings();
std::unique_ptr<OrderDefaults> CreateOrderDefaults();
RegistrationDetails ReadRegistration();

// From here on InstallSettings refuses. Called by the thread's start-up.
void Fix();
// Undoes Fix, for tests that run several start-ups on one thread.
void Unfix();

}  // namespace qm_ordering::settings
