#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/Context.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// The current order with its summary; the store makes one when there is none. Raises RecordError when it
// cannot be loaded.
std::shared_ptr<qm_ordering::CurrentOrder> OpenCurrentOrder(Context& context);

// How a check that is impossible is told: as the error that ends a command, or as a warning on its way.
enum class Uncheckable { Error, Warning };

// Loads the lines and has their quantities checked. Where a pack size of 0 makes the check impossible, says
// so in a message that names the lines, loads them unchecked, and answers false.
bool LoadCheckedLines(Context& context, qm_ordering::CurrentOrder& order, std::int32_t lvSortOrder,
                      Uncheckable told = Uncheckable::Error);

// Loads the lines without a check of their quantities.
void LoadUncheckedLines(qm_ordering::CurrentOrder& order);

// The order's loaded line of that item number, in any letter case. Raises UsageError, which names the
// nearest, when there is none.
std::shared_ptr<qm_ordering::OrderItem> FindLine(const qm_ordering::CurrentOrder& order,
                                                 const std::string& zvItemNumber);

}  // namespace host
