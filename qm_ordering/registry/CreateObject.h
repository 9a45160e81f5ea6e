#pragma once

#include <memory>
#include <string>

#include "qm_ordering/platform/Export.h"
#include "qm_ordering/platform/value/Object.h"

namespace qm_ordering {

// Makes an object of a public class by its name, "QM_Ordering.CurrentOrder" or "CurrentOrder", in any letter
// case; the thread's start-up runs first. std::dynamic_pointer_cast gives the class itself. Raises 429 for a
// name that is no public class, and what the start-up raises.
QM_ORDERING_API std::shared_ptr<Object> CreateObject(const std::string& zvClassName);

}  // namespace qm_ordering
