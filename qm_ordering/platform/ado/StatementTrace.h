#pragma once

#include <functional>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// Shows this thread's statements to a host, each before it runs and as the library built it. Null ends it. A
// trace that throws stops the statement: the failure is the statement's. A trace may use the library, but not
// the object whose statement it shows, which fails with 5 in the middle of its work on the store; and what
// another object writes waits in vain, and fails after five seconds, where the statement belongs to a
// transaction. The texts hold customers' data. With QM_ORDERING_TRACE=1 in the environment every statement
// also goes to stderr.
QM_ORDERING_API void SetStatementTrace(std::function<void(const std::string& zvSQL)> trace);

}  // namespace qm_ordering
