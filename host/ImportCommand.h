#pragma once

#include "host/CommandLine.h"

namespace host {

// `qm-ordering import FOLDER`
void AddImportCommand(CLI::App& app, Command& chosen);

}  // namespace host
