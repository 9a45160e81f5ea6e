#pragma once

#include <cstdint>
#include <string_view>

#include "qm_ordering/platform/Export.h"

namespace qm_ordering {

// The library's errors, by their index in the error table. The number that a host sees in ErrorInfo::Number
// is another one for the first four.
enum class OrderingError : std::int32_t {
  errOrderNotFound = 0,    // 3 "Order not found"
  errOrderNotLoaded = 1,   // 4 "Order not loaded"
  errNotCurrentOrder = 2,  // 2 "Specified order is not the current order"
  errItemExists = 3,       // 1 "Item already exists in order"
  errUnexpected = 4,       // 5 "An unexpected error has occurred"
  errInvalidQuantity = 5,  // 6 "Invalid quantity"
  errOrderIDNotSet = 6,    // 7 "OrderID not set"
  errDuplicateList = 7,    // 8 "Duplicate list"
  errListIDNotSet = 8,     // 9 "List ID not set"
  errInvalidListID = 9,    // 10 "Invalid list ID"
  errListNotFound = 10,    // 11 "List not found"
};

struct OrderingErrorEntry {
  std::int32_t Number = 0;
  std::string_view Text;
};

// Fills this thread's error table; part of the thread's start-up.
void InitErrorTable();

// The table's entry. Raises 9 for an index outside 0 to 10, and for every index on a thread whose start-up
// has not filled the table: it is filled once there is an object, and an object belongs to one thread.
const OrderingErrorEntry& ErrorTableEntry(OrderingError lvCode);

}  // namespace qm_ordering
