#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "qm_ordering/platform/ado/Connection.h"
#include "qm_ordering/platform/value/Variant.h"

namespace qm_ordering {

// The purchase orders of the older program, line by line, each line with the header of its order. The lines
// of an order follow each other, by item number.
class LegacyOrders {
 public:
  // zvFolder holds the tables. Raises what opening and reading them raises.
  explicit LegacyOrders(const std::string& zvFolder);

  // The number of lines.
  std::int64_t Count();

  bool AtEnd() const { return m_oRows->AtEnd(); }
  void MoveNext() { m_oRows->MoveNext(); }

  // Of the current line. What is blank is the empty text.
  std::string OrderKey() const;  // tells one order from the next
  std::string PurchaseOrderNumber() const;
  std::string ItemNumber() const;
  std::string Description() const;

  // The values of the store's columns below. Raise 6 and 13, naming order, item and column, for a value that
  // its column cannot hold.
  std::vector<Variant> OrderValues() const;
  std::vector<Variant> LineValues() const;

 private:
  using Fields = std::vector<ado::Field>;

  ado::Connection m_oConnection;
  std::unique_ptr<ado::Recordset> m_oRows;
  Fields m_oOrderFields;
  Fields m_oLineFields;
  Fields m_oTextFields;  // DATETIME, PONUM, ITEMNUM, DESC
};

// The columns of tblOrder that an order of theirs fills.
std::span<const char* const> LegacyOrderColumns();
// The columns of tblOrderItem that a line fills, behind lOrderID and zItemNumber.
std::span<const char* const> LegacyLineColumns();

}  // namespace qm_ordering
