#pragma once

#include <CLI/CLI.hpp>

#include "host/Context.h"

namespace host {

// order set, order apply-registration
void AddOrderHeaderCommands(CLI::App& group, Command& chosen);

}  // namespace host
