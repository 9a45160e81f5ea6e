#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/Session.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering::ado {

class Recordset;

// A column of a result set: its value follows the set's current row. Valid as long as the set is.
class Field {
 public:
  // Raises kNoCurrentRow behind the last row, kClosedObject when the set is closed.
  Variant Value() const;

 private:
  friend class Recordset;
  Field(const Recordset* oOwner, std::size_t lvColumn) : m_oOwner(oOwner), m_lColumn(lvColumn) {}
  const Recordset* m_oOwner;
  std::size_t m_lColumn;
};

// A result set, standing on its first row when it is new.
class Recordset {
 public:
  // Streams; the end of the cursor's session closes it. A null cursor makes a closed set.
  static std::unique_ptr<Recordset> Live(std::unique_ptr<Cursor> oCursor);
  // Reads the cursor to its end into memory and no longer needs it.
  static std::unique_ptr<Recordset> Detached(std::unique_ptr<Cursor> oCursor);

  virtual ~Recordset() = default;

  // Both are true when there are no rows. Raise kClosedObject when the set is closed.
  virtual bool AtBeginning() const = 0;
  virtual bool AtEnd() const = 0;
  // Raises kNoCurrentRow behind the last row.
  virtual void MoveNext() = 0;
  virtual void Close() noexcept = 0;

  // The column of that name, in any letter case. Raises kUnknownField.
  Field Fields(std::string_view zvName) const;
  // The column at that position, from 0. Raises kUnknownField.
  Field Fields(std::size_t lvColumn) const;

 protected:
  friend class Field;
  virtual const ColumnNames& Columns() const = 0;
  virtual Variant ValueAt(std::size_t lvColumn) const = 0;
};

// A table of a store to which rows are added, each at once. Who adds rows that belong together opens a
// transaction around them. Must be used while the session is open; raises what the provider raises.
class TableRecordset {
 public:
  TableRecordset(Session& oSession, std::string zvTable)
      : m_oSession(oSession), m_zTable(std::move(zvTable)) {}

  // Adds a row, a value for each of the columns, and answers its new key.
  std::int64_t AddRow(std::span<const char* const> zvColumns, std::span<const Variant> vvValues);

  // Whether there is a row that meets the criterion "COLUMN = 'value'", as the store compares. What stands
  // between the first and the last quote is the value, as it is. Raises kBadCriterion for any other text.
  bool Find(const std::string& zvCriterion) const;

 private:
  Session& m_oSession;
  std::string m_zTable;
  // Rows that follow each other mostly have the same columns.
  std::vector<const char*> m_zColumns;
  std::unique_ptr<RowAdder> m_oRows;
};

// Rows to be changed: read at once, changed in memory, sent together.
class BatchRecordset {
 public:
  BatchRecordset(Session& oSession, const std::string& zvSQL);

  bool AtEnd() const { return m_lRow >= m_oKeyset.Rows.size(); }
  void MoveNext();

  // The position of the column of that name, in any letter case. Raises kUnknownField.
  std::size_t Column(std::string_view zvName) const;

  // Of the current row. Raise kNoCurrentRow behind the last row.
  const Variant& Value(std::size_t lvColumn) const;
  void Value(std::size_t lvColumn, Variant vvValue);

  // Sends all changes, or none when it fails. Must be called while the session is open.
  void UpdateBatch();

 private:
  void RequireRow() const;

  Session& m_oSession;
  Keyset m_oKeyset;
  std::size_t m_lRow = 0;
};

}  // namespace qm_ordering::ado
