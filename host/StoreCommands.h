#pragma once

#include <CLI/CLI.hpp>

#include "host/Context.h"

namespace host {

// store create, store check, store backup, store restore, store repair, store path
void AddStoreCommands(CLI::App& app, Command& chosen);

}  // namespace host
