#include "tests/hostile/StoreObserver.h"

#include <sqlite3.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace test {

namespace {

namespace engine = qm_ordering::ado::embedded;

[[noreturn]] void Raise(sqlite3* db, const std::string& zvWhat) {
  throw std::runtime_error("the observer of the store: " + zvWhat + ": " + sqlite3_errmsg(db));
}

}  // namespace

std::string Lower(std::string zvText) {
  for (char& cLetter : zvText) {
    cLetter = cLetter >= 'A' && cLetter <= 'Z' ? static_cast<char>(cLetter - 'A' + 'a') : cLetter;
  }
  return zvText;
}

std::string TextOf(const StoredRow& row, const std::string& zvColumn) {
  const Cell& cell = row.at(Lower(zvColumn));
  return cell ? *cell : zvColumn.starts_with("dat") ? "NULL" : "";
}

std::int64_t NumberOf(const StoredRow& row, const char* zvColumn) {
  return std::stoll(row.at(zvColumn).value());
}

std::size_t StoredRow::IndexOf(std::string_view zvName) const {
  const auto found = std::ranges::find(*m_zNames, zvName);
  if (found == m_zNames->end()) {
    throw std::out_of_range("no column " + std::string(zvName));
  }
  return static_cast<std::size_t>(found - m_zNames->begin());
}

std::set<std::string> StoredRow::Changes(const StoredRow& other) const {
  std::set<std::string> zColumns;
  for (std::size_t i = 0; i < m_oCells.size(); ++i) {
    if (m_oCells[i] != other.m_oCells[i]) {
      zColumns.insert((*m_zNames)[i]);
    }
  }
  return zColumns;
}

WideInteger StoredOrder::Sum() const {
  WideInteger lSum = 0;
  for (const auto& [lEntered, line] : Lines) {
    lSum += NumberOf(line, "cextendedprice");
  }
  return lSum;
}

std::int64_t StoredOrder::Total() const {
  return NumberOf(Header, "ctotalprice");
}

bool StoredOrder::IsCurrent() const {
  return NumberOf(Header, "biscurrent") != 0;
}

const StoredOrder* StoredState::Find(std::int32_t lvOrderID) const {
  const auto found = Orders.find(lvOrderID);
  return found == Orders.end() ? nullptr : &found->second;
}

std::optional<std::int32_t> StoredState::Current() const {
  for (const auto& [lOrderID, order] : Orders) {
    if (order.IsCurrent()) {
      return lOrderID;
    }
  }
  return std::nullopt;
}

StoreObserver::StoreObserver(const std::string& zvPath) {
  sqlite3* pDatabase = nullptr;
  const int lResult = sqlite3_open_v2(zvPath.c_str(), &pDatabase, SQLITE_OPEN_READWRITE, nullptr);
  m_oDatabase.reset(pDatabase);
  if (lResult != SQLITE_OK) {
    Raise(pDatabase, zvPath);
  }
  sqlite3_busy_timeout(pDatabase, 5000);
  engine::AddTextCollation(pDatabase, zvPath);
  Run("pragma foreign_keys = on");
  m_oVersion = Prepare("pragma data_version");
  m_oOrders = PrepareTable("select * from tblOrder");
  m_oLines = PrepareTable("select * from tblOrderItem");
  m_oLists = PrepareTable("select * from tblPersonalList");
  m_oListItems = PrepareTable("select * from tblPersonalListItem");
}

engine::StatementHandle StoreObserver::Prepare(const std::string& zvSQL) const {
  sqlite3_stmt* pStatement = nullptr;
  if (sqlite3_prepare_v2(m_oDatabase.get(), zvSQL.c_str(), -1, &pStatement, nullptr) != SQLITE_OK) {
    Raise(m_oDatabase.get(), zvSQL);
  }
  return engine::StatementHandle(pStatement);
}

StoreObserver::Table StoreObserver::PrepareTable(const std::string& zvSQL) const {
  Table table;
  table.Query = Prepare(zvSQL);
  StoredRow::Names names;
  for (int i = 0; i < sqlite3_column_count(table.Query.get()); ++i) {
    names.push_back(Lower(sqlite3_column_name(table.Query.get(), i)));
  }
  table.Names = std::make_shared<const StoredRow::Names>(std::move(names));
  return table;
}

template <typename Take>
void StoreObserver::ForEachRow(const Table& table, Take take) const {
  sqlite3_stmt* pStatement = table.Query.get();
  int lResult = 0;
  while ((lResult = sqlite3_step(pStatement)) == SQLITE_ROW) {
    std::vector<Cell> cells(table.Names->size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      const int lColumn = static_cast<int>(i);
      if (sqlite3_column_type(pStatement, lColumn) != SQLITE_NULL) {
        const auto* pText = reinterpret_cast<const char*>(sqlite3_column_text(pStatement, lColumn));
        cells[i].emplace(pText == nullptr ? "" : pText,
                         static_cast<std::size_t>(sqlite3_column_bytes(pStatement, lColumn)));
      }
    }
    take(StoredRow(table.Names, std::move(cells)));
  }
  sqlite3_reset(pStatement);
  if (lResult != SQLITE_DONE) {
    Raise(m_oDatabase.get(), "reading");
  }
}

bool StoreObserver::HasChanged() {
  if (sqlite3_step(m_oVersion.get()) != SQLITE_ROW) {
    Raise(m_oDatabase.get(), "the version of the data");
  }
  const std::int64_t lVersion = sqlite3_column_int64(m_oVersion.get(), 0);
  sqlite3_reset(m_oVersion.get());
  const bool bChanged = lVersion != m_lVersion;
  m_lVersion = lVersion;
  return bChanged;
}

StoredState StoreObserver::Read() const {
  StoredState state;
  ForEachRow(m_oOrders, [&](StoredRow row) {
    const auto lOrderID = static_cast<std::int32_t>(NumberOf(row, "lorderid"));
    state.Orders[lOrderID].Header = std::move(row);
  });
  ForEachRow(m_oLines, [&](StoredRow row) {
    const auto lOrderID = static_cast<std::int32_t>(NumberOf(row, "lorderid"));
    const std::int64_t lEntered = NumberOf(row, "lorderentered");
    state.Orders.at(lOrderID).Lines[lEntered] = std::move(row);
  });
  ForEachRow(m_oLists, [&](StoredRow row) {
    const auto lListID = static_cast<std::int32_t>(NumberOf(row, "llistid"));
    state.Lists[lListID].Header = std::move(row);
  });
  ForEachRow(m_oListItems, [&](StoredRow row) {
    const auto lListID = static_cast<std::int32_t>(NumberOf(row, "llistid"));
    const std::int64_t lEntered = NumberOf(row, "llistentered");
    state.Lists.at(lListID).Lines[lEntered] = std::move(row);
  });
  return state;
}

void StoreObserver::Run(const std::string& zvSQL) const {
  if (sqlite3_exec(m_oDatabase.get(), zvSQL.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
    Raise(m_oDatabase.get(), zvSQL);
  }
}

}  // namespace test
