#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "qm_ordering/platform/ado/dbase/StatementColumns.h"
#include "qm_ordering/platform/ado/dbase/TableFile.h"
#include "qm_ordering/platform/ado/embedded/Engine.h"

namespace qm_ordering::ado::dbase {

// Brings a dBase table into a database of the engine, under its name. Columns that a statement sets equal to
// one another (StatementColumns::Keys) compare by their bytes, other texts without regard to letter case.
//
// What a column becomes, by its letter:
//   C        text, without the blanks (and zero bytes) at its end; null when nothing is left
//   N, F     the text of the number without blanks, so that it stays exact; null when it is blank. It
//   compares
//            as a text, too
//   D        a date; null when it is blank or 00000000
//   T        FoxPro's date and time, to the nearest second; null when it is blank or 0
//   L        a boolean: T, t, Y, y and F, f, N, n; null for a blank and "?"
//   I        an integer
//   Y        FoxPro's currency
//   B        FoxPro's double; elsewhere a reference to contents in another file
//   M, G, P  a reference to contents in another file, which is not read: null
class TableLoader {
 public:
  // db and table must outlive it. It makes the table without rows, with all its columns.
  TableLoader(sqlite3* db, std::string zvName, TableFile& table, const StatementColumns& columns);

  const std::string& Name() const { return m_zName; }

  // A statement that is to run reads this column; a name that the table does not have is ignored.
  void Use(const char* zvColumn);

  // Makes the table anew, of the used columns alone, with all records that are not deleted, and an index over
  // the keys and then the sorted columns among them, so that joining and sorting by them read it in order.
  // Raises kStoreUnavailable, naming record and column, for what the table cannot be read from, and for a
  // column of another letter.
  void Load();

 private:
  struct Column {
    const TableField* Field = nullptr;
    const char* DeclaredType = "";
    bool IsUsed = false;
    bool IsKey = false;
    std::string Text;  // of the current record, where its bytes are not the text
  };

  // Whether null keeps records from being found by the index in order.
  enum class NullKeys { Refused, Taken };

  const char* DeclaredTypeOf(const TableField& field) const;
  void CheckUsable(const Column& column) const;
  void Create(bool bvAll, NullKeys nullKeys);
  // False when a key is null and those are refused.
  bool Insert(NullKeys nullKeys);
  // These answer what the engine does.
  int Bind(sqlite3_stmt* pStatement, int lvPosition, Column& column, const char* pvRecord,
           std::int32_t lvRecord) const;
  int BindText(sqlite3_stmt* pStatement, int lvPosition, Column& column, std::string_view zvBytes) const;
  std::string Shown(std::string_view zvBytes) const;
  Failure BadValue(const Column& column, std::int32_t lvRecord, const std::string& zvWhat) const;
  void CreateIndex();
  // The used columns of these names.
  std::vector<const Column*> UsedOf(const std::vector<std::string>& zvNames) const;
  void Run(const std::string& zvText) const;

  sqlite3* m_oDatabase;
  std::string m_zName;
  TableFile& m_oTable;
  const StatementColumns& m_oNamed;
  std::vector<Column> m_oColumns;
};

}  // namespace qm_ordering::ado::dbase
