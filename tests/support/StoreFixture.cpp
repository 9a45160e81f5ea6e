#include "tests/support/StoreFixture.h"

#include <sqlite3.h>

#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "qm_ordering/foundation/Globals.h"
#include "qm_ordering/platform/ado/StatementTrace.h"
#include "qm_ordering/platform/ado/embedded/EmbeddedSession.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"
#include "qm_ordering/store/OrderStore.h"

namespace test {

namespace {

namespace engine = qm_ordering::ado::embedded;

[[noreturn]] void Raise(sqlite3* db, const std::string& zvWhat) {
  throw std::runtime_error(zvWhat + ": " + sqlite3_errmsg(db));
}

engine::DatabaseHandle OpenFile(const std::string& zvPath) {
  sqlite3* pDatabase = nullptr;
  const int lResult = sqlite3_open_v2(zvPath.c_str(), &pDatabase, SQLITE_OPEN_READWRITE, nullptr);
  engine::DatabaseHandle db(pDatabase);
  if (lResult != SQLITE_OK) {
    Raise(pDatabase, zvPath);
  }
  sqlite3_busy_timeout(pDatabase, 5000);
  engine::AddTextCollation(pDatabase, zvPath);
  return db;
}

std::string ColumnText(sqlite3_stmt* pStatement, int lvColumn) {
  if (sqlite3_column_type(pStatement, lvColumn) == SQLITE_NULL) {
    return "NULL";
  }
  const unsigned char* pText = sqlite3_column_text(pStatement, lvColumn);
  const auto lSize = static_cast<std::size_t>(sqlite3_column_bytes(pStatement, lvColumn));
  return pText == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(pText), lSize);
}

}  // namespace

TraceRecorder::TraceRecorder() {
  qm_ordering::SetStatementTrace([this](const std::string& zvSQL) {
    m_zStatements.push_back(zvSQL);
    if (Before) {
      Before(zvSQL);
    }
  });
}

TraceRecorder::~TraceRecorder() {
  qm_ordering::SetStatementTrace(nullptr);
}

std::vector<std::string> TraceRecorder::Take() {
  return std::exchange(m_zStatements, {});
}

Rows StoreFile::Query(const std::string& zvSQL) const {
  const engine::DatabaseHandle db = OpenFile(m_zPath);
  sqlite3_stmt* pStatement = nullptr;
  const int lPrepared =
      sqlite3_prepare_v2(db.get(), zvSQL.data(), static_cast<int>(zvSQL.size()), &pStatement, nullptr);
  const engine::StatementHandle statement(pStatement);
  if (lPrepared != SQLITE_OK) {
    Raise(db.get(), zvSQL);
  }
  Rows rows;
  int lResult = 0;
  while ((lResult = sqlite3_step(pStatement)) == SQLITE_ROW) {
    Row row;
    for (int i = 0; i < sqlite3_column_count(pStatement); ++i) {
      row.push_back(ColumnText(pStatement, i));
    }
    rows.push_back(std::move(row));
  }
  if (lResult != SQLITE_DONE) {
    Raise(db.get(), zvSQL);
  }
  return rows;
}

std::string StoreFile::Value(const std::string& zvSQL) const {
  const Rows rows = Query(zvSQL);
  if (rows.size() != 1 || rows.front().size() != 1) {
    throw std::runtime_error(zvSQL + ": not one value but " + std::to_string(rows.size()) + " rows");
  }
  return rows.front().front();
}

void StoreFile::Run(const std::string& zvSQL) const {
  const engine::DatabaseHandle db = OpenFile(m_zPath);
  if (sqlite3_exec(db.get(), zvSQL.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    Raise(db.get(), zvSQL);
  }
}

Rows StoreFile::Everything() const {
  Rows all;
  for (const char* zTable : {"tblOrder", "tblOrderItem", "tblPersonalList", "tblPersonalListItem"}) {
    all.push_back({zTable});
    for (Row& row : Query(std::string("select * from ") + zTable + " order by 1")) {
      all.push_back(std::move(row));
    }
  }
  return all;
}

StoreFixture::StoreFixture() : Store(Folder.File("Orders.mdb")) {
  qm_ordering::CreateOrderStore(Folder.Path());
  Settings->User["OrderingDatabasePath"] = Folder.Path();
  qm_ordering::StartUp();
}

StoreFixture::~StoreFixture() {
  // The folder goes: nothing of its store may rest open on this thread.
  engine::CloseIdleSessions();
}

std::size_t OpenFiles(const std::string& zvPath) {
  engine::CloseIdleSessions();
  std::size_t lOpen = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code gone;
    if (std::filesystem::read_symlink(entry.path(), gone).string().starts_with(zvPath)) {
      ++lOpen;
    }
  }
  return lOpen;
}

std::string Quoted(const std::string& zvText) {
  std::string zQuoted = "'";
  for (const char cLetter : zvText) {
    zQuoted.append(cLetter == '\'' ? 2 : 1, cLetter);
  }
  return zQuoted + "'";
}

}  // namespace test
