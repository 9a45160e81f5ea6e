// The program over the engine's own interface: what the library is measured against.
#include <sqlite3.h>

#include <stdexcept>

#include "bench/BenchStore.h"
#include "bench/SqlProgram.h"

namespace bench {

namespace {

struct EngineDriver {
  class Database {
   public:
    explicit Database(const std::string& zvFile) {
      if (sqlite3_open_v2(zvFile.c_str(), &m_pDatabase, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX,
                          nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_pDatabase));
      }
      SetUpConnection(m_pDatabase);
    }
    ~Database() { sqlite3_close_v2(m_pDatabase); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void Run(const char* zvScript) {
      if (sqlite3_exec(m_pDatabase, zvScript, nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_pDatabase));
      }
    }
    sqlite3* Handle() const { return m_pDatabase; }

   private:
    sqlite3* m_pDatabase = nullptr;
  };

  class Statement {
   public:
    Statement(Database& database, const std::string& zvSQL) {
      if (sqlite3_prepare_v3(database.Handle(), zvSQL.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &m_pStatement,
                             nullptr) != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(database.Handle()));
      }
    }
    ~Statement() { sqlite3_finalize(m_pStatement); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void Bind(int lvPosition, std::int64_t lvValue) { sqlite3_bind_int64(m_pStatement, lvPosition, lvValue); }
    // The text stays where it is until the statement has run.
    void Bind(int lvPosition, const std::string& zvValue) {
      sqlite3_bind_text(m_pStatement, lvPosition, zvValue.data(), static_cast<int>(zvValue.size()),
                        SQLITE_STATIC);
    }
    bool Step() {
      const int lResult = sqlite3_step(m_pStatement);
      if (lResult != SQLITE_ROW && lResult != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(sqlite3_db_handle(m_pStatement)));
      }
      return lResult == SQLITE_ROW;
    }
    std::int64_t Integer(int lvColumn) const { return sqlite3_column_int64(m_pStatement, lvColumn); }
    std::string Text(int lvColumn) const {
      const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(m_pStatement, lvColumn));
      return pText == nullptr
                 ? std::string()
                 : std::string(pText, static_cast<std::size_t>(sqlite3_column_bytes(m_pStatement, lvColumn)));
    }
    bool IsText(int lvColumn) const { return sqlite3_column_type(m_pStatement, lvColumn) == SQLITE_TEXT; }
    int Columns() const { return sqlite3_column_count(m_pStatement); }
    void Reset() { sqlite3_reset(m_pStatement); }

   private:
    sqlite3_stmt* m_pStatement = nullptr;
  };
};

}  // namespace

std::unique_ptr<OrderProgram> EngineProgram(const std::string& zvFolder) {
  return std::make_unique<SqlProgram<EngineDriver>>(zvFolder);
}

void FillStore(const std::string& zvFolder, const std::vector<Line>& lines) {
  SqlProgram<EngineDriver>(zvFolder).Fill(lines);
}

}  // namespace bench
