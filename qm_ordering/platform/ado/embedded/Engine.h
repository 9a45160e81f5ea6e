#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

struct CloseDatabase {
  void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
using DatabaseHandle = std::unique_ptr<sqlite3, CloseDatabase>;

struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }
};
using StatementHandle = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// Opens a file that exists. zvName is what messages call it. No byte of it is read, and nothing is locked,
// before the first use. Raises EngineFailure.
DatabaseHandle OpenEngine(const std::string& zvPath, const std::string& zvName, int lvFlags);
// Closes it where a failure to do so counts. Raises EngineFailure.
void CloseEngine(DatabaseHandle db, const std::string& zvName);

// The engine's own handle on the file. Opening and closing the file by other means would drop the engine's
// locks on it. Raises kStoreUnavailable.
sqlite3_file* EngineFile(sqlite3* db, const std::string& zvPath);

// How long a session waits for another one's locks.
inline constexpr int kBusyTimeoutMilliseconds = 5000;

// The failure for what the engine answered last on this database, about the file zvPath. Exhausted memory is
// no fault of the store: it is OutOfMemory().
Failure EngineFailure(sqlite3* db, int lvResult, const std::string& zvPath);

// Whether the answer makes the session unfit for further use: input and output, full disk, damage, exhausted
// memory.
bool IsFatal(int lvResult);

// Runs texts of our own that hold no values. Raises EngineFailure.
void RunScript(sqlite3* db, const std::string& zvScript, const std::string& zvPath);

// The comparison of text columns, under the name that the schema uses for it.
inline constexpr const char* kTextCollation = "LETTERS";
void AddTextCollation(sqlite3* db, const std::string& zvPath);

// Puts a sum() in the place of the engine's own, which fails when it leaves the range on its way, so that it
// depended on the order of the rows. This one fails (6) when the sum itself is beyond it. It takes whole
// numbers and nulls.
void AddExactSum(sqlite3* db, const std::string& zvPath);

StatementHandle PrepareQuery(sqlite3* db, const std::string& zvQuery, const std::string& zvPath);

// Reads one text from the first column of the first row; empty when there is none.
std::string ReadText(sqlite3* db, const std::string& zvQuery, const std::string& zvPath);

}  // namespace qm_ordering::ado::embedded
