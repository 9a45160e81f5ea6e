#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "qm_ordering/platform/PerThread.h"
#include "qm_ordering/platform/ado/StoresBarred.h"
#include "qm_ordering/platform/ado/embedded/Integrity.h"
#include "qm_ordering/platform/ado/embedded/KeysetWriter.h"
#include "qm_ordering/platform/ado/embedded/PooledSession.h"
#include "qm_ordering/platform/ado/embedded/SchemaSteps.h"
#include "qm_ordering/platform/ado/embedded/SchemaUpdate.h"
#include "qm_ordering/platform/ado/embedded/StoreCopy.h"
#include "qm_ordering/platform/ado/embedded/Translator.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado::embedded {

namespace {

// The sessions that rest on a thread. Where the thread's pool has ended, sessions are just closed.
class Pool {
 public:
  std::unique_ptr<PooledSession> Take(const std::string& zvPath) {
    for (std::size_t i = m_oIdle.size(); i > 0; --i) {
      if (m_oIdle[i - 1]->Path() == zvPath) {
        std::unique_ptr<PooledSession> session = std::move(m_oIdle[i - 1]);
        m_oIdle.erase(m_oIdle.begin() + static_cast<std::ptrdiff_t>(i - 1));
        if (session->IsUsable()) {
          return session;
        }
      }
    }
    return nullptr;
  }

  void GiveBack(std::unique_ptr<PooledSession> session) noexcept {
    session->Rest();
    if (!session->MayRest()) {
      return;
    }
    try {
      if (m_oIdle.size() == kIdleSessions) {
        m_oIdle.erase(m_oIdle.begin());
      }
      m_oIdle.push_back(std::move(session));
    } catch (...) {
      // No memory to keep it in the pool: it closes.
      session.reset();
    }
  }

  void Clear() { m_oIdle.clear(); }

 private:
  static constexpr std::size_t kIdleSessions = 8;
  std::vector<std::unique_ptr<PooledSession>> m_oIdle;
};

class EmbeddedCursor;

// A session for as long as a connection uses it.
class EmbeddedSession : public Session {
 public:
  explicit EmbeddedSession(std::unique_ptr<PooledSession> session) : m_oSession(std::move(session)) {}
  ~EmbeddedSession() override;

  std::unique_ptr<Cursor> Execute(const std::string& zvSQL) override;
  std::unique_ptr<RowAdder> OpenRows(const std::string& zvTable,
                                     std::span<const char* const> zvColumns) override;
  bool HasRow(const std::string& zvTable, const std::string& zvColumn, const Variant& vvValue) override;
  Keyset ReadKeyset(const std::string& zvSQL) override;
  void WriteKeyset(const Keyset& oKeyset) override;
  void Begin(TransactionKind kind) override;
  void Commit() override;
  void Rollback() noexcept override;
  void CopyTo(const std::string& zvCopy, const std::string& zvCopyName,
              const CopyProgress& progress) override;
  std::vector<std::string> CheckIntegrity() override;

 private:
  friend class EmbeddedCursor;

  std::unique_ptr<Prepared> Start(const Translation& translation);

  std::unique_ptr<PooledSession> m_oSession;
  std::vector<EmbeddedCursor*> m_oCursors;
};

class EmbeddedRowAdder : public RowAdder {
 public:
  EmbeddedRowAdder(PooledSession& session, const std::string& zvTable, std::span<const char* const> zvColumns)
      : m_oSession(session) {
    std::string zPlaces;
    m_oInsert.Text = "insert into " + zvTable + " (";
    for (std::size_t i = 0; i < zvColumns.size(); ++i) {
      m_oInsert.Text.append(i == 0 ? "" : ", ").append(zvColumns[i]);
      zPlaces += i == 0 ? "?" : ", ?";
      m_oKinds.push_back(session.Kinds()(zvColumns[i]));
    }
    m_oInsert.Text += ") values (" + zPlaces + ")";
  }

  std::int64_t Add(std::span<const Variant> vvValues) override {
    m_oInsert.Parameters.clear();
    for (std::size_t i = 0; i < m_oKinds.size(); ++i) {
      m_oInsert.Parameters.push_back(ToParameter(vvValues[i], m_oKinds[i]));
    }
    std::unique_ptr<Prepared> statement = m_oSession.Prepare(m_oInsert);
    int lPosition = 0;
    for (const Parameter& parameter : m_oInsert.Parameters) {
      m_oSession.BindInPlace(*statement, ++lPosition, parameter);
    }
    const int lResult = sqlite3_step(statement->Handle.get());
    if (lResult != SQLITE_DONE) {
      throw m_oSession.Answer(lResult);
    }
    m_oSession.Keep(std::move(statement));
    return sqlite3_last_insert_rowid(m_oSession.Database());
  }

 private:
  PooledSession& m_oSession;
  Translation m_oInsert;
  std::vector<std::optional<ColumnKind>> m_oKinds;
};

class EmbeddedCursor : public Cursor {
 public:
  EmbeddedCursor(EmbeddedSession& owner, std::unique_ptr<Prepared> statement)
      : m_oOwner(&owner), m_oStatement(std::move(statement)) {
    m_oOwner->m_oCursors.push_back(this);
  }
  ~EmbeddedCursor() override {
    if (m_oOwner != nullptr) {
      Leave();
    }
  }

  bool IsOpen() const noexcept override { return m_oOwner != nullptr; }

  const std::shared_ptr<const ColumnNames>& Columns() const override {
    RequireOpen();
    return m_oStatement->Columns;
  }

  bool Next() override {
    RequireOpen();
    m_oOwner->m_oSession->RequireMayBeUsed();
    const int lResult = sqlite3_step(m_oStatement->Handle.get());
    if (lResult == SQLITE_ROW) {
      return true;
    }
    if (lResult != SQLITE_DONE) {
      const Failure failure = m_oOwner->m_oSession->Answer(lResult);
      // Another step would begin the query anew.
      Leave();
      throw failure;
    }
    // Ends the read at once: a reader that stands at the end would keep the log from being brought into the
    // file.
    sqlite3_reset(m_oStatement->Handle.get());
    return false;
  }

  Variant Value(std::size_t lvColumn) const override {
    RequireOpen();
    return ReadColumn(*m_oStatement, lvColumn);
  }

  // Gives the statement back; the cursor is closed from here on.
  void End() noexcept {
    m_oOwner->m_oSession->Keep(std::move(m_oStatement));
    m_oOwner = nullptr;
  }

 private:
  void Leave() noexcept {
    std::erase(m_oOwner->m_oCursors, this);
    End();
  }

  void RequireOpen() const {
    if (!IsOpen()) {
      throw Failure(failure::kClosedObject,
                    "The result set is closed: its connection was closed or used again.");
    }
  }

  EmbeddedSession* m_oOwner;
  std::unique_ptr<Prepared> m_oStatement;
};

EmbeddedSession::~EmbeddedSession() {
  for (EmbeddedCursor* pCursor : m_oCursors) {
    pCursor->End();
  }
  if (Pool* pool = PerThread<Pool>::Get()) {
    pool->GiveBack(std::move(m_oSession));
  }
}

std::unique_ptr<Prepared> EmbeddedSession::Start(const Translation& translation) {
  std::unique_ptr<Prepared> statement = m_oSession->Prepare(translation);
  int lPosition = 0;
  for (const Parameter& parameter : translation.Parameters) {
    m_oSession->Bind(*statement, ++lPosition, parameter);
  }
  return statement;
}

std::unique_ptr<Cursor> EmbeddedSession::Execute(const std::string& zvSQL) {
  std::unique_ptr<Prepared> statement = Start(Translate(zvSQL, m_oSession->Kinds()));
  if (statement->Columns->Count() != 0) {
    return std::make_unique<EmbeddedCursor>(*this, std::move(statement));
  }
  const int lResult = sqlite3_step(statement->Handle.get());
  if (lResult != SQLITE_DONE) {
    throw m_oSession->Answer(lResult);
  }
  m_oSession->Keep(std::move(statement));
  return nullptr;
}

std::unique_ptr<RowAdder> EmbeddedSession::OpenRows(const std::string& zvTable,
                                                    std::span<const char* const> zvColumns) {
  return std::make_unique<EmbeddedRowAdder>(*m_oSession, zvTable, zvColumns);
}

bool EmbeddedSession::HasRow(const std::string& zvTable, const std::string& zvColumn,
                             const Variant& vvValue) {
  Translation translation;
  translation.Text = "select 1 from " + zvTable + " where " + zvColumn + " = ? limit 1";
  translation.Parameters.push_back(ToParameter(vvValue, m_oSession->Kinds()(zvColumn)));
  std::unique_ptr<Prepared> statement = Start(translation);
  const int lResult = sqlite3_step(statement->Handle.get());
  if (lResult != SQLITE_ROW && lResult != SQLITE_DONE) {
    throw m_oSession->Answer(lResult);
  }
  m_oSession->Keep(std::move(statement));
  return lResult == SQLITE_ROW;
}

Keyset EmbeddedSession::ReadKeyset(const std::string& zvSQL) {
  // The engine's own row number is the primary key of every table of the store.
  const Translation translation = Translate(zvSQL, m_oSession->Kinds(), "rowid");
  std::unique_ptr<Prepared> statement = Start(translation);
  Keyset oKeyset;
  oKeyset.Table = translation.Table;
  std::vector<std::string> zColumns;
  for (std::size_t i = 1; i < statement->Columns->Count(); ++i) {
    zColumns.push_back((*statement->Columns)[i]);
  }
  oKeyset.Columns = std::make_shared<const ColumnNames>(std::move(zColumns));
  int lResult = 0;
  while ((lResult = sqlite3_step(statement->Handle.get())) == SQLITE_ROW) {
    Keyset::Row row;
    row.Key = sqlite3_column_int64(statement->Handle.get(), 0);
    for (std::size_t i = 0; i < oKeyset.Columns->Count(); ++i) {
      row.Read.push_back(ReadColumn(*statement, i + 1));
    }
    row.Changed = row.Read;
    oKeyset.Rows.push_back(std::move(row));
  }
  if (lResult != SQLITE_DONE) {
    throw m_oSession->Answer(lResult);
  }
  m_oSession->Keep(std::move(statement));
  return oKeyset;
}

void EmbeddedSession::WriteKeyset(const Keyset& oKeyset) {
  const bool bOwnTransaction = sqlite3_get_autocommit(m_oSession->Database()) != 0;
  if (bOwnTransaction) {
    Begin(TransactionKind::Write);
  } else {
    m_oSession->Run("SAVEPOINT batch");
  }
  try {
    KeysetWriter writer(*m_oSession, oKeyset);
    for (const Keyset::Row& row : oKeyset.Rows) {
      writer.Write(row);
    }
  } catch (...) {
    if (bOwnTransaction) {
      Rollback();
    } else {
      sqlite3_exec(m_oSession->Database(), "ROLLBACK TO batch; RELEASE batch", nullptr, nullptr, nullptr);
    }
    throw;
  }
  if (bOwnTransaction) {
    Commit();
  } else {
    m_oSession->Run("RELEASE batch");
  }
}

void EmbeddedSession::Begin(TransactionKind kind) {
  m_oSession->Run(kind == TransactionKind::Write ? "BEGIN IMMEDIATE" : "BEGIN");
}

void EmbeddedSession::Commit() {
  try {
    m_oSession->Run("COMMIT");
  } catch (...) {
    Rollback();
    throw;
  }
}

void EmbeddedSession::Rollback() noexcept {
  if (m_oSession->IsOfThisProcess() && sqlite3_get_autocommit(m_oSession->Database()) == 0) {
    sqlite3_exec(m_oSession->Database(), "ROLLBACK", nullptr, nullptr, nullptr);
  }
}

void EmbeddedSession::CopyTo(const std::string& zvCopy, const std::string& zvCopyName,
                             const CopyProgress& progress) {
  m_oSession->RequireMayBeUsed();
  CopyStore(m_oSession->Database(), m_oSession->Name(), zvCopy, zvCopyName, progress);
}

std::vector<std::string> EmbeddedSession::CheckIntegrity() {
  return embedded::CheckIntegrity(*m_oSession);
}

// A session that rests in the thread's pool, or a new one.
std::unique_ptr<PooledSession> TakeOrOpen(const std::string& zvPath) {
  StoresBarred::RequireNone();
  std::unique_ptr<PooledSession> session;
  if (Pool* pool = PerThread<Pool>::Get()) {
    session = pool->Take(zvPath);
  }
  if (session == nullptr) {
    session = std::make_unique<PooledSession>(zvPath, PooledSession::Use::Store, zvPath);
  }
  return session;
}

}  // namespace

std::unique_ptr<Session> OpenSession(const std::string& zvPath) {
  std::unique_ptr<PooledSession> session = TakeOrOpen(zvPath);
  if (session->SchemaVersion() != SchemaVersion()) {
    BringUpToDate(*session);
    session = TakeOrOpen(zvPath);
  }
  return std::make_unique<EmbeddedSession>(std::move(session));
}

std::unique_ptr<Session> OpenAsItIs(const std::string& zvPath) {
  return std::make_unique<EmbeddedSession>(TakeOrOpen(zvPath));
}

std::unique_ptr<Session> OpenCopy(const std::string& zvPath, const std::string& zvName) {
  return std::make_unique<EmbeddedSession>(
      std::make_unique<PooledSession>(zvPath, PooledSession::Use::Copy, zvName));
}

void CloseIdleSessions() {
  if (Pool* pool = PerThread<Pool>::Get()) {
    pool->Clear();
  }
}

}  // namespace qm_ordering::ado::embedded
