#pragma once

#include <cstdint>
#include <string>

namespace bench {

// Each makes the folder, with a settings file that names it and a store in which the current order has number
// 1. The lines are the first ones of the made catalogue.

// The current order has that many lines.
void MakeOrder(const std::string& zvFolder, std::int32_t lvLines);
// The current order is empty, the personal lists have that many lines together.
void MakeLists(const std::string& zvFolder, std::int32_t lvLines);
// The current order is empty, and that many orders were submitted.
void MakeHistory(const std::string& zvFolder, std::int32_t lvOrders);

// The current order is empty, and the folder "older" has the older program's tables with that many lines.
void MakeImport(const std::string& zvFolder, std::int32_t lvLines);

// These add to a store, all in one transaction.

// Lines to the current order.
void FillOrder(const std::string& zvFolder, std::int32_t lvLines);
// Personal lists of 100 lines each, the last one with the rest.
void FillLists(const std::string& zvFolder, std::int32_t lvLines);
// Submitted orders that have a number, a date and a total; the other columns are empty, so that reading past
// them, which costs all programs the same, hides nothing.
void FillHistory(const std::string& zvFolder, std::int32_t lvOrders);

}  // namespace bench
