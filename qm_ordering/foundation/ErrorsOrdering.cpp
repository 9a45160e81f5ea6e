#include "qm_ordering/foundation/ErrorsOrdering.h"

#include <array>
#include <cstddef>
#include <string>

#include "qm_ordering/platform/value/Failure.h"

namespace qm_ordering {

namespace {

// Without destructors: an object that ends with its thread may still fill its error record.
constinit thread_local std::array<OrderingErrorEntry, 11> t_errorTable{};
constinit thread_local bool t_bIsFilled = false;

void SetEntry(OrderingError lvCode, std::int32_t lvNumber, std::string_view zvText) {
  t_errorTable[static_cast<std::size_t>(lvCode)] = {lvNumber, zvText};
}

}  // namespace

void InitErrorTable() {
  SetEntry(OrderingError::errItemExists, 1, "Item already exists in order");
  SetEntry(OrderingError::errNotCurrentOrder, 2, "Specified order is not the current order");
  SetEntry(OrderingError::errOrderNotFound, 3, "Order not found");
  SetEntry(OrderingError::errOrderNotLoaded, 4, "Order not loaded");
  SetEntry(OrderingError::errUnexpected, 5, "An unexpected error has occurred");
  SetEntry(OrderingError::errInvalidQuantity, 6, "Invalid quantity");
  SetEntry(OrderingError::errOrderIDNotSet, 7, "OrderID not set");
  SetEntry(OrderingError::errDuplicateList, 8, "Duplicate list");
  SetEntry(OrderingError::errListIDNotSet, 9, "List ID not set");
  SetEntry(OrderingError::errInvalidListID, 10, "Invalid list ID");
  SetEntry(OrderingError::errListNotFound, 11, "List not found");
  t_bIsFilled = true;
}

const OrderingErrorEntry& ErrorTableEntry(OrderingError lvCode) {
  const auto lIndex = static_cast<std::int32_t>(lvCode);
  if (lIndex < 0 || static_cast<std::size_t>(lIndex) >= t_errorTable.size()) {
    throw Failure(failure::kIndexOutOfBounds,
                  "Index out of bounds: the error table has no entry " + std::to_string(lIndex));
  }
  if (!t_bIsFilled) {
    throw Failure(failure::kIndexOutOfBounds,
                  "Index out of bounds: the error table of this thread has no entries before the thread's "
                  "first object is made");
  }
  return t_errorTable[static_cast<std::size_t>(lIndex)];
}

}  // namespace qm_ordering
