#pragma once

#include <memory>
#include <string>

#include "qm_ordering/order/OrderItem.h"
#include "qm_ordering/platform/ado/Recordset.h"

namespace qm_ordering {

// A text; empty for null.
std::string TextOf(const ado::Field& field);

// The columns that the lines of orders and those of personal lists have in common, found once for all rows of
// a result set. Valid as long as the set is.
class ItemFields {
 public:
  // zvOwnerColumn holds the id of the order or list. Raises kUnknownField for a set without these columns.
  ItemFields(const ado::Recordset& rows, const char* zvOwnerColumn);

  const ado::Field& ItemNumber() const { return m_oItemNumber; }

  // The line in the current row, under that item number.
  std::shared_ptr<OrderItem> MakeItem(std::string zvItemNumber) const;

 private:
  ado::Field m_oOwner, m_oItemNumber, m_oCustomerNotes, m_oCustomerPartNumber, m_oDescription,
      m_oShortDescription, m_oIsTaxable, m_oManufacturer, m_oModel, m_oSellQuantity, m_oShipQuantity,
      m_oQuantity, m_oUsuallyShips, m_oHasPartsInfo;
};

}  // namespace qm_ordering
