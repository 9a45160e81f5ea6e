#pragma once

#include <CLI/CLI.hpp>

#include "host/Context.h"

namespace host {

// order add, order quantity, order remove, order clear
void AddOrderLineCommands(CLI::App& group, Command& chosen);

}  // namespace host
