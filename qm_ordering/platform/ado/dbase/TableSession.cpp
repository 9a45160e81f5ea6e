#include "qm_ordering/platform/ado/dbase/TableSession.h"

#include <sys/stat.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/dbase/EngineAnswer.h"
#include "qm_ordering/platform/ado/dbase/TableQuery.h"
#include "qm_ordering/platform/file/SystemError.h"

namespace qm_ordering::ado::dbase {

namespace {

class TableCursor;

class TableSession : public Session {
 public:
  explicit TableSession(std::string zvFolder) : m_zFolder(std::move(zvFolder)) {}
  ~TableSession() override;

  std::unique_ptr<Cursor> Execute(const std::string& zvSQL) override;

  std::unique_ptr<RowAdder> OpenRows(const std::string&, std::span<const char* const>) override { Refuse(); }
  bool HasRow(const std::string&, const std::string&, const Variant&) override { Refuse(); }
  Keyset ReadKeyset(const std::string&) override { Refuse(); }
  void WriteKeyset(const Keyset&) override { Refuse(); }
  void Begin(TransactionKind) override { Refuse(); }
  void Commit() override { Refuse(); }
  void Rollback() noexcept override {}
  void CopyTo(const std::string&, const std::string&, const CopyProgress&) override { Refuse(); }
  std::vector<std::string> CheckIntegrity() override { Refuse(); }

 private:
  friend class TableCursor;

  [[noreturn]] void Refuse() const { throw RefusalToWrite(m_zFolder); }

  std::string m_zFolder;
  std::vector<TableCursor*> m_oCursors;
};

class TableCursor : public Cursor {
 public:
  TableCursor(TableSession& owner, std::unique_ptr<TableQuery> query)
      : m_oOwner(&owner), m_oQuery(std::move(query)) {
    m_oOwner->m_oCursors.push_back(this);
  }
  ~TableCursor() override {
    if (m_oQuery != nullptr) {
      Leave();
    }
  }

  bool IsOpen() const noexcept override { return m_oQuery != nullptr; }

  const std::shared_ptr<const ColumnNames>& Columns() const override {
    RequireOpen();
    return m_oQuery->Columns();
  }

  bool Next() override {
    RequireOpen();
    try {
      return m_oQuery->Next();
    } catch (...) {
      // Another step would begin the query anew.
      Leave();
      throw;
    }
  }

  Variant Value(std::size_t lvColumn) const override {
    RequireOpen();
    return m_oQuery->Value(lvColumn);
  }

  // Gives back what the query holds; the cursor is closed from here on.
  void End() noexcept { m_oQuery.reset(); }

 private:
  void Leave() noexcept {
    std::erase(m_oOwner->m_oCursors, this);
    End();
  }

  void RequireOpen() const {
    if (!IsOpen()) {
      throw Failure(failure::kClosedObject,
                    "The result set is closed: its connection was closed, or its reading failed.");
    }
  }

  TableSession* m_oOwner;
  std::unique_ptr<TableQuery> m_oQuery;
};

TableSession::~TableSession() {
  for (TableCursor* pCursor : m_oCursors) {
    pCursor->End();
  }
}

std::unique_ptr<Cursor> TableSession::Execute(const std::string& zvSQL) {
  return std::make_unique<TableCursor>(*this, std::make_unique<TableQuery>(m_zFolder, zvSQL));
}

}  // namespace

std::unique_ptr<Session> OpenSession(const std::string& zvFolder) {
  struct stat status {};
  if (stat(zvFolder.c_str(), &status) != 0) {
    const bool bMissing = errno == ENOENT || errno == ENOTDIR;
    throw Failure(bMissing ? failure::kPathNotFound : failure::kStoreUnavailable,
                  "The folder of the dBase tables " + zvFolder +
                      " cannot be used: " + file::SystemErrorText(errno) + ".");
  }
  if (!S_ISDIR(status.st_mode)) {
    throw Failure(failure::kStoreUnavailable,
                  "The dBase tables are to be in " + zvFolder + ", which is no folder.");
  }
  return std::make_unique<TableSession>(zvFolder);
}

}  // namespace qm_ordering::ado::dbase
