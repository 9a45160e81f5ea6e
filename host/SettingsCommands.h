#pragma once

#include <CLI/CLI.hpp>

#include "host/Context.h"

namespace host {

// settings list, settings get, settings set
void AddSettingsCommands(CLI::App& app, Command& chosen);

}  // namespace host
