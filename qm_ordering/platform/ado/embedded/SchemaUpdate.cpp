#include "qm_ordering/platform/ado/embedded/SchemaUpdate.h"

#include <unistd.h>

#include <cstring>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/embedded/Integrity.h"
#include "qm_ordering/platform/ado/embedded/SchemaSteps.h"
#include "qm_ordering/platform/ado/embedded/StoreCopy.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::embedded {

namespace {

// Holds the write lock to the end of the scope, and takes back what was not committed.
class WriteUnit {
 public:
  WriteUnit(sqlite3* db, const std::string& zvName) : m_pDatabase(db), m_zName(zvName) {
    RunScript(db, "begin immediate", zvName);
  }
  ~WriteUnit() {
    if (sqlite3_get_autocommit(m_pDatabase) == 0) {
      sqlite3_exec(m_pDatabase, "rollback", nullptr, nullptr, nullptr);
    }
  }
  WriteUnit(const WriteUnit&) = delete;
  WriteUnit& operator=(const WriteUnit&) = delete;

  void Commit() { RunScript(m_pDatabase, "commit", m_zName); }

 private:
  sqlite3* m_pDatabase;
  const std::string& m_zName;
};

bool HoldTheSame(sqlite3_stmt* left, sqlite3_stmt* right, int lvColumn) {
  if (sqlite3_column_type(left, lvColumn) != sqlite3_column_type(right, lvColumn)) {
    return false;
  }
  // A number as its text, which tells all numbers that a store holds apart.
  const void* pLeft = sqlite3_column_blob(left, lvColumn);
  const void* pRight = sqlite3_column_blob(right, lvColumn);
  const int lSize = sqlite3_column_bytes(left, lvColumn);
  return lSize == sqlite3_column_bytes(right, lvColumn) &&
         (lSize == 0 || std::memcmp(pLeft, pRight, static_cast<std::size_t>(lSize)) == 0);
}

// Whether the query answers the same on both, in the same order.
bool AnswerTheSame(sqlite3* left, sqlite3* right, const std::string& zvQuery, const std::string& zvName) {
  const StatementHandle oLeft = PrepareQuery(left, zvQuery, zvName);
  const StatementHandle oRight = PrepareQuery(right, zvQuery, zvName);
  while (true) {
    const int lLeft = sqlite3_step(oLeft.get());
    const int lRight = sqlite3_step(oRight.get());
    if (lLeft != SQLITE_ROW || lRight != SQLITE_ROW) {
      return lLeft == SQLITE_DONE && lRight == SQLITE_DONE;
    }
    for (int i = 0; i < sqlite3_column_count(oLeft.get()); ++i) {
      if (!HoldTheSame(oLeft.get(), oRight.get(), i)) {
        return false;
      }
    }
  }
}

std::vector<std::string> Tables(sqlite3* db, const std::string& zvName) {
  const StatementHandle statement =
      PrepareQuery(db, "select name from sqlite_schema where type = 'table'", zvName);
  std::vector<std::string> zTables;
  int lResult = 0;
  while ((lResult = sqlite3_step(statement.get())) == SQLITE_ROW) {
    const auto* pName = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0));
    if (pName == nullptr) {
      throw OutOfMemory();
    }
    zTables.emplace_back(pName);
  }
  if (lResult != SQLITE_DONE) {
    throw EngineFailure(db, lResult, zvName);
  }
  return zTables;
}

void RequireWholeCopy(sqlite3* db, const std::string& zvCopy, const std::string& zvName) {
  PooledSession copy(zvCopy, PooledSession::Use::Copy, zvName);
  const std::vector<std::string> findings = CheckIntegrity(copy);
  if (!findings.empty()) {
    throw Failure(failure::kStoreUnavailable, "It is damaged: " + findings.front() +
                                                  ". Restore a backup with `qm-ordering store restore`.");
  }
  for (const std::string& zTable : Tables(db, zvName)) {
    if (!AnswerTheSame(db, copy.Database(), "select * from \"" + zTable + "\"", zvName)) {
      throw Failure(failure::kStoreUnavailable, "Its copy differs from it in the table " + zTable + ".");
    }
  }
}

void RunSteps(PooledSession& session) {
  sqlite3* db = session.Database();
  const std::string& zStore = session.Name();
  WriteUnit unit(db, zStore);
  const std::int32_t lVersion = RequireKnownVersion(db, zStore);
  if (lVersion == SchemaVersion()) {
    return;
  }
  const std::string zBackup =
      FreeName(sqlite3_db_filename(db, "main") + std::string(".schema") + std::to_string(lVersion));
  UnfinishedStore backup(zBackup, "Its copy " + zBackup + " was not made");
  {
    // The engine copies from no database that holds its write lock; another one on the file sees the same,
    // since nothing has been written.
    const DatabaseHandle source = OpenEngine(zStore, zStore, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
    CopyStore(source.get(), zStore, backup.Path(), zBackup, nullptr);
  }
  RequireWholeCopy(db, backup.Path(), zStore);
  for (const char* zStep : kSchemaSteps.subspan(static_cast<std::size_t>(lVersion))) {
    RunScript(db, zStep, zStore);
  }
  RunScript(db, "pragma user_version = " + std::to_string(SchemaVersion()), zStore);
  if (!backup.PublishAs(zBackup)) {
    throw Failure(failure::kStoreUnavailable, "A file " + zBackup + " has come into being. Try again.");
  }
  try {
    unit.Commit();
  } catch (...) {
    // The next program to open the store tries again, and makes another one.
    unlink(zBackup.c_str());
    throw;
  }
}

}  // namespace

void BringUpToDate(PooledSession& session) {
  const std::string zOlder = "The order store " + session.Name() + " is of an older version (schema " +
                             std::to_string(session.SchemaVersion()) + ", this library's is " +
                             std::to_string(SchemaVersion()) + ") and ";
  if (sqlite3_db_readonly(session.Database(), "main") != 0) {
    throw Failure(failure::kStoreUnavailable,
                  zOlder +
                      "must be writable once, to be brought up to date: it is read-only for this user. "
                      "Grant write permission on the file and its folder.");
  }
  try {
    RunSteps(session);
  } catch (const Failure& failure) {
    if (failure.Number() == failure::kOutOfMemory) {
      throw;
    }
    throw Failure(failure::kStoreUnavailable,
                  zOlder + "could not be brought up to date; it is unchanged. " + failure.Description());
  }
}

}  // namespace qm_ordering::ado::embedded
