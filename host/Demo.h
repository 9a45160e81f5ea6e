#pragma once

#include <CLI/CLI.hpp>

#include "host/Context.h"

namespace host {

// demo: one order from an empty store to its submission, in a temporary folder of its own. It is also the
// example to read for the calls that a host makes, in their order.
void AddDemo(CLI::App& app, Command& chosen);

}  // namespace host
