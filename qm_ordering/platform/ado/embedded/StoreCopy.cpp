#include "qm_ordering/platform/ado/embedded/StoreCopy.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

// Some mebibytes, so that a progress bar moves.
constexpr int kPagesAtATime = 1000;

// Holds one state of the database from the first page to the last: without it the engine would begin anew
// after each write of another program.
class OneState {
 public:
  OneState(sqlite3* db, const std::string& zvName)
      : m_pDatabase(db), m_bOwn(sqlite3_get_autocommit(db) != 0) {
    if (m_bOwn) {
      RunScript(db, "begin", zvName);
    }
    try {
      ReadText(db, "select count(*) from sqlite_schema", zvName);
    } catch (...) {
      End();
      throw;
    }
  }
  ~OneState() { End(); }
  OneState(const OneState&) = delete;
  OneState& operator=(const OneState&) = delete;

 private:
  void End() noexcept {
    if (m_bOwn) {
      sqlite3_exec(m_pDatabase, "rollback", nullptr, nullptr, nullptr);
    }
  }

  sqlite3* m_pDatabase;
  bool m_bOwn;
};

struct FinishBackup {
  void operator()(sqlite3_backup* backup) const noexcept { sqlite3_backup_finish(backup); }
};

}  // namespace

void CopyStore(sqlite3* db, const std::string& zvName, const std::string& zvCopy,
               const std::string& zvCopyName, const CopyProgress& progress) {
  DatabaseHandle copy = OpenEngine(zvCopy, zvCopyName, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
  // The copy is marked for a write-ahead log, as its store is, until the end. One that nobody shares needs no
  // shared memory, which a network file system does not have.
  RunScript(copy.get(), "pragma locking_mode = exclusive; pragma synchronous = full", zvCopyName);
  {
    const OneState state(db, zvName);
    std::unique_ptr<sqlite3_backup, FinishBackup> backup(sqlite3_backup_init(copy.get(), "main", db, "main"));
    int lResult = backup == nullptr ? sqlite3_errcode(copy.get()) : SQLITE_OK;
    while (lResult == SQLITE_OK) {
      lResult = sqlite3_backup_step(backup.get(), kPagesAtATime);
      if (progress && (lResult == SQLITE_OK || lResult == SQLITE_DONE)) {
        const std::int64_t lAll = sqlite3_backup_pagecount(backup.get());
        progress(lAll - sqlite3_backup_remaining(backup.get()), lAll);
      }
    }
    // Hands the failure's text to the copy's database.
    backup.reset();
    if (lResult != SQLITE_DONE) {
      throw EngineFailure(copy.get(), lResult, zvCopyName);
    }
  }
  RunScript(copy.get(), "pragma journal_mode = delete", zvCopyName);
  CloseEngine(std::move(copy), zvCopyName);
}

void CopyStoreFile(const std::string& zvPath, const std::string& zvCopy, const std::string& zvCopyName,
                   const std::string& zvRefusal, const CopyProgress& progress) {
  const auto refuse = [&](const std::optional<Objection>& objection) {
    if (objection) {
      throw Failure(failure::kFileAccess, zvRefusal + ": " + objection->Why + ".");
    }
  };
  refuse(ObjectionToKind(zvPath));
  // A write-ahead log would be brought into the file when it is closed, if that could be written. Without one
  // the engine writes nothing, but takes back a transaction that a killed program left half-way, and removes
  // what it has to make beside the file.
  const int lAccess = LogBeside(zvPath) == zvPath + "-wal" ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  const DatabaseHandle db = OpenEngine(zvPath, zvPath, lAccess | SQLITE_OPEN_NOMUTEX);
  refuse(ObjectionToContent(db.get(), zvPath));
  sqlite3_busy_timeout(db.get(), kBusyTimeoutMilliseconds);
  CopyStore(db.get(), zvPath, zvCopy, zvCopyName, progress);
}

}  // namespace qm_ordering::ado::embedded
