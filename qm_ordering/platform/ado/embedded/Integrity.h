#pragma once

#include <string>
#include <vector>

#include "qm_ordering/platform/ado/embedded/PooledSession.h"

namespace qm_ordering::ado::embedded {

// What is wrong with the session's file, with rows that belong to others, and with the schema against the one
// that the library makes in the version of the file; a finding each. Raises EngineFailure when the store as a
// whole cannot be used.
std::vector<std::string> CheckIntegrity(PooledSession& session);

}  // namespace qm_ordering::ado::embedded
