#pragma once

#include <sqlite3.h>

#include <string>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::dbase {

// The failure for what the engine answered last on this database: kStoreCommand for a statement that it
// refuses, kStoreUnavailable for all else, and OutOfMemory(). zvPath is the file or folder that it was about.
Failure EngineAnswer(sqlite3* db, int lvResult, const std::string& zvPath);

// kStoreCommand for an attempt to write to the tables of a folder.
Failure RefusalToWrite(const std::string& zvFolder);

}  // namespace qm_ordering::ado::dbase
