#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "qm_ordering/history/OrderHistory.h"

namespace test {

// What the history must show of an order.
struct ListedOrder {
  std::int32_t OrderID = 0;
  std::string PONumber;
  std::string Moment;      // "1996-07-04 00:00:00"
  std::int64_t Total = 0;  // times 10,000
};

// Expects that the history, loaded by the sort order, holds these orders and no other one.
void ExpectListed(const qm_ordering::OrderHistory& history, const std::vector<ListedOrder>& orders,
                  std::int32_t lvSortOrder);

// The letters of a text one by one, each in its lower case as the C library has it.
std::wstring InLowerCase(const std::string& zvText);

}  // namespace test
