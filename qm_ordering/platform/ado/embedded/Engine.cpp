#include "qm_ordering/platform/ado/embedded/Engine.h"

#include <string_view>

#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/CurrencySum.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::embedded {

namespace {

// A message of ours, or of a trigger of the schema, that begins so is an overflow.
constexpr std::string_view kOverflowMark = "overflow: ";

int CompareTexts(void*, int lvLeft, const void* pLeft, int lvRight, const void* pRight) {
  const std::string_view zLeft(static_cast<const char*>(pLeft), static_cast<std::size_t>(lvLeft));
  const std::string_view zRight(static_cast<const char*>(pRight), static_cast<std::size_t>(lvRight));
  return text::CompareFolded(zLeft, zRight);
}

void AddToSum(sqlite3_context* pContext, int, sqlite3_value** pValues) {
  const int lType = sqlite3_value_type(pValues[0]);
  if (lType == SQLITE_NULL) {
    return;
  }
  if (lType != SQLITE_INTEGER) {
    sqlite3_result_error_code(pContext, SQLITE_MISMATCH);
    return;
  }
  // The engine hands out the memory with all bits zero.
  auto* pSum = static_cast<CurrencySum*>(sqlite3_aggregate_context(pContext, sizeof(CurrencySum)));
  if (pSum == nullptr) {
    sqlite3_result_error_nomem(pContext);
    return;
  }
  pSum->Add(Currency::FromScaled(sqlite3_value_int64(pValues[0])));
}

void EndSum(sqlite3_context* pContext) {
  const auto* pSum = static_cast<const CurrencySum*>(sqlite3_aggregate_context(pContext, 0));
  if (pSum == nullptr) {
    sqlite3_result_null(pContext);
    return;
  }
  if (const std::optional<Currency> cTotal = pSum->Total()) {
    sqlite3_result_int64(pContext, cTotal->Scaled());
  } else {
    sqlite3_result_error(pContext, "overflow: a sum is beyond the range of money", -1);
  }
}

std::string Advice(int lvPrimary) {
  switch (lvPrimary) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return "another program holds the store; end what it does and try again";
    case SQLITE_FULL:
      return "the disk is full; free some space and try again";
    case SQLITE_READONLY:
      return "the file or its folder is read-only for this user; grant write permission on both";
    case SQLITE_CANTOPEN:
      return "the file, or a file beside it, cannot be opened; check the permissions of the folder";
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return "permission denied";
    case SQLITE_IOERR:
      return "reading or writing failed; check the disk";
    case SQLITE_CORRUPT:
      return "the file is damaged or truncated; restore a backup with `qm-ordering store restore`";
    case SQLITE_NOTADB:
      return "the file is not an order store";
    default:
      return "see the engine's message";
  }
}

}  // namespace

DatabaseHandle OpenEngine(const std::string& zvPath, const std::string& zvName, int lvFlags) {
  sqlite3* pDatabase = nullptr;
  const int lResult = sqlite3_open_v2(zvPath.c_str(), &pDatabase, lvFlags, nullptr);
  DatabaseHandle db(pDatabase);
  if (lResult != SQLITE_OK) {
    throw EngineFailure(pDatabase, lResult, zvName);
  }
  return db;
}

void CloseEngine(DatabaseHandle db, const std::string& zvName) {
  const int lResult = sqlite3_close(db.get());
  if (lResult != SQLITE_OK) {
    throw EngineFailure(db.get(), lResult, zvName);
  }
  static_cast<void>(db.release());
}

sqlite3_file* EngineFile(sqlite3* db, const std::string& zvPath) {
  sqlite3_file* pFile = nullptr;
  if (sqlite3_file_control(db, "main", SQLITE_FCNTL_FILE_POINTER, &pFile) != SQLITE_OK || pFile == nullptr ||
      pFile->pMethods == nullptr) {
    throw Failure(failure::kStoreUnavailable,
                  "The order store " + zvPath + " cannot be used: the engine gives no handle on it.");
  }
  return pFile;
}

Failure EngineFailure(sqlite3* db, int lvResult, const std::string& zvPath) {
  const int lPrimary = lvResult & 0xff;
  if (lPrimary == SQLITE_NOMEM) {
    return OutOfMemory();
  }
  const std::string zMessage = db != nullptr ? sqlite3_errmsg(db) : sqlite3_errstr(lvResult);
  if (zMessage.starts_with(kOverflowMark)) {
    return {failure::kOverflow, "Overflow: " + zMessage.substr(kOverflowMark.size()) + "."};
  }
  switch (lPrimary) {
    case SQLITE_ERROR:
      if (zMessage.starts_with("no such table")) {
        return {failure::kStoreNoTable, "The order store " + zvPath + ": " + zMessage + "."};
      }
      [[fallthrough]];
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
    case SQLITE_TOOBIG:
    case SQLITE_RANGE:
      return {failure::kStoreCommand,
              "The order store " + zvPath + " refused a statement: " + zMessage + "."};
    default: {
      std::string zText =
          "The order store " + zvPath + " cannot be used: " + Advice(lPrimary) + " (" + zMessage;
      const int lSystem = db != nullptr ? sqlite3_system_errno(db) : 0;
      if (lSystem != 0 && (lPrimary == SQLITE_IOERR || lPrimary == SQLITE_CANTOPEN)) {
        zText.append(": ").append(file::SystemErrorText(lSystem));
      }
      return {failure::kStoreUnavailable, zText + ")."};
    }
  }
}

bool IsFatal(int lvResult) {
  switch (lvResult & 0xff) {
    case SQLITE_IOERR:
    case SQLITE_FULL:
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_CANTOPEN:
    case SQLITE_READONLY:  // a session that was opened so stays so, also when the file may be written again
    case SQLITE_PROTOCOL:
    case SQLITE_NOMEM:
      return true;
    default:
      return false;
  }
}

void RunScript(sqlite3* db, const std::string& zvScript, const std::string& zvPath) {
  const int lResult = sqlite3_exec(db, zvScript.c_str(), nullptr, nullptr, nullptr);
  if (lResult != SQLITE_OK) {
    throw EngineFailure(db, lResult, zvPath);
  }
}

void AddTextCollation(sqlite3* db, const std::string& zvPath) {
  const int lResult =
      sqlite3_create_collation_v2(db, kTextCollation, SQLITE_UTF8, nullptr, CompareTexts, nullptr);
  if (lResult != SQLITE_OK) {
    throw EngineFailure(db, lResult, zvPath);
  }
}

void AddExactSum(sqlite3* db, const std::string& zvPath) {
  const int lResult = sqlite3_create_function_v2(db, "sum", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                                                 nullptr, AddToSum, EndSum, nullptr);
  if (lResult != SQLITE_OK) {
    throw EngineFailure(db, lResult, zvPath);
  }
}

StatementHandle PrepareQuery(sqlite3* db, const std::string& zvQuery, const std::string& zvPath) {
  sqlite3_stmt* pStatement = nullptr;
  const int lPrepared = sqlite3_prepare_v2(db, zvQuery.c_str(), -1, &pStatement, nullptr);
  StatementHandle statement(pStatement);
  if (lPrepared != SQLITE_OK) {
    throw EngineFailure(db, lPrepared, zvPath);
  }
  return statement;
}

std::string ReadText(sqlite3* db, const std::string& zvQuery, const std::string& zvPath) {
  const StatementHandle statement = PrepareQuery(db, zvQuery, zvPath);
  const int lResult = sqlite3_step(statement.get());
  if (lResult == SQLITE_DONE) {
    return {};
  }
  if (lResult != SQLITE_ROW) {
    throw EngineFailure(db, lResult, zvPath);
  }
  if (sqlite3_column_type(statement.get(), 0) == SQLITE_NULL) {
    return {};
  }
  const unsigned char* pText = sqlite3_column_text(statement.get(), 0);
  if (pText == nullptr) {
    throw OutOfMemory();
  }
  return reinterpret_cast<const char*>(pText);
}

}  // namespace qm_ordering::ado::embedded
