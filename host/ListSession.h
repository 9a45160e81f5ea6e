#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "host/Context.h"
#include "qm_ordering/qm_ordering.h"

namespace host {

// Whether the store takes two texts for the same one: it does not tell letter cases apart.
bool SameInStore(const std::string& zvLeft, const std::string& zvRight);

// To be asked after a call that shows its failure only in LastFailure. Raises RecordError when there was one.
void CheckSwallowed();

// All lists, without their items.
std::unique_ptr<qm_ordering::PersonalLists> OpenLists(Context& context);

// The list that a user means: a whole number is an id, anything else a name. Raises UsageError, which names
// the nearest, when there is none.
std::shared_ptr<qm_ordering::PersonalList> FindList(const qm_ordering::PersonalLists& lists,
                                                    const std::string& zvList);

// The same of the store, with its items.
std::shared_ptr<qm_ordering::PersonalList> OpenList(Context& context, const std::string& zvList);

// The list of that name; null when there is none.
std::shared_ptr<qm_ordering::PersonalList> FindListByName(const qm_ordering::PersonalLists& lists,
                                                          const std::string& zvName);

// Puts an item on the list, or more of it. Raises RecordError and Failure.
void AddToList(std::int32_t lvListID, const std::shared_ptr<qm_ordering::OrderItem>& oItem);

}  // namespace host
