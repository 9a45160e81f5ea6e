#pragma once

#include "host/CommandLine.h"

namespace host {

// `qm-ordering history ...`
void AddHistoryCommands(CLI::App& app, Command& chosen);

// The submitted orders for a person to read.
std::string HistoryText(const qm_ordering::OrderHistory& history);

}  // namespace host
