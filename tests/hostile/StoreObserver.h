#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qm_ordering/platform/ado/embedded/Engine.h"

namespace test {

// A stored value, every byte of it; money times 10,000, True as -1.
using Cell = std::optional<std::string>;

// A row's values under the names of their columns, in lower-case letters.
class StoredRow {
 public:
  using Names = std::vector<std::string>;

  StoredRow() = default;
  StoredRow(std::shared_ptr<const Names> zvNames, std::vector<Cell> cells)
      : m_zNames(std::move(zvNames)), m_oCells(std::move(cells)) {}

  // Throws std::out_of_range for a name that is no column's.
  const Cell& at(std::string_view zvName) const { return m_oCells[IndexOf(zvName)]; }
  bool Has(std::string_view zvName) const { return std::ranges::find(*m_zNames, zvName) != m_zNames->end(); }
  void Set(std::string_view zvName, Cell cell) { m_oCells[IndexOf(zvName)] = std::move(cell); }

  // The columns in which it differs from a row of the same table.
  std::set<std::string> Changes(const StoredRow& other) const;

  bool operator==(const StoredRow& other) const { return m_oCells == other.m_oCells; }

 private:
  std::size_t IndexOf(std::string_view zvName) const;

  std::shared_ptr<const Names> m_zNames;
  std::vector<Cell> m_oCells;
};

std::string Lower(std::string zvText);
// As the objects give it: nulls of texts are empty, nulls of dates "NULL".
std::string TextOf(const StoredRow& row, const std::string& zvColumn);
// Of a column in lower-case letters.
std::int64_t NumberOf(const StoredRow& row, const char* zvColumn);

__extension__ typedef __int128 WideInteger;

struct StoredOrder {
  StoredRow Header;
  std::map<std::int64_t, StoredRow> Lines;  // by the number of their entry

  // The sum of the lines, as wide as it comes, and the stored total.
  WideInteger Sum() const;
  std::int64_t Total() const;
  bool IsCurrent() const;

  bool operator==(const StoredOrder&) const = default;
};

struct StoredList {
  StoredRow Header;
  std::map<std::int64_t, StoredRow> Lines;  // by the number of their entry

  bool operator==(const StoredList&) const = default;
};

// All that a store holds.
struct StoredState {
  std::map<std::int32_t, StoredOrder> Orders;
  std::map<std::int32_t, StoredList> Lists;

  const StoredOrder* Find(std::int32_t lvOrderID) const;
  // The id of the current order; nothing when there is none.
  std::optional<std::int32_t> Current() const;

  bool operator==(const StoredState&) const = default;
};

// Looks at a store's file on a connection of its own, past the library, for as long as it is open.
class StoreObserver {
 public:
  explicit StoreObserver(const std::string& zvPath);

  // Whether someone else has written since the last question.
  bool HasChanged();
  StoredState Read() const;
  // For what a test does to the store itself; HasChanged does not tell of it.
  void Run(const std::string& zvSQL) const;

 private:
  // A query of all rows of a table, prepared once.
  struct Table {
    qm_ordering::ado::embedded::StatementHandle Query;
    std::shared_ptr<const StoredRow::Names> Names;
  };
  qm_ordering::ado::embedded::StatementHandle Prepare(const std::string& zvSQL) const;
  Table PrepareTable(const std::string& zvSQL) const;
  template <typename Take>
  void ForEachRow(const Table& table, Take take) const;

  qm_ordering::ado::embedded::DatabaseHandle m_oDatabase;
  qm_ordering::ado::embedded::StatementHandle m_oVersion;
  Table m_oOrders, m_oLines, m_oLists, m_oListItems;
  std::int64_t m_lVersion = -1;
};

}  // namespace test
