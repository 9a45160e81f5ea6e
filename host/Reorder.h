#pragma once

#include <string>

#include "host/Context.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// How lines go into the current order again, for the help of a command.
extern const char* const kReorderHelp;

// Puts the items of a loaded list into the current order, with packs and prices of the catalogue, and reports
// each. Answers kNotGood when one was refused.
int ReorderList(Context& context, const qm_ordering::PersonalList& list, const std::string& zvCatalogueFile);

// The same with the loaded lines of a submitted order.
int ReorderOrder(Context& context, const qm_ordering::OrderDetails& order,
                 const std::string& zvCatalogueFile);

// The same with the packs and prices of then.
int ReorderAtOldPrices(Context& context, const qm_ordering::OrderDetails& order);

}  // namespace host
