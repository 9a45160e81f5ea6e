#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/Recordset.h"
#include "qm_ordering/platform/ado/Session.h"

namespace qm_ordering::ado {

// A connection to a store. Every statement that goes through it is shown to the statement trace first.
// Opening and closing cost little: the providers keep their sessions.
class Connection {
 public:
  Connection() = default;
  // On a session that was opened already.
  explicit Connection(std::unique_ptr<Session> oSession) : m_oSession(std::move(oSession)) {}
  ~Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  // Raises what the provider raises; kInvalidCall when it is open already.
  void Open(const std::string& zvConnectionString);
  bool IsOpen() const { return m_oSession != nullptr; }

  // Rolls back what is not committed and closes the live result sets. Does nothing within the trace of a
  // statement, which needs the connection.
  void Close() noexcept;

  // These raise kClosedObject on a closed connection, kInvalidCall within the trace of one of its statements,
  // and what the provider raises.

  // A live result set; a closed one for a statement that is not a query.
  std::unique_ptr<Recordset> Execute(const std::string& zvSQL);
  // A result set that no longer needs the connection.
  std::unique_ptr<Recordset> OpenDetached(const std::string& zvSQL);
  // A table to which rows are added. The trace shows the table's name.
  TableRecordset OpenTable(const std::string& zvTable);
  // Rows to be changed and sent together.
  BatchRecordset OpenBatch(const std::string& zvSQL);

  // Shows the statement to the trace and raises kStoreCommand in place of running it.
  [[noreturn]] void Refuse(const std::string& zvSQL, const std::string& zvWhy);

  void BeginTransaction(TransactionKind kind = TransactionKind::Write);
  void CommitTransaction();
  void RollbackTransaction() noexcept;

  // See Session.
  void CopyTo(const std::string& zvCopy, const std::string& zvCopyName, const CopyProgress& progress);
  std::vector<std::string> CheckIntegrity();

 private:
  // Raises kInvalidCall, too, within the trace of a statement of this connection.
  Session& OpenedSession();
  // Shows the statement to the trace.
  void Trace(const std::string& zvSQL);

  std::unique_ptr<Session> m_oSession;
  bool m_bTracing = false;
};

// A transaction for the length of a scope: rolled back at its end unless it was committed.
class Transaction {
 public:
  explicit Transaction(Connection& oConnection, TransactionKind kind = TransactionKind::Write);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Connection& m_oConnection;
  bool m_bOpen = true;
};

}  // namespace qm_ordering::ado
