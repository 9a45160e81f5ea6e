#pragma once

#include <string>

namespace qm_ordering::ado {

// Hands a statement to the trace that SetStatementTrace has set, and to stderr when the environment asks for
// it.
void TraceStatement(const std::string& zvSQL);

}  // namespace qm_ordering::ado
