#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/ado/Session.h"

namespace qm_ordering::ado::embedded {

// A session on the store file, from the thread's pool when one rests there. zvPath is absolute.
std::unique_ptr<Session> OpenSession(const std::string& zvPath);

// Closes this thread's resting sessions; for tests that look at the file from outside.
void CloseIdleSessions();

}  // namespace qm_ordering::ado::embedded
