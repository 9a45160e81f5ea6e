#pragma once

#include <CLI/CLI.hpp>

#include "host/Context.h"

namespace host {

// The group `order` with all its commands; show, validate, xml and submit are here.
void AddOrderCommands(CLI::App& app, Command& chosen);

}  // namespace host
