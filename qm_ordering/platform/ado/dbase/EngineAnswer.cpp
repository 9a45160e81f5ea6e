#include "qm_ordering/platform/ado/dbase/EngineAnswer.h"

#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::dbase {

Failure RefusalToWrite(const std::string& zvPath) {
  return {failure::kStoreCommand, "The dBase tables in " + zvPath + " can only be read."};
}

Failure EngineAnswer(sqlite3* db, int lvResult, const std::string& zvPath) {
  switch (lvResult & 0xff) {
    case SQLITE_NOMEM:
      return OutOfMemory();
    case SQLITE_AUTH:
      return RefusalToWrite(zvPath);
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG:
    case SQLITE_RANGE:
      return {failure::kStoreCommand,
              "The dBase tables of " + zvPath + ": the statement was refused: " + sqlite3_errmsg(db) + "."};
    default:
      return {failure::kStoreUnavailable,
              "The dBase tables of " + zvPath + " cannot be used: " + sqlite3_errmsg(db) + "."};
  }
}

}  // namespace qm_ordering::ado::dbase
