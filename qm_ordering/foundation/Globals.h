#pragma once

#include <string>
#include <string_view>

#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// What this thread's start-up read. Empty before it has run, and again while the thread ends.
const std::string& ConnectionString();     // of the order store
const std::string& DatabasePath();         // the setting "OrderingDatabasePath" as it stands
const std::string& ImportTempFilesPath();  // the setting "OHImportTempFilesPath" as it stands

// Runs the thread's start-up unless it has run: reads the settings, builds the store's connection string,
// fills the error table. From then on InstallSettings refuses. A failing settings component raises its
// failure; the start-up is then tried again at the next call, and nothing of it counts. Raises 5 while the
// thread ends and its values are gone.
void StartUp();

// Forgets this thread's start-up, for tests that run several on one thread. The error table, the same after
// every start-up, stays.
void ForgetStartUp();

// The text with each single quote doubled, to stand between single quotes in a statement.
std::string SQLText(std::string_view zvText);

// vvReplacement when vvValue is the store's null, else vvValue.
Variant NullTo(Variant vvValue, Variant vvReplacement);

}  // namespace qm_ordering
