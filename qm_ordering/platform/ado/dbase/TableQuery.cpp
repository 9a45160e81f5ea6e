#include "qm_ordering/platform/ado/dbase/TableQuery.h"

#include <dirent.h>

#include <cerrno>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/ConnectionString.h"
#include "qm_ordering/platform/ado/dbase/EngineAnswer.h"
#include "qm_ordering/platform/ado/dbase/StatementColumns.h"
#include "qm_ordering/platform/ado/dbase/TableFile.h"
#include "qm_ordering/platform/ado/dbase/TableLoader.h"
#include "qm_ordering/platform/file/SystemError.h"
#include "qm_ordering/platform/text/Unicode.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/OutOfMemory.h"

namespace qm_ordering::ado::dbase {

namespace {

constexpr std::string_view kSuffix = ".dbf";
// How the engine says which table it misses.
constexpr std::string_view kNoTable = "no such table: ";

struct CloseFolder {
  void operator()(DIR* folder) const noexcept { closedir(folder); }
};

bool IsFileOfTable(std::string_view zvFile, std::string_view zvTable) {
  return zvFile.size() == zvTable.size() + kSuffix.size() &&
         SameName(zvFile.substr(0, zvTable.size()), zvTable) &&
         SameName(zvFile.substr(zvTable.size()), kSuffix);
}

[[noreturn]] void RaiseUnreadable(const std::string& zvFolder, int lvError) {
  const bool bMissing = lvError == ENOENT || lvError == ENOTDIR;
  throw Failure(bMissing ? failure::kPathNotFound : failure::kStoreUnavailable,
                "The folder of the dBase tables " + zvFolder +
                    " cannot be read: " + file::SystemErrorText(lvError) + ".");
}

std::string FindTable(const std::string& zvFolder, const std::string& zvTable) {
  const std::unique_ptr<DIR, CloseFolder> folder(opendir(zvFolder.c_str()));
  if (folder == nullptr) {
    RaiseUnreadable(zvFolder, errno);
  }
  std::vector<std::string> zFiles;
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(folder.get());
    if (entry == nullptr) {
      break;
    }
    if (IsFileOfTable(entry->d_name, zvTable)) {
      zFiles.emplace_back(entry->d_name);
    }
  }
  if (errno != 0) {
    RaiseUnreadable(zvFolder, errno);
  }
  if (zFiles.empty()) {
    throw Failure(failure::kStoreNoTable, "The folder " + zvFolder + " holds no dBase table " + zvTable +
                                              " (a file " + zvTable + ".DBF).");
  }
  if (zFiles.size() > 1) {
    throw Failure(failure::kStoreUnavailable, "The folder " + zvFolder + " holds the dBase table " + zvTable +
                                                  " more than once, as " + zFiles[0] + " and as " +
                                                  zFiles[1] + ". Remove the one that is not meant.");
  }
  return zvFolder + (zvFolder.ends_with('/') ? "" : "/") + zFiles.front();
}

// What a statement reads, told by the engine while it prepares the statement.
class Reads {
 public:
  explicit Reads(sqlite3* db) : m_oDatabase(db) { sqlite3_set_authorizer(db, Authorize, this); }
  ~Reads() { sqlite3_set_authorizer(m_oDatabase, nullptr, nullptr); }
  Reads(const Reads&) = delete;
  Reads& operator=(const Reads&) = delete;

  struct Column {
    std::string Table;
    std::string Name;  // empty where the table's rows alone count
  };
  // Raises OutOfMemory() when there was none to note them all.
  const std::vector<Column>& Columns() const {
    if (m_bOutOfMemory) {
      throw OutOfMemory();
    }
    return m_oColumns;
  }

 private:
  static int Authorize(void* pReads, int lvAction, const char* zvTable, const char* zvColumn, const char*,
                       const char*) noexcept {
    auto& reads = *static_cast<Reads*>(pReads);
    switch (lvAction) {
      case SQLITE_SELECT:
      case SQLITE_FUNCTION:
      case SQLITE_RECURSIVE:
        return SQLITE_OK;
      case SQLITE_READ:
        try {
          reads.m_oColumns.push_back({zvTable, zvColumn});
          return SQLITE_OK;
        } catch (const std::bad_alloc&) {
          reads.m_bOutOfMemory = true;
          return SQLITE_DENY;
        }
      default:
        return SQLITE_DENY;
    }
  }

  sqlite3* m_oDatabase;
  std::vector<Column> m_oColumns;
  bool m_bOutOfMemory = false;
};

struct OpenTable {
  OpenTable(sqlite3* db, const std::string& zvPath, const std::string& zvName,
            const StatementColumns& columns)
      : File(zvPath), Loader(db, zvName, File, columns) {}

  TableFile File;
  TableLoader Loader;
};

void RequireText(const std::string& zvSQL) {
  if (zvSQL.find('\0') != std::string::npos || text::FindBrokenUTF8(zvSQL)) {
    throw Failure(failure::kStoreCommand, "The statement cannot be run: it is no text in UTF-8.");
  }
}

class Preparation {
 public:
  Preparation(sqlite3* db, const std::string& zvFolder, const std::string& zvSQL)
      : m_oDatabase(db), m_zFolder(zvFolder), m_zSQL(zvSQL), m_oNamed(FindColumns(zvSQL)) {}

  embedded::StatementHandle Run() {
    for (const Reads::Column& column : FindReads()) {
      for (const auto& oTable : m_oTables) {
        if (SameName(oTable->Loader.Name(), column.Table)) {
          oTable->Loader.Use(column.Name.c_str());
        }
      }
    }
    for (const auto& oTable : m_oTables) {
      oTable->Loader.Load();
    }
    return Prepare();
  }

 private:
  // Makes every table that the engine misses, still without rows, until it can prepare the statement.
  std::vector<Reads::Column> FindReads() {
    for (;;) {
      const Reads reads(m_oDatabase);
      try {
        Prepare();
        return reads.Columns();
      } catch (const Failure&) {
        static_cast<void>(reads.Columns());
        const std::string zMessage = sqlite3_errmsg(m_oDatabase);
        if (!zMessage.starts_with(kNoTable)) {
          throw;
        }
        sqlite3_set_authorizer(m_oDatabase, nullptr, nullptr);
        AddTable(zMessage.substr(kNoTable.size()));
      }
    }
  }

  void AddTable(const std::string& zvName) {
    m_oTables.push_back(
        std::make_unique<OpenTable>(m_oDatabase, FindTable(m_zFolder, zvName), zvName, m_oNamed));
  }

  embedded::StatementHandle Prepare() const {
    sqlite3_stmt* pStatement = nullptr;
    const char* zRest = nullptr;
    const int lResult = sqlite3_prepare_v2(m_oDatabase, m_zSQL.c_str(), static_cast<int>(m_zSQL.size()) + 1,
                                           &pStatement, &zRest);
    embedded::StatementHandle statement(pStatement);
    if (lResult != SQLITE_OK) {
      throw EngineAnswer(m_oDatabase, lResult, m_zFolder);
    }
    if (sqlite3_column_count(pStatement) == 0) {
      throw RefusalToWrite(m_zFolder);
    }
    if (std::string_view(zRest).find_first_not_of(" \t\r\n;") != std::string_view::npos) {
      throw Failure(failure::kStoreCommand, "The statement cannot be run: something follows its end.");
    }
    return statement;
  }

  sqlite3* m_oDatabase;
  const std::string& m_zFolder;
  const std::string& m_zSQL;
  StatementColumns m_oNamed;
  std::vector<std::unique_ptr<OpenTable>> m_oTables;
};

embedded::DatabaseHandle OpenDatabase(const std::string& zvFolder) {
  embedded::DatabaseHandle db = embedded::OpenEngine(
      ":memory:", zvFolder,
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX);
  // All of it stays in memory. A name in double quotes is a name.
  int lResult = sqlite3_exec(db.get(), "PRAGMA temp_store = MEMORY", nullptr, nullptr, nullptr);
  if (lResult == SQLITE_OK) {
    lResult = sqlite3_db_config(db.get(), SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  }
  if (lResult != SQLITE_OK) {
    throw EngineAnswer(db.get(), lResult, zvFolder);
  }
  embedded::AddTextCollation(db.get(), zvFolder);
  return db;
}

}  // namespace

TableQuery::TableQuery(std::string zvFolder, const std::string& zvSQL) : m_zFolder(std::move(zvFolder)) {
  RequireText(zvSQL);
  m_oDatabase = OpenDatabase(m_zFolder);
  m_oStatement.Handle = Preparation(m_oDatabase.get(), m_zFolder, zvSQL).Run();
  embedded::DescribeResults(m_oStatement);
}

bool TableQuery::Next() {
  const int lResult = sqlite3_step(m_oStatement.Handle.get());
  if (lResult == SQLITE_ROW) {
    return true;
  }
  if (lResult != SQLITE_DONE) {
    throw EngineAnswer(m_oDatabase.get(), lResult, m_zFolder);
  }
  sqlite3_reset(m_oStatement.Handle.get());
  return false;
}

}  // namespace qm_ordering::ado::dbase
