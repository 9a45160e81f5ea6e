#pragma once

#include <sqlite3.h>

#include <string>

#include "qm_ordering/platform/ado/Session.h"

namespace qm_ordering::ado::embedded {

// Copies the store as the database sees it now into the empty file zvCopy, with all that is still in its log:
// one whole file without a log of its own, on disk. The database may be in a read transaction; others may
// write meanwhile, and what they write is not in the copy. zvName and zvCopyName are what messages call
// store and copy. Raises EngineFailure; what the progress throws ends the copying and rises.
void CopyStore(sqlite3* db, const std::string& zvName, const std::string& zvCopy,
               const std::string& zvCopyName, const CopyProgress& progress);

// The same of a store's file, which is only read, whatever program uses it; a log beside it counts. Raises 75
// when there is no such file or it is no order store that this library can use, with zvRefusal at the
// beginning of the message.
void CopyStoreFile(const std::string& zvPath, const std::string& zvCopy, const std::string& zvCopyName,
                   const std::string& zvRefusal, const CopyProgress& progress);

}  // namespace qm_ordering::ado::embedded
