#include "qm_ordering/platform/ado/Connection.h"

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/ado/TraceStatement.h"
#include "qm_ordering/platform/ado/dbase/TableSession.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/file/Path.h"
#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering::ado {

namespace {

constexpr const char* kStoreDriver = "Microsoft Access Driver (*.mdb)";
constexpr const char* kTableDriver = "Microsoft dBase Driver (*.dbf)";

std::string StoreFileOf(const ConnectionString& parts) {
  const std::string zDriver = parts.Value("Driver");
  if (!SameName(zDriver, kStoreDriver)) {
    // The driver alone: other parts of the connection string may be secret.
    throw Failure(failure::kStoreUnavailable,
                  "No provider serves the driver \"" + zDriver + "\" that the connection string names.");
  }
  if (!parts.HoldsOnly({"Driver", "DBQ"})) {
    // A folder with a semicolon in it: what stands before that is another file.
    throw Failure(failure::kStoreUnavailable,
                  "The connection string of the store names more than a driver and a file. The folder in the "
                  "setting OrderingDatabasePath must not hold a semicolon.");
  }
  return file::SystemPath(parts.Value("DBQ"), "OrderingDatabasePath");
}

std::string TableFolderOf(const ConnectionString& parts) {
  const std::string zFolder = parts.Value("DBQ");
  if (zFolder.empty()) {
    throw Failure(failure::kPathNotFound, "No folder of dBase tables is named.");
  }
  if (!parts.HoldsOnly({"Driver", "DBQ", "DefaultDir"})) {
    throw Failure(
        failure::kStoreUnavailable,
        "The connection string of the dBase tables names more than a driver and a folder. That folder "
        "must not hold a semicolon.");
  }
  return file::SystemPath(zFolder, "the folder of the dBase tables");
}

}  // namespace

std::string StoreFileOf(const std::string& zvConnectionString) {
  return StoreFileOf(ConnectionString(zvConnectionString));
}

std::unique_ptr<Session> OpenSession(const std::string& zvConnectionString) {
  const ConnectionString parts(zvConnectionString);
  if (SameName(parts.Value("Driver"), kTableDriver)) {
    return dbase::OpenSession(TableFolderOf(parts));
  }
  return embedded::OpenSession(StoreFileOf(parts));
}

void Connection::Open(const std::string& zvConnectionString) {
  if (IsOpen()) {
    throw Failure(failure::kInvalidCall, "The connection is open already.");
  }
  m_oSession = OpenSession(zvConnectionString);
}

void Connection::Close() noexcept {
  if (!m_bTracing) {
    m_oSession.reset();
  }
}

Session& Connection::OpenedSession() {
  if (m_bTracing) {
    throw Failure(failure::kInvalidCall,
                  "The statement trace may not use the object whose statement it shows.");
  }
  if (m_oSession == nullptr) {
    throw Failure(failure::kClosedObject, "The connection is closed.");
  }
  return *m_oSession;
}

std::unique_ptr<Recordset> Connection::Execute(const std::string& zvSQL) {
  Session& session = OpenedSession();
  Trace(zvSQL);
  return Recordset::Live(session.Execute(zvSQL));
}

std::unique_ptr<Recordset> Connection::OpenDetached(const std::string& zvSQL) {
  Session& session = OpenedSession();
  Trace(zvSQL);
  return Recordset::Detached(session.Execute(zvSQL));
}

TableRecordset Connection::OpenTable(const std::string& zvTable) {
  Session& session = OpenedSession();
  Trace(zvTable);
  return {session, zvTable};
}

BatchRecordset Connection::OpenBatch(const std::string& zvSQL) {
  Session& session = OpenedSession();
  Trace(zvSQL);
  return {session, zvSQL};
}

void Connection::Trace(const std::string& zvSQL) {
  class Tracing {
   public:
    explicit Tracing(bool& orTracing) : m_bTracing(orTracing) { m_bTracing = true; }
    ~Tracing() { m_bTracing = false; }
    Tracing(const Tracing&) = delete;
    Tracing& operator=(const Tracing&) = delete;

   private:
    bool& m_bTracing;
  };
  const Tracing tracing(m_bTracing);
  TraceStatement(zvSQL);
}

void Connection::Refuse(const std::string& zvSQL, const std::string& zvWhy) {
  Trace(zvSQL);
  throw Failure(failure::kStoreCommand, zvWhy);
}

void Connection::BeginTransaction(TransactionKind kind) {
  OpenedSession().Begin(kind);
}

void Connection::CommitTransaction() {
  OpenedSession().Commit();
}

void Connection::RollbackTransaction() noexcept {
  if (m_oSession != nullptr) {
    m_oSession->Rollback();
  }
}

void Connection::CopyTo(const std::string& zvCopy, const std::string& zvCopyName,
                        const CopyProgress& progress) {
  OpenedSession().CopyTo(zvCopy, zvCopyName, progress);
}

std::vector<std::string> Connection::CheckIntegrity() {
  return OpenedSession().CheckIntegrity();
}

Transaction::Transaction(Connection& oConnection, TransactionKind kind) : m_oConnection(oConnection) {
  m_oConnection.BeginTransaction(kind);
}

Transaction::~Transaction() {
  if (m_bOpen) {
    m_oConnection.RollbackTransaction();
  }
}

void Transaction::Commit() {
  m_bOpen = false;
  m_oConnection.CommitTransaction();
}

}  // namespace qm_ordering::ado
