#include "qm_ordering/foundation/Globals.h"

#include <memory>
#include <utility>

#include "qm_ordering/foundation/ErrorsOrdering.h"
#include "qm_ordering/foundation/UserSettingConstants.h"
#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/settings/InstalledSettings.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

struct StartUpValues {
  bool HasRun = false;
  std::string ConnectionString;
  std::string DatabasePath;
  std::string ImportTempFilesPath;
};

// What the accessors answer when the thread's values are gone. Never destroyed: threads may outlive main.
const std::string& NoText() {
  static const std::string& zNothing = *new std::string();
  return zNothing;
}

const std::string& ValueOrNothing(std::string StartUpValues::*pMember) {
  const StartUpValues* pValues = PerThread<StartUpValues>::Get();
  return pValues == nullptr ? NoText() : pValues->*pMember;
}

StartUpValues ReadValues() {
  StartUpValues values;
  const std::unique_ptr<UserSettings> oSettings = settings::CreateUserSettings();
  values.ConnectionString = "Driver=Microsoft Access Driver (*.mdb);DBQ=" +
                            oSettings->Get(UserSettingConstants::ORDERINGDATABASEPATH) + "\\Orders.mdb";
  // Asked for again: each value is what the settings component answers for it.
  values.DatabasePath = oSettings->Get(UserSettingConstants::ORDERINGDATABASEPATH);
  values.ImportTempFilesPath = oSettings->Get(UserSettingConstants::OHIMPORTTEMPFILESPATH);
  values.HasRun = true;
  return values;
}

}  // namespace

const std::string& ConnectionString() {
  return ValueOrNothing(&StartUpValues::ConnectionString);
}

const std::string& DatabasePath() {
  return ValueOrNothing(&StartUpValues::DatabasePath);
}

const std::string& ImportTempFilesPath() {
  return ValueOrNothing(&StartUpValues::ImportTempFilesPath);
}

void StartUp() {
  StartUpValues* pValues = PerThread<StartUpValues>::Get();
  if (pValues == nullptr) {
    throw Failure(failure::kInvalidCall,
                  "An object of the ordering library cannot be made while its thread ends");
  }
  if (pValues->HasRun) {
    return;
  }
  StartUpValues read = ReadValues();
  InitErrorTable();
  // Only a start-up that succeeded settles the thread's settings component.
  settings::Fix();
  *pValues = std::move(read);
}

void ForgetStartUp() {
  if (StartUpValues* pValues = PerThread<StartUpValues>::Get()) {
    *pValues = StartUpValues();
  }
  settings::Unfix();
}

std::string SQLText(std::string_view zvText) {
  std::string zDoubled;
  zDoubled.reserve(zvText.size());
  for (const char cLetter : zvText) {
    zDoubled.append(cLetter == '\'' ? 2 : 1, cLetter);
  }
  return zDoubled;
}

Variant NullTo(Variant vvValue, Variant vvReplacement) {
  return vvValue.IsNull() ? std::move(vvReplacement) : std::move(vvValue);
}

}  // namespace qm_ordering
