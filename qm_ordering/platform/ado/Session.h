#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/ColumnNames.h"
#include "qm_ordering/platform/value/Failure.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering::ado {

// What a provider of stores implements. All members raise Failure: kStoreCommand, kStoreNoTable,
// kStoreRowChanged or kStoreUnavailable for what the store answers, kOverflow for a number out of range,
// kOutOfMemory for an engine that ran out of it; what they allocate themselves raises std::bad_alloc.

// The rows of a running query, forward only. Its session ending closes it: each member then raises
// kClosedObject.
class Cursor {
 public:
  virtual ~Cursor() = default;
  // False once its session has ended.
  virtual bool IsOpen() const noexcept = 0;
  virtual const std::shared_ptr<const ColumnNames>& Columns() const = 0;
  // Moves to the next row, at first to the first one; false behind the last. A failure closes the cursor.
  virtual bool Next() = 0;
  // A column's value in the current row, in the kind of the column: Null, Integer, Double, Boolean, Currency,
  // Date, String.
  virtual Variant Value(std::size_t lvColumn) const = 0;
};

// Rows that were read to be changed and sent back together.
struct Keyset {
  struct Row {
    std::int64_t Key = 0;
    std::vector<Variant> Read;     // as the store had them
    std::vector<Variant> Changed;  // as they are to be
  };
  std::string Table;
  std::shared_ptr<const ColumnNames> Columns;
  std::vector<Row> Rows;
};

// Adds rows to some columns of a table. Its session must be open when it is used.
class RowAdder {
 public:
  virtual ~RowAdder() = default;
  // Adds a row, a value for each of the columns, and answers its new key. The other columns have their
  // defaults.
  virtual std::int64_t Add(std::span<const Variant> vvValues) = 0;
};

enum class TransactionKind {
  Read,   // every read sees the same state
  Write,  // holds the store's write lock from the start, so that what is read stays true until the commit
};

// Called after each step of copying a store: how many of its pages are copied, and how many there are.
using CopyProgress = std::function<void(std::int64_t lvDone, std::int64_t lvAll)>;

class Session {
 public:
  // Ending a session rolls back its transaction and closes its cursors.
  virtual ~Session() = default;

  // Runs one statement. Null when it is not a query.
  virtual std::unique_ptr<Cursor> Execute(const std::string& zvSQL) = 0;

  // What adds rows to these columns of a table.
  virtual std::unique_ptr<RowAdder> OpenRows(const std::string& zvTable,
                                             std::span<const char* const> zvColumns) = 0;
  // Whether a table has a row with that value in that column, as the store compares.
  virtual bool HasRow(const std::string& zvTable, const std::string& zvColumn, const Variant& vvValue) = 0;

  // Reads the rows of a select on one table.
  virtual Keyset ReadKeyset(const std::string& zvSQL) = 0;
  // Writes the changed columns of the changed rows, all of them or, on a failure, none. Raises
  // kStoreRowChanged when a row no longer is as it was read.
  virtual void WriteKeyset(const Keyset& oKeyset) = 0;

  virtual void Begin(TransactionKind kind) = 0;
  // A commit that fails rolls back before it raises.
  virtual void Commit() = 0;
  virtual void Rollback() noexcept = 0;

  // Copies the store as it is now, or as the open read transaction sees it, into the empty file zvCopy, which
  // messages call zvCopyName. Other programs may write meanwhile; what they write is not in the copy.
  virtual void CopyTo(const std::string& zvCopy, const std::string& zvCopyName,
                      const CopyProgress& progress) = 0;

  // What is wrong with the store's file, and with its schema; a finding each, none when it is whole.
  virtual std::vector<std::string> CheckIntegrity() = 0;
};

// Runs one check of a store. What cannot be checked is a finding of its own, and the other checks go on; the
// failure rises only where the store as a whole cannot be used, and nothing has been found that would explain
// it, and where memory ends, which says nothing of the store.
template <typename Check>
void RunCheck(const char* zvWhat, std::vector<std::string>& findings, Check check) {
  try {
    check();
  } catch (const Failure& failure) {
    if (failure.Number() == failure::kOutOfMemory ||
        (failure.Number() == failure::kStoreUnavailable && findings.empty())) {
      throw;
    }
    findings.push_back(std::string(zvWhat) + " could not be checked: " + failure.Description());
  }
}

// The full path of the file of an embedded store that a connection string names. Raises kStoreUnavailable for
// another driver and for a text that cannot be read, kPathNotFound when no folder stands in it.
std::string StoreFileOf(const std::string& zvConnectionString);

// Opens a session on the store that the connection string names; its "Driver=" part picks the provider.
std::unique_ptr<Session> OpenSession(const std::string& zvConnectionString);

}  // namespace qm_ordering::ado
