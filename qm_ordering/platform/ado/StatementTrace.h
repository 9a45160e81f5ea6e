#pragma once

#include <functional>
#include <string>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// Shows this thread's statements to a host, each before it runs and as the library built it. Null ends it. A
// trace that throws stops the statement: the failure is the statement's. The texts hold customers' data. With
// QM_ORDERING_TRACE=1 in the environment every statement also goes to stderr.
QM_ORDERING_API void SetStatementTrace(std::function<void(const std::string& zvSQL)> trace);

}  // namespace qm_ordering
