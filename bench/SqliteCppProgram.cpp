#include <SQLiteCpp/SQLiteCpp.h>

#include "bench/SqlProgram.h"

namespace bench {

namespace {

struct SqliteCppDriver {
  class Database : public SQLite::Database {
   public:
    explicit Database(const std::string& zvFile) : SQLite::Database(zvFile, SQLite::OPEN_READWRITE) {
      SetUpConnection(getHandle());
    }
    void Run(const char* zvScript) { exec(zvScript); }
    std::int64_t LastKey() const { return getLastInsertRowid(); }
  };

  class Statement {
   public:
    Statement(const Database& database, const std::string& zvSQL) : m_oStatement(database, zvSQL) {}

    void Bind(int lvPosition, std::int64_t lvValue) { m_oStatement.bind(lvPosition, lvValue); }
    void Bind(int lvPosition, const std::string& zvValue) { m_oStatement.bind(lvPosition, zvValue); }
    void BindNull(int lvPosition) { m_oStatement.bind(lvPosition); }
    bool Step() { return m_oStatement.executeStep(); }
    std::int64_t Integer(int lvColumn) { return m_oStatement.getColumn(lvColumn).getInt64(); }
    std::string Text(int lvColumn) { return m_oStatement.getColumn(lvColumn).getString(); }
    bool IsText(int lvColumn) { return m_oStatement.getColumn(lvColumn).isText(); }
    int Columns() const { return m_oStatement.getColumnCount(); }
    void Reset() { m_oStatement.reset(); }

   private:
    SQLite::Statement m_oStatement;
  };
};

}  // namespace

std::unique_ptr<OrderProgram> SqliteCppProgram(const std::string& zvFolder) {
  return std::make_unique<SqlProgram<SqliteCppDriver>>(zvFolder);
}

}  // namespace bench
