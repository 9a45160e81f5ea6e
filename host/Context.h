#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/Output.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// What every command works with.
struct Context {
  Output Out;
  std::string Program;       // as the user called it
  std::string SettingsFile;  // empty: the default one
  std::shared_ptr<qm_ordering::SettingsComponent> Settings;
};

// The command that the user chose, with its options bound. Answers an ExitCode.
struct Command {
  std::function<int(Context&)> Run;
  bool MakesOwnSettings = false;  // else the user's settings are installed before it runs
};

// What the user's settings hold under a key; empty when it is unset.
std::string Setting(const Context& context, const std::string& zvKey);

// Sets one key and keeps it.
void SetSetting(const Context& context, const std::string& zvKey, const std::string& zvValue);

// Says how to get a store when the settings name none.
void NoteWhenNoStoreIsSet(Context& context);

}  // namespace host
