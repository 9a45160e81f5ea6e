#include "qm_ordering/platform/ado/embedded/PooledSession.h"

#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <mutex>
#include <new>
#include <utility>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/ado/StoresBarred.h"
#include "qm_ordering/platform/ado/embedded/SchemaSteps.h"
#include "qm_ordering/platform/ado/embedded/StoreFile.h"
#include "qm_ordering/platform/ado/embedded/UnfinishedStore.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::embedded {

namespace {

constexpr std::size_t kStatementsKept = 64;
// A log of a mebibyte is brought into the file when a session is given back.
constexpr int kCheckpointPages = 256;

// The engine keeps its file locks in memory of the process. A fork inherits that memory but not the locks, so
// a session that it opened then would believe in locks that nobody holds.
std::atomic<pid_t> g_lProcess{0};
std::atomic<int> g_lOpenSessions{0};

// This process, known without asking the system at every row: asked for whenever a session is opened or taken
// from the pool, and in a child of fork.
constinit std::atomic<pid_t> g_lThisProcess{0};

pid_t AskForProcess() noexcept {
  const pid_t lProcess = getpid();
  g_lThisProcess.store(lProcess, std::memory_order_relaxed);
  return lProcess;
}

[[maybe_unused]] const int g_lHandler = pthread_atfork(nullptr, nullptr, [] { AskForProcess(); });

[[noreturn]] void RaiseForked(const std::string& zvPath) {
  throw Failure(failure::kStoreUnavailable, "The order store " + zvPath +
                                                " cannot be used in a process that was forked while the "
                                                "store was open. Start a program of its own (exec) for "
                                                "this work.");
}

void RequireNoSessionFromBeforeTheFork(const std::string& zvPath) {
  const pid_t lProcess = AskForProcess();
  if (g_lProcess.load() != lProcess) {
    if (g_lOpenSessions.load() > 0) {
      RaiseForked(zvPath);
    }
    g_lProcess.store(lProcess);
  }
}

// The sessions of this process, on all its threads.
std::mutex g_oListMutex;

}  // namespace

PooledSession::Enlisted* PooledSession::Enlisted::s_pFirst = nullptr;

void PooledSession::Enlisted::Enter() {
  const std::lock_guard lock(g_oListMutex);
  for (const Enlisted* pOther = s_pFirst; pOther != nullptr; pOther = pOther->m_pNext) {
    const PooledSession& other = pOther->m_oSession;
    if (other.m_zLogIndexPath == m_oSession.m_zLogIndexPath &&
        (other.m_lDevice != m_oSession.m_lDevice || other.m_lInode != m_oSession.m_lInode)) {
      // The log beside the file is the other one's; the engine would read it into this one.
      throw Failure(failure::kStoreUnavailable,
                    "The order store " + m_oSession.m_zPath +
                        " cannot be used: the file was replaced, and another thread or call of this program "
                        "still uses the one that was there. Let it end, or end the program and start it "
                        "again.");
    }
  }
  m_pNext = s_pFirst;
  s_pFirst = this;
  m_bEntered = true;
}

PooledSession::Enlisted::~Enlisted() {
  if (!m_bEntered || !m_oSession.IsOfThisProcess()) {
    return;
  }
  const std::lock_guard lock(g_oListMutex);
  Enlisted** pLink = &s_pFirst;
  while (*pLink != this) {
    pLink = &(*pLink)->m_pNext;
  }
  *pLink = m_pNext;
}

PooledSession::PooledSession(const std::string& zvPath, Use use, const std::string& zvName)
    : m_zPath(zvPath),
      m_zName(zvName),
      m_lUse(use),
      m_lProcess(AskForProcess()),
      m_lCheckpointAt(kCheckpointPages) {
  RequireNoSessionFromBeforeTheFork(zvName);
  const struct stat file = RequireOrdinaryFile(zvPath);
  m_lDevice = file.st_dev;
  m_lInode = file.st_ino;
  sqlite3* pDatabase = nullptr;
  const int lResult =
      sqlite3_open_v2(zvPath.c_str(), &pDatabase,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  m_oDatabase.reset(pDatabase);
  if (lResult != SQLITE_OK) {
    throw EngineFailure(pDatabase, lResult, zvName);
  }
  RequireOrderStore(pDatabase, zvName);
  m_zLogIndexPath = EngineName() + std::string("-shm");
  m_oEnlisted.Enter();
  LetLogBeWritten();
  Configure();
  RequireSameFile();
  m_zReadOnlyFile = FindReadOnlyFile();
  // The file's beginning, which was looked at, may be behind its log.
  m_lSchemaVersion = RequireKnownVersion(Database(), m_zName);
  LoadColumnKinds();
  RebuildTextIndexesIfFoldingChanged();
  struct stat log {};
  if (stat(LogName(), &log) == 0) {
    m_lLogInode = log.st_ino;
  }
  m_oKinds = [this](std::string_view zvColumn) -> std::optional<ColumnKind> {
    const auto found = m_oColumnKinds.find(zvColumn);
    return found == m_oColumnKinds.end() ? std::nullopt : std::optional(found->second);
  };
  ++g_lOpenSessions;
}

PooledSession::~PooledSession() {
  if (!IsOfThisProcess()) {
    for (const auto& statement : m_oStatements) {
      static_cast<void>(statement->Handle.release());
    }
    static_cast<void>(m_oDatabase.release());
    return;
  }
  m_oStatementsByText.clear();
  m_oStatements.clear();
  if (IsFileGoneFrom(EngineName())) {
    TakeLogAway();
  }
  --g_lOpenSessions;
}

const char* PooledSession::EngineName() const noexcept {
  return sqlite3_db_filename(Database(), "main");
}

const char* PooledSession::LogName() const noexcept {
  return sqlite3_filename_wal(EngineName());
}

bool PooledSession::IsFileAt(const char* zvPath) const noexcept {
  struct stat status {};
  return stat(zvPath, &status) == 0 && status.st_dev == m_lDevice && status.st_ino == m_lInode;
}

// Certainly: a status that cannot be read says nothing of the file.
bool PooledSession::IsFileGoneFrom(const char* zvPath) const noexcept {
  struct stat status {};
  if (stat(zvPath, &status) != 0) {
    return errno == ENOENT || errno == ENOTDIR;
  }
  return status.st_dev != m_lDevice || status.st_ino != m_lInode;
}

// The file is no longer where it was opened, its log still is: the engine would read it into the next store
// there, whichever that is. What the log holds goes into the file that it belongs to, and the log goes.
void PooledSession::TakeLogAway() noexcept {
  int lPages = 0;
  int lDone = 0;
  const int lResult =
      sqlite3_wal_checkpoint_v2(Database(), nullptr, SQLITE_CHECKPOINT_PASSIVE, &lPages, &lDone);
  struct stat log {};
  if (stat(LogName(), &log) != 0 || log.st_dev != m_lDevice || log.st_ino != m_lLogInode) {
    return;
  }
  if (lResult == SQLITE_OK && lDone == lPages) {
    unlink(LogName());
  } else {
    try {
      // Somebody else still reads what it holds, or it could not be brought in: it is kept, under another
      // name.
      rename(LogName(), FreeName(LogName() + std::string(".kept")).c_str());
    } catch (const std::bad_alloc&) {
      return;
    }
  }
  unlink(m_zLogIndexPath.c_str());
}

// The engine gives the log and its index the permissions that the store has when it makes them. Those from a
// time when the store was read-only would keep it so for good.
void PooledSession::LetLogBeWritten() noexcept {
  struct stat store {};
  if (stat(EngineName(), &store) != 0) {
    return;
  }
  for (const char* zBeside : {LogName(), m_zLogIndexPath.c_str()}) {
    struct stat beside {};
    if (stat(zBeside, &beside) == 0 && (store.st_mode & ~beside.st_mode & S_IRWXU) != 0) {
      chmod(zBeside, store.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO));
    }
  }
}

bool PooledSession::KeepsLog() const {
  return m_lUse == Use::Store && !IsOnNetwork(m_zPath);
}

void PooledSession::Configure() {
  sqlite3* db = m_oDatabase.get();
  sqlite3_busy_timeout(db, kBusyTimeoutMilliseconds);
  sqlite3_db_config(db, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  AddTextCollation(db, m_zName);
  AddExactSum(db, m_zName);
  RunScript(db,
            "pragma synchronous = full; pragma foreign_keys = on; pragma secure_delete = on; "
            "pragma cell_size_check = on; pragma temp_store = memory;",
            m_zName);
  const std::string zJournal = KeepsLog() ? "wal" : "delete";
  if (sqlite3_db_readonly(db, "main") == 0 && ReadText(db, "pragma journal_mode", m_zName) != zJournal) {
    RunScript(db, "pragma journal_mode = " + zJournal, m_zName);
  }
  sqlite3_wal_hook(db, AfterCommit, this);
}

// From the first read on the session keeps other programs from replacing the file. Before that one may have
// done so, and this session would write the log of the file that it opened beside the new one.
void PooledSession::RequireSameFile() {
  if (!IsFileAt(EngineName())) {
    throw Failure(failure::kStoreUnavailable,
                  "The order store " + m_zName + " was replaced while it was being opened. Try again.");
  }
}

// The store or its log, where it could not be opened for writing; empty when both are. The engine then opens
// them for reading, whatever the reason was, and stays so. It says it of the log only when it is to write:
// the write lock is asked for, and not waited for.
std::string PooledSession::FindReadOnlyFile() {
  if (sqlite3_db_readonly(Database(), "main") != 0) {
    return m_zPath;
  }
  if (!KeepsLog()) {
    return {};
  }
  sqlite3_busy_timeout(Database(), 0);
  const int lResult = sqlite3_exec(Database(), "begin immediate; rollback", nullptr, nullptr, nullptr);
  sqlite3_busy_timeout(Database(), kBusyTimeoutMilliseconds);
  switch (lResult & 0xff) {
    case SQLITE_OK:
      return {};
    case SQLITE_READONLY:
    case SQLITE_BUSY:  // held by another program, which leaves it open whether the log can be written
      return LogName();
    default:
      throw EngineFailure(Database(), lResult, m_zName);
  }
}

void PooledSession::LoadColumnKinds() {
  const std::string zQuery =
      "select p.name, p.type from sqlite_schema m join pragma_table_info(m.name) p where m.type = 'table'";
  const StatementHandle statement = PrepareQuery(Database(), zQuery, m_zName);
  sqlite3_stmt* pStatement = statement.get();
  int lResult = 0;
  while ((lResult = sqlite3_step(pStatement)) == SQLITE_ROW) {
    const auto* zName = reinterpret_cast<const char*>(sqlite3_column_text(pStatement, 0));
    const auto* zType = reinterpret_cast<const char*>(sqlite3_column_text(pStatement, 1));
    if (zName == nullptr || zType == nullptr) {
      throw OutOfMemory();
    }
    if (const auto kind = KindOfDeclaredType(zType)) {
      m_oColumnKinds.emplace(zName, *kind);
    }
  }
  if (lResult != SQLITE_DONE) {
    throw EngineFailure(Database(), lResult, m_zName);
  }
}

void PooledSession::RebuildTextIndexesIfFoldingChanged() {
  const std::string zQuery = "select zValue from sysFormat where zName = 'folding'";
  const std::string zVersion = text::FoldingVersion();
  if (ReadText(Database(), zQuery, m_zName) == zVersion) {
    return;
  }
  RunScript(Database(), "begin immediate", m_zName);
  try {
    RunScript(Database(),
              "reindex; update sysFormat set zValue = '" + zVersion + "' where zName = 'folding'; commit",
              m_zName);
  } catch (...) {
    sqlite3_exec(Database(), "rollback", nullptr, nullptr, nullptr);
    throw;
  }
}

bool PooledSession::MayRest() noexcept {
  if (m_lUse != Use::Store || m_lSchemaVersion != embedded::SchemaVersion() || m_bBroken ||
      !IsOfThisProcess()) {
    return false;
  }
  // One that has only read is looked at when it is taken.
  const sqlite3_int64 lChanges = sqlite3_total_changes64(Database());
  if (lChanges == m_lChangesLooked) {
    return true;
  }
  m_lChangesLooked = lChanges;
  return IsFileAt(m_zPath.c_str());
}

bool PooledSession::IsUsable() const {
  if (m_lProcess != AskForProcess() || !IsFileAt(m_zPath.c_str())) {
    return false;
  }
  return m_zReadOnlyFile.empty() || access(m_zReadOnlyFile.c_str(), W_OK) != 0;
}

bool PooledSession::IsOfThisProcess() const noexcept {
  return m_lProcess == g_lThisProcess.load(std::memory_order_relaxed);
}

void PooledSession::RequireMayBeUsed() const {
  StoresBarred::RequireNone();
  if (!IsOfThisProcess()) {
    RaiseForked(m_zName);
  }
}

std::unique_ptr<Prepared> PooledSession::Prepare(const Translation& translation) {
  RequireMayBeUsed();
  const auto kept = m_oStatementsByText.find(translation.Text);
  if (kept != m_oStatementsByText.end()) {
    std::unique_ptr<Prepared> statement = std::move(*kept->second);
    m_oStatements.erase(kept->second);
    m_oStatementsByText.erase(kept);
    return statement;
  }
  auto statement = std::make_unique<Prepared>();
  sqlite3_stmt* pStatement = nullptr;
  const int lResult =
      sqlite3_prepare_v3(Database(), translation.Text.data(), static_cast<int>(translation.Text.size()),
                         translation.VariableLength ? 0 : SQLITE_PREPARE_PERSISTENT, &pStatement, nullptr);
  statement->Handle.reset(pStatement);
  if (lResult != SQLITE_OK) {
    throw Answer(lResult);
  }
  if (!translation.VariableLength) {
    statement->Text = translation.Text;
  }
  DescribeResults(*statement, translation.ResultKinds);
  return statement;
}

void PooledSession::Bind(const Prepared& statement, int lvPosition, const Parameter& parameter,
                         sqlite3_destructor_type copy) {
  int lResult = SQLITE_OK;
  if (const auto* pNumber = std::get_if<std::int64_t>(&parameter)) {
    lResult = sqlite3_bind_int64(statement.Handle.get(), lvPosition, *pNumber);
  } else if (const auto* pText = std::get_if<std::string>(&parameter)) {
    lResult = sqlite3_bind_text64(statement.Handle.get(), lvPosition, pText->data(), pText->size(), copy,
                                  SQLITE_UTF8);
  } else {
    lResult = sqlite3_bind_null(statement.Handle.get(), lvPosition);
  }
  if (lResult != SQLITE_OK) {
    throw Answer(lResult);
  }
}

void PooledSession::Keep(std::unique_ptr<Prepared> statement) noexcept {
  if (!IsOfThisProcess()) {
    static_cast<void>(statement->Handle.release());
    return;
  }
  sqlite3_reset(statement->Handle.get());
  sqlite3_clear_bindings(statement->Handle.get());
  if (statement->Text.empty() || m_bBroken) {
    return;
  }
  try {
    m_oStatements.push_front(std::move(statement));
    const bool bNew = m_oStatementsByText.emplace(m_oStatements.front()->Text, m_oStatements.begin()).second;
    if (!bNew) {
      // The same text ran twice at a time; one of them is enough to keep.
      m_oStatements.pop_front();
    } else if (m_oStatements.size() > kStatementsKept) {
      m_oStatementsByText.erase(m_oStatements.back()->Text);
      m_oStatements.pop_back();
    }
  } catch (...) {
    // Not enough memory to keep it: the cache starts anew.
    m_oStatementsByText.clear();
    m_oStatements.clear();
  }
}

void PooledSession::Run(const char* zvText) {
  Translation translation;
  translation.Text = zvText;
  auto statement = Prepare(translation);
  const int lResult = sqlite3_step(statement->Handle.get());
  if (lResult != SQLITE_DONE) {
    const Failure failure = Answer(lResult);
    Keep(std::move(statement));
    throw failure;
  }
  Keep(std::move(statement));
}

Failure PooledSession::Answer(int lvResult) {
  m_bBroken = m_bBroken || IsFatal(lvResult);
  return EngineFailure(Database(), lvResult, m_zName);
}

int PooledSession::AfterCommit(void* pSession, sqlite3*, const char*, int lvPages) {
  static_cast<PooledSession*>(pSession)->m_lLogPages = lvPages;
  return SQLITE_OK;
}

void PooledSession::Rest() noexcept {
  if (m_bBroken || !IsOfThisProcess()) {
    return;
  }
  if (sqlite3_get_autocommit(Database()) == 0 &&
      sqlite3_exec(Database(), "rollback", nullptr, nullptr, nullptr) != SQLITE_OK) {
    m_bBroken = true;
    return;
  }
  if (m_lLogPages < m_lCheckpointAt) {
    return;
  }
  int lPages = 0;
  int lDone = 0;
  const int lResult =
      sqlite3_wal_checkpoint_v2(Database(), nullptr, SQLITE_CHECKPOINT_PASSIVE, &lPages, &lDone);
  m_bBroken = IsFatal(lResult);
  // While others read, a part may stay in the log: no use in trying again before it has grown by as much.
  m_lCheckpointAt =
      lResult == SQLITE_OK && lDone >= lPages ? kCheckpointPages : m_lLogPages + kCheckpointPages;
  m_lLogPages = 0;
}

}  // namespace qm_ordering::ado::embedded
