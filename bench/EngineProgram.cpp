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
    std::int64_t LastKey() const { return sqlite3_last_insert_rowid(m_pDatabase); }
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
    void BindNull(int lvPosition) { sqlite3_bind_null(m_pStatement, lvPosition); }
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

    // For the statements that fill a store. The texts stay where they are until it has run.
    template <typename... Values>
    void Run(const Values&... values) {
      int lPosition = 0;
      (Bind(++lPosition, values), ...);
      Step();
      Reset();
    }

   private:
    sqlite3_stmt* m_pStatement = nullptr;
  };
};

}  // namespace

std::unique_ptr<OrderProgram> EngineProgram(const std::string& zvFolder) {
  return std::make_unique<SqlProgram<EngineDriver>>(zvFolder);
}

void FillOrder(const std::string& zvFolder, std::int32_t lvLines) {
  SqlProgram<EngineDriver>(zvFolder).Fill(lvLines);
}

void FillLists(const std::string& zvFolder, std::int32_t lvLines) {
  constexpr std::int32_t kLinesOfList = 100;
  EngineDriver::Database database(zvFolder + "/Orders.mdb");
  EngineDriver::Statement addList(database, "insert into tblPersonalList (lListID, zName) values (?, ?)");
  EngineDriver::Statement addLine(
      database,
      "insert into tblPersonalListItem (lListID, zItemNumber, lQuantity, zDescription, zShortDescription, "
      "zManufacturer, zModel, lSellQuantity, lShipQuantity, zUsuallyShips, bIsTaxable, zCustomerPartNumber, "
      "zCustomerNotes, bHasPartsInfo) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  database.Run("begin");
  for (std::int32_t i = 0; i < lvLines; ++i) {
    const std::int64_t lListID = 1 + i / kLinesOfList;
    if (i % kLinesOfList == 0) {
      addList.Run(lListID, "Monthly <order> " + std::to_string(lListID));
    }
    const Line line = MakeLine(i);
    addLine.Run(lListID, line.ItemNumber, line.Quantity, line.Description, line.ShortDescription,
                line.Manufacturer, line.Model, line.SellQuantity, line.ShipQuantity, line.UsuallyShips,
                std::int64_t{line.IsTaxable ? -1 : 0}, line.CustomerPartNumber, line.CustomerNotes,
                std::int64_t{i % 5 == 0 ? -1 : 0});
  }
  database.Run("commit");
}

void FillHistory(const std::string& zvFolder, std::int32_t lvOrders) {
  EngineDriver::Database database(zvFolder + "/Orders.mdb");
  // Some of them in one second, as of a program that submits what was entered elsewhere.
  EngineDriver::Statement add(database,
                              "insert into tblOrder (zPurchaseOrderNumber, cTotalPrice, datSubmitDate) "
                              "values (?, ?, datetime('2003-07-04 15:04:05', (? / 3 * 7919) || ' seconds'))");
  database.Run("begin");
  for (std::int64_t i = 0; i < lvOrders; ++i) {
    add.Run("PO-" + std::to_string(100'000 + i), i * i % 1'000'003 * 75, i);
  }
  database.Run("commit");
}

}  // namespace bench
