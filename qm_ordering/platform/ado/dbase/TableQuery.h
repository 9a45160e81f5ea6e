#pragma once

#include <cstddef>
#include <string>

#include "qm_ordering/platform/ado/embedded/Prepared.h"

namespace qm_ordering::ado::dbase {

// A SELECT on the tables of a folder, ready to run. The engine names the tables and columns that it needs;
// those are read into a database in memory, which goes with the query.
class TableQuery {
 public:
  // Raises kStoreNoTable when the folder lacks a table, kPathNotFound when there is no such folder,
  // kStoreCommand for a text that is not one SELECT (or EXPLAIN of one), and what the tables raise.
  TableQuery(std::string zvFolder, const std::string& zvSQL);

  const std::shared_ptr<const ColumnNames>& Columns() const { return m_oStatement.Columns; }
  // Moves to the next row; false behind the last, and from there to the first.
  bool Next();
  // A column's value in the current row.
  Variant Value(std::size_t lvColumn) const { return embedded::ReadColumn(m_oStatement, lvColumn); }

 private:
  std::string m_zFolder;
  embedded::DatabaseHandle m_oDatabase;
  embedded::Prepared m_oStatement;
};

}  // namespace qm_ordering::ado::dbase
