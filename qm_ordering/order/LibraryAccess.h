#pragma once

#include <cstdint>
#include <string>

#include "qm_ordering/order/CurrentOrder.h"
#include "qm_ordering/order/OrderItem.h"

namespace qm_ordering {

// What the library sets on its public objects, and calls of them, and a host cannot. Not installed.
struct LibraryAccess {
  static void Imported(OrderItem& orItem, bool bvImported) { orItem.m_bImported = bvImported; }

  static bool SummaryLoaded(const CurrentOrder& ovOrder) { return ovOrder.m_bSummaryLoaded; }
  static bool ItemsLoaded(const CurrentOrder& ovOrder) { return ovOrder.m_bItemsLoaded; }
  static void UpdateCustPartInfo(std::int32_t lvOrderID, const std::string& zvItemNumber,
                                 const std::string& zvCustomerPartNumber,
                                 const std::string& zvCustomerNotes) {
    CurrentOrder::UpdateCustPartInfo(lvOrderID, zvItemNumber, zvCustomerPartNumber, zvCustomerNotes);
  }
  static void DeleteCustPartInfo(const std::string& zvCustomerPartNumber, std::int32_t lvOrderID) {
    CurrentOrder::DeleteCustPartInfo(zvCustomerPartNumber, lvOrderID);
  }
};

}  // namespace qm_ordering
