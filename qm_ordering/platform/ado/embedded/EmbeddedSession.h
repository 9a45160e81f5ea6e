#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/ado/Session.h"

namespace qm_ordering::ado::embedded {

// A session on the store file, from the thread's pool when one rests there. zvPath is absolute. The first
// brings a store of an older version up to date, the second leaves it as it is, for work that only reads.
std::unique_ptr<Session> OpenSession(const std::string& zvPath);
std::unique_ptr<Session> OpenAsItIs(const std::string& zvPath);

// A session on a copy of a store that nobody else uses, just as it is: it gets no log and does not rest in
// the pool. zvName is what messages call it. Raises kStoreUnavailable.
std::unique_ptr<Session> OpenCopy(const std::string& zvPath, const std::string& zvName);

// Closes this thread's resting sessions: before the file is replaced, or looked at from outside.
void CloseIdleSessions();

}  // namespace qm_ordering::ado::embedded
