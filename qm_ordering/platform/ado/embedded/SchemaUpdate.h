#pragma once

#include "qm_ordering/platform/ado/embedded/PooledSession.h"

namespace qm_ordering::ado::embedded {

// Brings the session's store, of an older version of the schema, up to the library's. Nobody else writes
// meanwhile. First the store is copied as it is into STORE.schemaN beside it, N being its version (-2, -3 and
// so on appended where that is taken), and the copy is checked. All of it happens or nothing: then the
// store is as it was, no copy is left, and kStoreUnavailable is raised with the cause. A store that another
// program has brought up to date in between is left alone. The session must not be used afterwards: it was
// opened on the older schema.
void BringUpToDate(PooledSession& session);

}  // namespace qm_ordering::ado::embedded
